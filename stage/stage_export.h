// Marks what the Stage's shared library exports for apps and tests.
#pragma once

#define STAGE_EXPORT __attribute__((visibility("default")))
