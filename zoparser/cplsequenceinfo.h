#pragma once
// The sequence record ("SequenceInfo.txt"): the click numbers of a series
// of clicks and the sections describing the series.

#include "cplsectionlist.h"
#include "zoparser_export.h"
#include "zoenums.h"

#include <QString>
#include <QStringList>

class ZOPARSER_EXPORT CPLSequenceInfo : public CPLSectionList
{
public:
    CPLSequenceInfo() = default;
    CPLSequenceInfo(const CPLSequenceInfo &other) = default;
    CPLSequenceInfo &operator=(const CPLSequenceInfo &other) = default;
    ~CPLSequenceInfo() override = default;

    // Empties the click-number list; sections stay.
    void clearSequenceList() { m_lClickNumbers.clear(); }
    // Appends a click number. ES_INVALID_INPUT for an empty text or one that
    // holds a line break.
    tag_estatus addClickNumber(const QString &clickNumber);
    const QStringList &getClickNumbers() const { return m_lClickNumbers; }

    // Adds (or replaces) the section "Sequence" from the click numbers added
    // so far: "Zolvane Version" (`appVersion`), "ClickNumbers in Sequence"
    // (their count) and "ClickNumber 1" ... "ClickNumber n" in list order.
    tag_estatus addSequenceNumberSection(const QString &appVersion);
    // As CPLClickInfo::appendUserSpecificSections.
    tag_estatus appendUserSpecificSections(int sections);

    // Statuses as CPLSectionList::saveFile.
    tag_estatus saveSequenceInfo(const QString &path) const;
    // Replaces the record with the file's sections; the click numbers come
    // from the "Sequence" section. ES_NO_SEQINFO_SECTIONS for a file with
    // no section, ES_CORRUPT_FILE when "Sequence" lists a click number that
    // is missing; else as loadFile.
    tag_estatus loadSequenceInfo(const QString &path);

private:
    QStringList m_lClickNumbers;
};
