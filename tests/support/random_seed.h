// The seed of random tests.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace tovu {

/// TOVU_TEST_SEED from the environment, or 1.
inline unsigned random_seed() {
    const char* text = std::getenv("TOVU_TEST_SEED");
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : 1;
}

/// random_seed(), shown with every failure while the object exists.
struct RandomSeed {
    unsigned value = random_seed();
    testing::ScopedTrace trace{"", 0, "TOVU_TEST_SEED=" + std::to_string(value)};
};

}  // namespace tovu
