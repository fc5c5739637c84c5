// The entry to a library of tests, for load_tests.cpp.
#include <gmock/gmock.h>

#include "stage/stage_export.h"

extern "C" STAGE_EXPORT int run_tests(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
