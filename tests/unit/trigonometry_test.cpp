// Trigonometry gives correctly rounded float32 values with every C library.
#include "math/trigonometry.h"

#include <gtest/gtest.h>

namespace tovu {
namespace {

float arc_tangent_of_thirds(float y) {
    return arc_tangent_degrees(y, 3.0f);
}

// Arguments for which float functions, or a second rounding, give a result that differs in the last bit.
TEST(Trigonometry, RoundsTheDoubleResultOnce) {
    const struct {
        const char* name;
        float (*function)(float);
        float argument;
        double exact;
    } rows[] = {
        {"sine", sine_of, 0.680000007f, 0.62879302958},
        {"cosine", cosine_of, 1.23000002f, 0.334237709148},
        {"arc sine", arc_sine, 0.0615999997f, 0.0616390238208},
        {"arc cosine", arc_cosine, 0.0188999996f, 1.55189520184},
        {"arc tangent", arc_tangent_of_thirds, 0.659999967f, 12.4074179193},
    };
    for (const auto& row : rows) {
        const volatile float argument = row.argument;  // a compiler would compute constants itself, exactly
        EXPECT_EQ(static_cast<float>(row.exact), row.function(argument)) << row.name << " of " << row.argument;
    }
}

}  // namespace
}  // namespace tovu
