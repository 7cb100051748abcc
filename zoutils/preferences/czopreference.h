#pragma once
// The process-wide, static-only preference store. The preferences part fills
// in the rest; the class exists from the start so that ZO::PF can derive from
// it and the acquisition helpers can read the application version.

#include "zoutils_export.h"

#include <QString>

class ZOUTILS_EXPORT CZOPreference
{
public:
    CZOPreference() = default;
    CZOPreference(const CZOPreference &) = default;
    CZOPreference &operator=(const CZOPreference &) = default;
    virtual ~CZOPreference();

    // The application version; empty until set.
    static QString getAppVersion();
    static void setAppVersion(const QString &version);

private:
    static QString m_strAppVersion;
};
