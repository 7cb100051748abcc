#pragma once
// Short names for the static members of the process-wide classes:
// ZO::PF::... for the preference store, ZO::UF::... for the utility functions.
// They add nothing but a virtual destructor. The header sits beside the
// highest class it names (the utility class), so its includes point down.

#include "czodatabase.h"
#include "czopreference.h"
#include "czoprocess.h"
#include "czoutilityfns.h"

namespace ZO {

class ZOUTILS_EXPORT DB : public CZODatabase
{
public:
    DB() = default;
    DB(const DB &) = default;
    DB(DB &&) = default;
    DB &operator=(const DB &) = default;
    DB &operator=(DB &&) = default;
    ~DB() override;
};

class ZOUTILS_EXPORT PF : public CZOPreference
{
public:
    PF() = default;
    PF(const PF &) = default;
    PF(PF &&) = default;
    PF &operator=(const PF &) = default;
    PF &operator=(PF &&) = default;
    ~PF() override;
};

class ZOUTILS_EXPORT PR : public CZOProcess
{
public:
    PR() = default;
    PR(const PR &) = default;
    PR(PR &&) = default;
    PR &operator=(const PR &) = default;
    PR &operator=(PR &&) = default;
    ~PR() override;
};

class ZOUTILS_EXPORT UF : public CZOUtilityFns
{
public:
    UF() = default;
    UF(const UF &) = default;
    UF(UF &&) = default;
    UF &operator=(const UF &) = default;
    UF &operator=(UF &&) = default;
    ~UF() override;
};

} // namespace ZO
