// Replaces realloc in the test program.
#pragma once

/// While true, realloc fails. Reset it directly after the code under test.
extern bool realloc_fails;
