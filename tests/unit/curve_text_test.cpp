// The numbers of curve texts: reading does not depend on the locale, writing equals printf.
#include "particles/curve_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr float kInfinite = std::numeric_limits<float>::infinity();

std::vector<float> numbers_of(const char* text) {
    std::vector<float> numbers;
    for (float number; tovu::next_number(text, number);) numbers.push_back(number);
    EXPECT_EQ('\0', *text);
    return numbers;
}

const std::pair<const char*, std::vector<float>> kTexts[] = {
    {"", {}},
    {"   ", {}},
    {"0.0 1.0 1.0 0.0", {0, 1, 1, 0}},
    {"  1   2 ", {1, 2}},
    {"-1.5 +2 .5 5. -.25", {-1.5f, 2, 0.5f, 5, -0.25f}},
    {"1e2 1E+2 25e-2 1e 1e+ 2e-x", {100, 100, 0.25f, 1, 1, 2}},
    {"3abc 4,5 1.2.3 1e2.5", {3, 4, 1.2f, 100}},
    {"abc - + . e5 -e5 .e5 ,5", {0, 0, 0, 0, 0, 0, 0, 0}},
    {"inf nan 0x10 infinity", {0, 0, 0, 0}},
    {"1\t2 \t3 \n4", {1, 0, 0}},
    {"0.1 0.30000001192092896 16777217 0.000001", {0.1f, 0.3f, 16777216, 1e-6f}},
    {"1e40 -1e40 1e-60 1e99999999999999 1e-99999999999999 0e99999", {kInfinite, -kInfinite, 0, kInfinite, 0, 0}},
    {"340282346638528859811704183484516925440 1e-45", {3.4028234663852886e38f, 1e-45f}},
    {"0.00000000000000000000000000000000000000000000000000001e53 10000000000000000000000000000e-28", {1, 1}},
};

TEST(CurveText, ReadsDecimalNumbersBetweenSpaces) {
    for (const auto& [text, numbers] : kTexts) EXPECT_EQ(numbers, numbers_of(text)) << '"' << text << '"';
}

TEST(CurveText, DoesNotDependOnTheLocale) {
    // Creates a locale with a decimal comma, since few machines have one.
    const std::string folder = testing::TempDir() + "tovu_locales";
    const std::string make = "mkdir -p '" + folder + "' && localedef -i de_DE -f UTF-8 '" + folder + "/de_DE.UTF-8'";
    ASSERT_EQ(0, std::system(make.c_str())) << make;
    ASSERT_EQ(0, setenv("LOCPATH", folder.c_str(), 1));
    ASSERT_NE(nullptr, std::setlocale(LC_NUMERIC, "de_DE.UTF-8"));
    ASSERT_STREQ(",", std::localeconv()->decimal_point);
    const std::vector<float> read = numbers_of("0.5 1.25e1");
    char out[16];
    *tovu::write_six_decimals(out, 0.5) = '\0';
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ((std::vector<float>{0.5f, 12.5f}), read);
    EXPECT_STREQ("0.500000", out);
}

TEST(CurveText, WritesSixDecimalsAsPrintf) {
    std::vector<double> values = {0, 1, 0.9999995, 0.9999994, 5e-7, 1e-9};
    for (int i = 0; i <= 4096; ++i) values.push_back(i / 4096.0);  // some are ties
    for (const double value : values) {
        char expected[16];
        std::snprintf(expected, sizeof expected, "%f", value);
        char out[16];
        *tovu::write_six_decimals(out, value) = '\0';
        EXPECT_STREQ(expected, out) << value;
    }
}

}  // namespace
