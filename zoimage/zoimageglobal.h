#pragma once
#include "zoimage_export.h"
// Placeholder until the image classes land.
ZOIMAGE_EXPORT int zoimageAbiVersion();
