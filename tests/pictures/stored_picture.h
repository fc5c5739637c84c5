// Comparison with pictures that were looked at and kept.
#pragma once

#include <filesystem>
#include <string>

#include "stage/assets/picture.h"
#include "stage/output/picture_compare.h"

enum class PictureVerdict {
    kSame,           // within the tolerance
    kDifferent,      // NAME.new.png and NAME.difference.png lie beside NAME.png
    kMissing,        // nothing is stored under the name; NAME.new.png is there to be looked at
    kOtherRenderer,  // the stored one comes from another renderer: nothing was compared
    kStored,         // kept as the new NAME.png
};

struct PictureCheck {
    PictureVerdict verdict;
    std::string message;
};

/// Compares with folder/NAME.png, whose text entry "Renderer" names what drew it. `store` keeps `actual` instead.
PictureCheck check_stored_picture(const std::filesystem::path& folder, const std::string& name,
                                  const stage::Picture& actual, const std::string& renderer,
                                  const stage::PictureTolerance& tolerance, bool store);

/// The same with the pictures in tests/pictures/stored, as a test's result: fails when different or missing, is skipped
/// with another renderer. With TOVU_STORE_PICTURES=1 in the environment it stores; look at them before a commit.
void expect_stored_picture(const std::string& name, const stage::Picture& actual, const std::string& renderer,
                           const stage::PictureTolerance& tolerance = {});
