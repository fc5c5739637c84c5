// The test program is linked so that every realloc comes by here.
#pragma once

/// While set, realloc fails. Set it back before anything but the code under test runs.
extern bool realloc_fails;
