#pragma once
// One user label and the value the user keeps for it ("Group": "Study 4").

#include "zoparser_export.h"

#include <QString>

class ZOPARSER_EXPORT CPLPreferenceKey
{
public:
    CPLPreferenceKey() = default;
    explicit CPLPreferenceKey(const QString &name, const QString &value = QString())
        : m_strName(name), m_strValue(value) {}

    QString name() const { return m_strName; }
    void setName(const QString &name) { m_strName = name; }
    QString value() const { return m_strValue; }
    void setValue(const QString &value) { m_strValue = value; }

    bool operator==(const CPLPreferenceKey &o) const { return m_strName == o.m_strName && m_strValue == o.m_strValue; }
    bool operator!=(const CPLPreferenceKey &o) const { return !(*this == o); }

private:
    QString m_strName;
    QString m_strValue;
};
