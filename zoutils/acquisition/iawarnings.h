#pragma once
// Three process-wide warning flags about fields of view, all false at start.
// GUI thread only; the flags themselves are unsynchronised.

#include "zoutils_export.h"

class ZOUTILS_EXPORT IAWarnings
{
public:
    // The one instance, made on first use and never destroyed.
    static IAWarnings *GetIAWarnings();

    IAWarnings &operator=(const IAWarnings &) = default;
    IAWarnings &operator=(IAWarnings &&) = default;

    bool getFOVAwarning() const { return m_bFOVAwarning; }
    void setFOVAwarning(bool warn) { m_bFOVAwarning = warn; }
    bool getFOVDwarning() const { return m_bFOVDwarning; }
    void setFOVDwarning(bool warn) { m_bFOVDwarning = warn; }
    bool getFOVEwarning() const { return m_bFOVEwarning; }
    void setFOVEwarning(bool warn) { m_bFOVEwarning = warn; }

private:
    IAWarnings() = default;
    IAWarnings(const IAWarnings &) = default;

    bool m_bFOVAwarning = false;
    bool m_bFOVDwarning = false;
    bool m_bFOVEwarning = false;
};
