#pragma once
// The click-info record of one acquired image set ("ClickInfo.txt"): named
// sections in the form of cplsection.h.

#include "cplsectionlist.h"
#include "zoparser_export.h"
#include "zoenums.h"

#include <QString>

class CPLSection;
class sIASetupInfo;

class ZOPARSER_EXPORT CPLClickInfo : public CPLSectionList
{
public:
    // Flags of appendUserSpecificSections.
    enum UserSections {
        UserInputSection = 0x1 // "User Input", keyed by the default user labels
    };

    CPLClickInfo() = default;
    CPLClickInfo(const CPLClickInfo &other) = default;
    CPLClickInfo &operator=(const CPLClickInfo &other) = default;
    ~CPLClickInfo() override = default;

    QString getClickNumber() const { return m_strClickNumber; }
    void setClickNumber(const QString &clickNumber) { m_strClickNumber = clickNumber; }

    // Adds (or replaces) the section "ClickNumber" with the keys
    // "ClickNumber" (the click number), "ClickInfoType" ("SingleClick"),
    // "ClickInfo Format" (`formatRevision`), "Complete ClickNumber" ("1" when
    // the click number was given complete, "0" when it carries a date-time
    // stamp) and "Zolvane Version" (`appVersion`).
    // ES_NO_CLICKNUMBERS when no click number is set.
    tag_estatus addTiffClickNumberSection(int formatRevision, bool complete, const QString &appVersion);
    // For each flag of `sections` (UserSections), appends that section unless
    // the record has it already. ES_INVALID_INPUT for an unknown flag.
    tag_estatus appendUserSpecificSections(int sections);
    // Appends an empty "Analysis User Input" section unless there is one.
    tag_estatus appendAnalysisUserInputSection();
    // Adds (or, with `replace`, replaces) the section of image kind `type`
    // (named as imageTypeSectionName gives it) holding "File Name"
    // (`fileName`) and the set-up as sIASetupInfo::writeToSection writes it
    // for that kind; `comment` becomes the section's header comment.
    // ES_INVALID_POINTER for a null set-up, ES_WRONG_IMAGE_TYPE for a kind
    // outside the enumeration, ES_ALREADY_PRESENT when the section exists
    // and `replace` is false.
    tag_estatus addImageSection(const QString &fileName, const QString &comment, tag_eimagetype type,
                                sIASetupInfo *setup, bool replace);

    // Writes every section to `path` (the click number lives in the
    // "ClickNumber" section). Statuses as CPLSectionList::saveFile.
    tag_estatus saveClickInfo(const QString &path) const;
    // Replaces the record with the file's sections and takes the click
    // number from the "ClickNumber" section when there is one. A file with
    // no section gives ES_NO_CLICKINFO_SECTIONS; else as loadFile.
    tag_estatus loadClickInfo(const QString &path);

    // Cuts the next section off the front of `buffer`: leading empty lines,
    // the header line and the section's lines up to and including its ending
    // empty line (or up to the next header or the end) are removed from
    // `buffer`, and the section's text (header and key lines, "\n"-ended as in
    // the buffer) goes to `section`. ES_END_OF_BUFFER when only empty lines
    // remain (buffer emptied); ES_FORMAT_CHAR_NOT_FOUND when the next
    // non-empty line is not a header or the section breaks the grammar
    // (nothing cut). `section` is empty on failure. Each call moves the rest
    // of the buffer, so whole files are better read with loadFromText.
    static tag_estatus copySectionBuffer(QString &buffer, QString &section);
    // Parses the first section of `text` into a new CPLSection that the
    // caller owns. Null when `text` holds no section or breaks the grammar
    // before that section ends; `status` (optional) tells which.
    static CPLSection *parseSectionFromBuffer(const QString &text, tag_estatus *status = nullptr);

private:
    QString m_strClickNumber;
};
