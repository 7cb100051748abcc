#include "cplsettingsfilewrapper.h"

#include "cplsection.h"

tag_estatus CPLSettingsFileWrapper::getValue(const QString &section, const QString &key, QString &value) const
{
    const CPLSection *s = getSection(section);
    return s ? s->getValue(key, value) : ES_SECTION_KEY_NOT_FOUND;
}

tag_estatus CPLSettingsFileWrapper::getIntValue(const QString &section, const QString &key, int &value) const
{
    const CPLSection *s = getSection(section);
    return s ? s->getIntValue(key, value) : ES_SECTION_KEY_NOT_FOUND;
}

tag_estatus CPLSettingsFileWrapper::getDoubleValue(const QString &section, const QString &key, double &value) const
{
    const CPLSection *s = getSection(section);
    return s ? s->getDoubleValue(key, value) : ES_SECTION_KEY_NOT_FOUND;
}

tag_estatus CPLSettingsFileWrapper::getBoolValue(const QString &section, const QString &key, bool &value) const
{
    const CPLSection *s = getSection(section);
    return s ? s->getBoolValue(key, value) : ES_SECTION_KEY_NOT_FOUND;
}
