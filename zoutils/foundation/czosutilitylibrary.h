#pragma once
// The library's exported marker type and symbols. They carry nothing; a host
// can link against them to check that it loaded this library.

#include "zoutils_export.h"

class ZOUTILS_EXPORT CZOSUtilityLibrary
{
public:
    CZOSUtilityLibrary();
    CZOSUtilityLibrary(const CZOSUtilityLibrary &) = default;
    CZOSUtilityLibrary(CZOSUtilityLibrary &&) = default;
    CZOSUtilityLibrary &operator=(const CZOSUtilityLibrary &) = default;
    CZOSUtilityLibrary &operator=(CZOSUtilityLibrary &&) = default;
};

extern ZOUTILS_EXPORT int nZOSUtilityLibrary; // zero, never written by the library
ZOUTILS_EXPORT int fnZOSUtilityLibrary();     // returns 42
