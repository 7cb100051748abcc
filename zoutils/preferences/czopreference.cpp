#include "czopreference.h"

QString CZOPreference::m_strAppVersion;

CZOPreference::~CZOPreference() = default;

QString CZOPreference::getAppVersion()
{
    return m_strAppVersion;
}

void CZOPreference::setAppVersion(const QString &version)
{
    m_strAppVersion = version;
}
