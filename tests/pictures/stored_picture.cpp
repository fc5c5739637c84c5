#include "stored_picture.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdlib>

#include "../stage/temporary_folder.h"
#include "stage/assets/picture_file.h"
#include "stage/output/png_file.h"

namespace {

// A PNG text chunk: its length, "tEXt", a keyword, a zero byte and the text, and a checksum of all but the length.
const std::string kChunkStart = std::string("tEXtRenderer") + '\0';
constexpr size_t kHeaderBytes = 33;  // of a PNG file: signature and IHDR chunk

std::string big_endian(size_t value) {
    std::string bytes;
    for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>(value >> shift & 0xff);
    return bytes;
}

/// Writes the picture. Returns the message of a failed write, or empty.
std::string write(const std::filesystem::path& path, const stage::Picture& picture, const std::string& renderer) {
    if (const auto written = stage::write_png(path, picture); !written) return "\n" + written.error().message;
    const std::string chunk = kChunkStart + renderer;
    const auto checksum = crc32(0, reinterpret_cast<const Bytef*>(chunk.data()), static_cast<uInt>(chunk.size()));
    std::string bytes = file_bytes(path);
    write_bytes(path, bytes.insert(kHeaderBytes, big_endian(chunk.size() - 4) + chunk + big_endian(checksum)));
    return {};
}

}  // namespace

PictureCheck check_stored_picture(const std::filesystem::path& folder, const std::string& name,
                                  const stage::Picture& actual, const std::string& renderer,
                                  const stage::PictureTolerance& tolerance, bool store) {
    const std::filesystem::path stored_path = folder / (name + ".png");
    const std::filesystem::path new_path = folder / (name + ".new.png");
    const std::filesystem::path difference_path = folder / (name + ".difference.png");
    std::filesystem::remove(new_path);
    std::filesystem::remove(difference_path);
    if (store) {
        const std::string failure = write(stored_path, actual, renderer);
        if (!failure.empty()) return {PictureVerdict::kMissing, failure};
        return {PictureVerdict::kStored, stored_path.string() + " is stored"};
    }
    if (!std::filesystem::exists(stored_path))
        return {PictureVerdict::kMissing,
                fmt::format("{} is not there; look at {}, then run with TOVU_STORE_PICTURES=1{}", stored_path.string(),
                            new_path.string(), write(new_path, actual, renderer))};
    if (file_bytes(stored_path).find(kChunkStart + renderer) == std::string::npos)
        return {PictureVerdict::kOtherRenderer,
                fmt::format("NOT COMPARED: {} was not drawn by '{}'", stored_path.string(), renderer)};
    const auto expected = stage::read_picture(stored_path);
    if (!expected) return {PictureVerdict::kDifferent, expected.error().message};
    const auto difference = stage::compare_pictures(*expected, actual, tolerance.threshold);
    if (difference && stage::within_tolerance(*difference, tolerance)) return {PictureVerdict::kSame, {}};

    std::string message = stored_path.string() + ": ";
    if (difference)
        message +=
            fmt::format("mean difference {:.3f} (at most {}), {:.3f} % of the pixels above {} (at most {} %); see {}",
                        difference->mean, tolerance.mean, 100 * difference->share_above, tolerance.threshold,
                        100 * tolerance.share_above, difference_path.string()) +
            write(difference_path, difference->image, renderer);
    else
        message += difference.error().message;
    return {PictureVerdict::kDifferent, message + write(new_path, actual, renderer)};
}

void expect_stored_picture(const std::string& name, const stage::Picture& actual, const std::string& renderer,
                           const stage::PictureTolerance& tolerance) {
    const char* store = std::getenv("TOVU_STORE_PICTURES");
    const std::filesystem::path folder = std::filesystem::path(TOVU_SOURCE_DIR) / "tests/pictures/stored";
    const PictureCheck check =
        check_stored_picture(folder, name, actual, renderer, tolerance, store != nullptr && std::string(store) == "1");
    if (check.verdict == PictureVerdict::kOtherRenderer) GTEST_SKIP() << check.message;
    if (check.verdict == PictureVerdict::kStored) std::puts(check.message.c_str());
    EXPECT_TRUE(check.verdict == PictureVerdict::kSame || check.verdict == PictureVerdict::kStored) << check.message;
}
