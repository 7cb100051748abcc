#pragma once
// Process-wide application state and small services, all static. Filled in by
// the utility-class work; the class exists from the start so that ZO::UF can
// derive from it.

#include "zoutils_export.h"

class ZOUTILS_EXPORT CZOUtilityFns
{
public:
    CZOUtilityFns() = default;
    CZOUtilityFns(const CZOUtilityFns &) = default;
    CZOUtilityFns &operator=(const CZOUtilityFns &) = default;
    virtual ~CZOUtilityFns();
};
