#include "curves.h"

#include <cstring>

#include "curve_text.h"
#include "spline.h"

namespace tovu {
namespace {

struct ColorStop {
    float position;
    float rgb[3];
};

float clamp_to_fraction(float value) {
    return value > 0.0f ? (value < 1.0f ? value : 1.0f) : 0.0f;  // NaN gives 0
}

// Returns false when the text ends. An incomplete group at the end is ignored.
bool next_stop(const char*& text, ColorStop& stop) {
    float numbers[4];
    for (float& number : numbers)
        if (!next_number(text, number)) return false;
    stop.position = clamp_to_fraction(numbers[0]);
    for (int i = 0; i < 3; ++i) stop.rgb[i] = clamp_to_fraction(numbers[1 + i]);
    return true;
}

void fill_segment(ColorTable& table, const ColorStop& from, const ColorStop& to) {
    const auto start = static_cast<int32_t>(from.position * 1024.0f);
    const auto end = static_cast<int32_t>(to.position * 1024.0f);
    const auto n = static_cast<float>(end - start);
    for (int32_t k = start; k < end; ++k) {
        const auto j = static_cast<float>(k - start);
        for (int i = 0; i < 3; ++i) {
            const float component = from.rgb[i] + j * (to.rgb[i] - from.rgb[i]) / n;
            table.rgb[k][i] = static_cast<uint8_t>(component * 255.0f);
        }
    }
}

// Returns the number of points read. Points after the limit are ignored.
int32_t read_points(const char* text, float* x, float* y) {
    int32_t count = 0;
    while (count < kMaxSplinePoints && next_number(text, x[count]) && next_number(text, y[count])) ++count;
    return count;
}

}  // namespace

void build_color_table(SmokeInstance& instance) {
    ColorTable& table = instance.color_table;
    std::memset(&table, 0, sizeof table);
    const char* text = param::color(instance.parameters);
    ColorStop previous;
    if (!next_stop(text, previous)) return;
    for (ColorStop stop; next_stop(text, stop); previous = stop) fill_segment(table, previous, stop);
}

void build_alpha_table(SmokeInstance& instance) {
    AlphaTable& table = instance.alpha_table;
    for (float& alpha : table.alpha) alpha = 0.0f;
    float x[kMaxSplinePoints];
    float y[kMaxSplinePoints];
    const int32_t count = read_points(param::alpha_curve(instance.parameters), x, y);
    AkimaSpline spline;
    build_spline(spline, count, x, y);
    if (spline.error != kSplineOk) return;
    for (int32_t i = 0; i < kAlphaEntries - 1; ++i)
        table.alpha[i] = clamp_to_fraction(static_cast<float>(spline_value(spline, i / 511.0)));
}

void build_alpha_text(SmokeInstance& instance) {
    if (instance.parameters.return_value == 0) return;  // the host has no buffer
    // x is i / 512, where the table is read, although it was sampled at i / 511. The last pair ends the curve at x = 1.
    const auto out_start = reinterpret_cast<char*>(static_cast<uintptr_t>(instance.parameters.return_value));
    char* out = out_start;
    for (int32_t i = 0; i <= 510; i += 5) {
        out = write_six_decimals(out, i / 512.0);
        *out++ = ' ';
        out = write_six_decimals(out, static_cast<double>(instance.alpha_table.alpha[i]));
        *out++ = ' ';
    }
    std::memcpy(out, "1.0 ", 4);
    out = write_six_decimals(out + 4, static_cast<double>(instance.alpha_table.alpha[511]));
    *out++ = ' ';
    *out = '\0';
}

}  // namespace tovu
