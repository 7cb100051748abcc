#pragma once
// One named section of a click-info, sequence, camera-info, settings or
// profile file: ordered key/value pairs, all values kept as text.
//
// Text form (shared by every record of this library):
//   "*** " name ":"                      a header line, or
//   "*** " name ":" TAB comment          ("*** User Input:\t(User Profile)")
//   key ":" TAB value                    one line per key, in key order
//   TAB more                             continues the value above after a "\n"
//   (empty line)                         ends the section
// Lines are written with "\r\n"; "\r\n", "\n" and "\r" are read alike.
// Keys and values may hold ":" and blanks; a line splits at its first
// ":" TAB. A value's line breaks are written as continuation lines and read
// back as "\n" (a "\r" or "\r\n" inside a value comes back as "\n").
// Reading is lenient where nothing is lost: a key line "key:" without TAB
// is an empty value, a line of blanks counts as empty, and a header may
// follow a section without an empty line between. Anything else (a header
// without ":", a key line without ":" TAB, text outside a section) is a
// grammar fault. Of duplicate keys the first is kept. Keys, values, names
// and comments are never trimmed.

#include "zoparser_export.h"
#include "zoenums.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

namespace zoparser { class SectionReader; }

class ZOPARSER_EXPORT CPLSection
{
public:
    CPLSection() = default;
    explicit CPLSection(const QString &name, const QString &comment = QString());
    // Copies are deep and independent.
    CPLSection(const CPLSection &other) = default;
    CPLSection &operator=(const CPLSection &other) = default;
    CPLSection(CPLSection &&other) noexcept = default;
    CPLSection &operator=(CPLSection &&other) noexcept = default;
    ~CPLSection() = default;

    // The section's name, also called its key ("Camera System Info").
    QString name() const { return m_strName; }
    void setName(const QString &name) { m_strName = name; }
    // The text after the TAB of the header line; empty for none.
    QString comment() const { return m_strComment; }
    void setComment(const QString &comment) { m_strComment = comment; }

    // Keys in order.
    QStringList keys() const;
    int count() const { return m_vEntries.size(); }
    bool isEmpty() const { return m_vEntries.isEmpty(); }
    bool hasKey(const QString &key) const { return indexOf(key) >= 0; }

    // Reads. Keys match exactly (case-sensitive). On failure the output is
    // left untouched, so a caller may preset a default:
    // ES_SECTION_KEY_NOT_FOUND for a missing key, ES_INVALID_DATA_TYPE for a
    // value that is not a number (int: base 10, blanks around allowed; double:
    // C locale, "nan"/"inf" accepted) or not a truth value (bool: an integer,
    // non-zero is true, or "true"/"false"/"yes"/"no"/"on"/"off" in any case).
    tag_estatus getValue(const QString &key, QString &value) const;
    tag_estatus getIntValue(const QString &key, int &value) const;
    tag_estatus getDoubleValue(const QString &key, double &value) const;
    tag_estatus getBoolValue(const QString &key, bool &value) const;
    // The value, or `defaultValue` when the key is missing.
    QString value(const QString &key, const QString &defaultValue = QString()) const;

    // Writes add a key at the end or replace the value of an existing key in
    // its place. A key that the text form cannot hold (one holding a line
    // break or ":" TAB, starting with TAB or with "*** ") is refused with
    // ES_INVALID_ARGUMENT and nothing changes.
    tag_estatus setValue(const QString &key, const QString &value);
    // Numbers are written so that the typed reads give back the same value
    // (doubles to 17 significant digits); bools as "1" and "0".
    tag_estatus setIntValue(const QString &key, int value);
    tag_estatus setDoubleValue(const QString &key, double value);
    tag_estatus setBoolValue(const QString &key, bool value);
    // Returns whether the key was there.
    bool removeKey(const QString &key);
    void clear();

    // Appends the section's text (header, key lines, the ending empty line)
    // to `text`. ES_INVALID_ARGUMENT, and nothing appended, when the name is
    // empty or holds a line break or ":" TAB, or the comment holds a line break.
    tag_estatus saveSectionData(QString &text) const;

    // Same name, comment, keys, values and order.
    bool operator==(const CPLSection &other) const;
    bool operator!=(const CPLSection &other) const { return !(*this == other); }

    // Whether `key` can be written as a key line.
    static bool isStorableKey(const QString &key);

private:
    struct Entry {
        QString key;
        QString value;
        bool operator==(const Entry &o) const { return key == o.key && value == o.value; }
    };
    friend class zoparser::SectionReader; // fills sections without re-checking keys

    int indexOf(const QString &key) const;
    void appendEntry(const QString &key, const QString &value);
    void rebuildIndex();
    // Small sections are searched in order; from this size on, m_hIndex is kept.
    static constexpr int kIndexFrom = 48;

    QString m_strName;
    QString m_strComment;
    QVector<Entry> m_vEntries;
    QHash<QString, int> m_hIndex; // key -> position in m_vEntries; empty below kIndexFrom entries
};
