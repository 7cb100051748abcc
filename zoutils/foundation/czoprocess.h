#pragma once
// Base of the application's process classes: a name and an exit status, the
// state every process object shares. Scheduling belongs to the application.

#include "zoutils_export.h"

#include <QString>

class ZOUTILS_EXPORT CZOProcess
{
public:
    CZOProcess() = default;
    explicit CZOProcess(const QString &name) : m_strName(name) {}
    CZOProcess(const CZOProcess &) = default;
    CZOProcess(CZOProcess &&) = default;
    CZOProcess &operator=(const CZOProcess &) = default;
    CZOProcess &operator=(CZOProcess &&) = default;
    virtual ~CZOProcess();

    QString name() const { return m_strName; }
    void setName(const QString &name) { m_strName = name; }
    int exitStatus() const { return m_nExitStatus; }
    void setExitStatus(int status) { m_nExitStatus = status; }

private:
    QString m_strName;
    int m_nExitStatus = 0;
};
