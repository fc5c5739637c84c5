// Marks what the Stage's shared library offers to apps and tests. The services for plug-ins are exported as well.
#pragma once

#define STAGE_EXPORT __attribute__((visibility("default")))
