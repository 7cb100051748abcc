#pragma once
// A parsed settings or profile file: sections looked up by name with typed
// reads of their keys.

#include "cplsectionlist.h"
#include "zoparser_export.h"
#include "zoenums.h"

#include <QString>

class ZOPARSER_EXPORT CPLSettingsFileWrapper : public CPLSectionList
{
public:
    CPLSettingsFileWrapper() = default;
    CPLSettingsFileWrapper(const CPLSettingsFileWrapper &other) = default;
    CPLSettingsFileWrapper &operator=(const CPLSettingsFileWrapper &other) = default;
    ~CPLSettingsFileWrapper() override = default;

    // Replaces the content with the file's sections (CPLSectionList::loadFile).
    tag_estatus load(const QString &path) { return loadFile(path); }
    tag_estatus save(const QString &path) const { return saveFile(path); }

    // Typed reads from the first section called `section`. The output is
    // untouched on failure: ES_SECTION_KEY_NOT_FOUND for a missing section or
    // key, ES_INVALID_DATA_TYPE for an unparsable value (rules of CPLSection).
    tag_estatus getValue(const QString &section, const QString &key, QString &value) const;
    tag_estatus getIntValue(const QString &section, const QString &key, int &value) const;
    tag_estatus getDoubleValue(const QString &section, const QString &key, double &value) const;
    tag_estatus getBoolValue(const QString &section, const QString &key, bool &value) const;
};
