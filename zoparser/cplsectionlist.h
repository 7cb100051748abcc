#pragma once
// An ordered list of owned sections with the file form of cplsection.h:
// the common part of the click-info, sequence, camera-info and settings
// records.

#include "zoparser_export.h"
#include "zoenums.h"

#include <QList>
#include <QString>

class CPLSection;

class ZOPARSER_EXPORT CPLSectionList
{
public:
    CPLSectionList() = default;
    // Copies are deep: every section is copied.
    CPLSectionList(const CPLSectionList &other);
    CPLSectionList &operator=(const CPLSectionList &other);
    virtual ~CPLSectionList();

    // Deletes every section.
    void clear();

    // The first section of that name (exact match), or null. The pointer
    // stays owned by the list and valid until the section is replaced or
    // the list cleared, loaded or destroyed.
    CPLSection *getSection(const QString &name) const;
    const QList<CPLSection *> &sections() const { return m_lSections; }
    int sectionCount() const { return m_lSections.size(); }

    // Takes ownership of `section`. A section of the same name is replaced
    // in its place (and deleted); otherwise the section is appended.
    // ES_INVALID_POINTER for null; adding a section the list already holds
    // is a no-op.
    tag_estatus addSection(CPLSection *section);
    // Deletes the first section of that name; returns whether there was one.
    bool removeSection(const QString &name);

    // Replaces the content with the sections of `text`. Sections of the same
    // name are all kept, in file order. On a grammar fault the list keeps
    // the sections before the faulty line and ES_FORMAT_CHAR_NOT_FOUND is
    // returned.
    tag_estatus loadFromText(const QString &text);
    // Appends every section's text, in order.
    tag_estatus saveToText(QString &text) const;

    // Files: written as UTF-8; read as UTF-8, or as Latin-1 when the bytes
    // are not valid UTF-8. Load: ES_FILE_NOT_FOUND, ES_OPEN_FAILED,
    // ES_OUT_OF_MEMORY (larger than maxFileSize()), or a loadFromText status.
    // Save: ES_OPEN_FAILED, ES_WRITE_FAILED, or ES_INVALID_ARGUMENT for a
    // section that cannot be written (the file is then not touched).
    tag_estatus loadFile(const QString &path);
    tag_estatus saveFile(const QString &path) const;

    static qint64 maxFileSize() { return qint64(256) * 1024 * 1024; }

protected:
    QList<CPLSection *> m_lSections; // owned
};
