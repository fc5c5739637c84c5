#include "trace_outline.h"

#include <fmt/format.h>
#include <potracelib.h>

#include <algorithm>
#include <limits>
#include <memory>

#include "contours.h"

namespace stage {
namespace {

constexpr int kNoisePixels = 2;           // areas and holes of at most this many are dropped
constexpr double kCornerLimit = 1.0;      // 0 keeps every pixel corner sharp, 1.34 rounds nearly all
constexpr double kTolerancePixels = 0.1;  // largest distance of a chord from its curve
constexpr int kWordBits = std::numeric_limits<potrace_word>::digits;

struct FreeParameters {
    void operator()(potrace_param_t* parameters) const { potrace_param_free(parameters); }
};
struct FreeTrace {
    void operator()(potrace_state_t* state) const { potrace_state_free(state); }
};

// The tracer's input: one bit for each pixel, the leftmost in a word's highest bit, the bottom row first.
struct Bitmap {
    std::vector<potrace_word> words;
    potrace_bitmap_t header;
};

Bitmap bitmap_of(const Mask& mask) {
    const int words_per_row = (mask.width + kWordBits - 1) / kWordBits;
    Bitmap bitmap{std::vector<potrace_word>(static_cast<size_t>(words_per_row) * static_cast<size_t>(mask.height)), {}};
    const uint8_t* pixel = mask.bytes.data();
    for (int row = 0; row < mask.height; ++row) {
        potrace_word* words = bitmap.words.data() + static_cast<ptrdiff_t>(row) * words_per_row;
        for (int column = 0; column < mask.width; ++column)
            if (*pixel++ >= mask.threshold)
                words[column / kWordBits] |= potrace_word{1} << (kWordBits - 1 - column % kWordBits);
    }
    bitmap.header = {mask.width, mask.height, words_per_row, bitmap.words.data()};
    return bitmap;
}

ContourPoint point(const potrace_dpoint_t& p) {
    return {p.x, p.y};
}

Contour flattened(const potrace_curve_t& curve, double tolerance) {
    Contour contour{point(curve.c[curve.n - 1][2])};  // each segment starts at the end of the one before
    for (int i = 0; i < curve.n; ++i) {
        const potrace_dpoint_t* c = curve.c[i];
        if (curve.tag[i] == POTRACE_CURVETO) {
            append_cubic(contour, point(c[0]), point(c[1]), point(c[2]), tolerance);
        } else {
            contour.push_back(point(c[1]));
            contour.push_back(point(c[2]));
        }
    }
    contour.pop_back();  // the last point repeats the first
    return contour;
}

}  // namespace

Result<std::vector<Mesh>> trace_outlines(const Mask& mask, float width, float height) {
    const uint8_t brightest = *std::max_element(mask.bytes.begin(), mask.bytes.end());
    if (brightest < mask.threshold)
        return Error{
            fmt::format("mask: no pixel reaches the threshold {}; the brightest is {}", mask.threshold, brightest)};

    const std::unique_ptr<potrace_param_t, FreeParameters> parameters(potrace_param_default());
    if (!parameters) return Error{"trace: out of memory"};
    parameters->turdsize = kNoisePixels;
    parameters->alphamax = kCornerLimit;
    const Bitmap bitmap = bitmap_of(mask);
    const std::unique_ptr<potrace_state_t, FreeTrace> traced(potrace_trace(parameters.get(), &bitmap.header));
    if (!traced || traced->status != POTRACE_STATUS_OK) return Error{"trace: out of memory"};

    std::vector<Contour> contours;
    for (const potrace_path_t* path = traced->plist; path; path = path->next)
        if (path->curve.n > 0) contours.push_back(flattened(path->curve, kTolerancePixels));
    std::vector<Mesh> outlines = outlines_of(contours, FillRule::kEvenOdd);
    if (outlines.empty())
        return Error{
            fmt::format("mask: no area of more than {} pixels reaches the threshold {}", kNoisePixels, mask.threshold)};
    const double pixel_width = double{width} / mask.width, pixel_height = double{height} / mask.height;
    for (Mesh& outline : outlines)
        for (Vector3& v : outline.vertices)
            v = {static_cast<float>((v.x - mask.width / 2.0) * pixel_width),
                 static_cast<float>((v.y - mask.height / 2.0) * pixel_height), 0.0f};
    return outlines;
}

}  // namespace stage
