#pragma once
// The process-wide, static-only preference store. Filled in by the
// preferences part; the class exists from the start so that ZO::PF can derive
// from it.

#include "zoutils_export.h"

class ZOUTILS_EXPORT CZOPreference
{
public:
    CZOPreference() = default;
    CZOPreference(const CZOPreference &) = default;
    CZOPreference &operator=(const CZOPreference &) = default;
    virtual ~CZOPreference();
};
