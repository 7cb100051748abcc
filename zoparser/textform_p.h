#pragma once
// Pieces of the section text form shared by the readers and writers of this
// library. Not installed.

#include "zoenums.h"

#include <QHash>
#include <QString>
#include <QStringView>

class CPLSection;

namespace zoparser {

inline QString headerPrefix() { return QStringLiteral("*** "); }
inline QString separator() { return QStringLiteral(":\t"); }
inline QString lineEnd() { return QStringLiteral("\r\n"); }

inline bool hasLineBreak(const QString &text)
{
    for (const QChar c : text)
        if (c == QLatin1Char('\n') || c == QLatin1Char('\r'))
            return true;
    return false;
}

// Appends a value; its line breaks become "\r\n" TAB continuation lines.
void appendValue(QString &text, const QString &value);

// Number texts that read back to the same value.
QString formatDouble(double value);
bool parseInt(const QString &text, int &value);
bool parseDouble(const QString &text, double &value);
bool parseBool(const QString &text, bool &value);

// Reads sections one after another from a text, by position, so that a
// whole file is read in one linear pass.
class SectionReader
{
public:
    explicit SectionReader(const QString &text, int pos = 0) : m_text(text), m_pos(pos) {}

    // Reads the next section into `section` (replacing its content).
    // ES_SUCCESS; ES_END_OF_BUFFER when only empty lines remain;
    // ES_FORMAT_CHAR_NOT_FOUND when the next non-empty line is not a header
    // or a line of the section breaks the grammar (the position is then left
    // at the start of that section).
    tag_estatus next(CPLSection &section);

    // Where reading continues.
    int position() const { return m_pos; }
    // Start of the header line of the last section read (or attempted).
    int sectionStart() const { return m_sectionStart; }

private:
    // The line at m_pos: [begin, end) and the start of the line after it.
    bool peekLine(int &begin, int &end, int &nextPos) const;

    // One shared copy of each key text (and of short values): records
    // repeat the same keys in section after section.
    QString internedKey(const QChar *p, int len);

    const QString &m_text;
    QHash<QStringView, QString> m_keys;
    int m_pos = 0;
    int m_sectionStart = 0;
};

} // namespace zoparser
