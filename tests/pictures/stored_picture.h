// Comparison with stored pictures.
#pragma once

#include <filesystem>
#include <string>

#include "stage/assets/picture.h"
#include "stage/output/picture_compare.h"

enum class PictureVerdict {
    kSame,           // within the tolerance
    kDifferent,      // NAME.new.png and NAME.difference.png were written beside NAME.png
    kMissing,        // there is no NAME.png; NAME.new.png was written
    kOtherRenderer,  // not compared, since NAME.png was drawn by another renderer
    kStored,         // stored as the new NAME.png
};

struct PictureCheck {
    PictureVerdict verdict;
    std::string message;
};

/// Compares `actual` with folder/NAME.png, whose text entry "Renderer" names its renderer. store: stores `actual`
/// instead.
PictureCheck check_stored_picture(const std::filesystem::path& folder, const std::string& name,
                                  const stage::Picture& actual, const std::string& renderer,
                                  const stage::PictureTolerance& tolerance, bool store);

/// Compares with the pictures in tests/pictures/stored. The test fails if the picture is different or missing, and is
/// skipped with another renderer. With TOVU_STORE_PICTURES=1 in the environment, stores the picture; look at it before
/// a commit.
void expect_stored_picture(const std::string& name, const stage::Picture& actual, const std::string& renderer,
                           const stage::PictureTolerance& tolerance = {});
