#include "textform_p.h"

#include "cplsection.h"

#include <QLocale>

#include <cmath>

namespace zoparser {

namespace {

inline bool isBreak(QChar c) { return c == QLatin1Char('\n') || c == QLatin1Char('\r'); }

bool isBlank(const QChar *p, int len)
{
    for (int i = 0; i < len; ++i)
        if (!p[i].isSpace())
            return false;
    return true;
}

bool startsWithHeader(const QChar *p, int len)
{
    return len >= 4 && p[0] == QLatin1Char('*') && p[1] == QLatin1Char('*') && p[2] == QLatin1Char('*')
        && p[3] == QLatin1Char(' ');
}

// Position of the first ":" TAB in [p, p+len), or -1.
int findSeparator(const QChar *p, int len)
{
    for (int i = 0; i + 1 < len; ++i)
        if (p[i] == QLatin1Char(':') && p[i + 1] == QLatin1Char('\t'))
            return i;
    return -1;
}

} // namespace

void appendValue(QString &text, const QString &value)
{
    const QChar *p = value.constData();
    const int n = value.size();
    int from = 0;
    for (int i = 0; i < n; ++i) {
        if (!isBreak(p[i]))
            continue;
        text.append(p + from, i - from);
        text += QStringLiteral("\r\n\t");
        if (p[i] == QLatin1Char('\r') && i + 1 < n && p[i + 1] == QLatin1Char('\n'))
            ++i;
        from = i + 1;
    }
    text.append(p + from, n - from);
}

QString formatDouble(double value)
{
    if (std::isnan(value))
        return QStringLiteral("nan");
    if (value == 0)
        return std::signbit(value) ? QStringLiteral("-0") : QStringLiteral("0");
    // The shortest of 15 to 17 significant digits that reads back exactly.
    for (int precision = 15; precision < 17; ++precision) {
        const QString text = QString::number(value, 'g', precision);
        bool ok = false;
        if (QLocale::c().toDouble(text, &ok) == value && ok)
            return text;
    }
    return QString::number(value, 'g', 17);
}

bool parseInt(const QString &text, int &value)
{
    bool ok = false;
    const int v = text.trimmed().toInt(&ok, 10);
    if (ok)
        value = v;
    return ok;
}

bool parseDouble(const QString &text, double &value)
{
    bool ok = false;
    const double v = QLocale::c().toDouble(text.trimmed(), &ok);
    if (ok)
        value = v;
    return ok;
}

bool parseBool(const QString &text, bool &value)
{
    const QString t = text.trimmed();
    int number = 0;
    if (parseInt(t, number)) {
        value = number != 0;
        return true;
    }
    static const char *const yes[] = {"true", "yes", "on"};
    static const char *const no[] = {"false", "no", "off"};
    for (const char *word : yes)
        if (t.compare(QLatin1String(word), Qt::CaseInsensitive) == 0) {
            value = true;
            return true;
        }
    for (const char *word : no)
        if (t.compare(QLatin1String(word), Qt::CaseInsensitive) == 0) {
            value = false;
            return true;
        }
    return false;
}

bool SectionReader::peekLine(int &begin, int &end, int &nextPos) const
{
    const int n = m_text.size();
    if (m_pos >= n)
        return false;
    const QChar *p = m_text.constData();
    begin = m_pos;
    end = begin;
    while (end < n && !isBreak(p[end]))
        ++end;
    nextPos = end;
    if (nextPos < n) {
        if (p[nextPos] == QLatin1Char('\r') && nextPos + 1 < n && p[nextPos + 1] == QLatin1Char('\n'))
            nextPos += 2;
        else
            nextPos += 1;
    }
    return true;
}

QString SectionReader::internedKey(const QChar *p, int len)
{
    const auto it = m_keys.constFind(QStringView(p, len));
    if (it != m_keys.constEnd())
        return it.value();
    const QString key(p, len);
    if (m_keys.size() < 4096) // bounded, so odd input cannot grow it without end
        m_keys.insert(QStringView(key), key);
    return key;
}

tag_estatus SectionReader::next(CPLSection &section)
{
    const QChar *p = m_text.constData();
    int begin = 0, end = 0, nextPos = 0;

    // Empty lines between sections.
    for (;;) {
        if (!peekLine(begin, end, nextPos))
            return ES_END_OF_BUFFER;
        if (!isBlank(p + begin, end - begin))
            break;
        m_pos = nextPos;
    }

    m_sectionStart = begin;
    const int start = m_pos;
    auto fault = [&]() {
        m_pos = start;
        return ES_FORMAT_CHAR_NOT_FOUND;
    };

    if (!startsWithHeader(p + begin, end - begin))
        return fault();
    const QChar *rest = p + begin + 4;
    const int restLen = end - begin - 4;
    QString name;
    QString comment;
    const int sep = findSeparator(rest, restLen);
    if (sep >= 0) {
        name = QString(rest, sep);
        comment = QString(rest + sep + 2, restLen - sep - 2);
    } else if (restLen > 0 && rest[restLen - 1] == QLatin1Char(':')) {
        name = QString(rest, restLen - 1);
    } else {
        return fault();
    }
    if (name.isEmpty())
        return fault();

    section.clear();
    section.setName(name);
    section.setComment(comment);
    m_pos = nextPos;

    // Index of the entry that continuation lines extend; -1 before the first
    // key, -2 after a duplicate key (whose lines are skipped with it).
    int last = -1;
    while (peekLine(begin, end, nextPos)) {
        const QChar *line = p + begin;
        const int len = end - begin;
        if (len > 0 && line[0] == QLatin1Char('\t')) {
            if (last == -1)
                return fault();
            if (last >= 0) {
                QString &value = section.m_vEntries[last].value;
                value += QLatin1Char('\n');
                value.append(line + 1, len - 1);
            }
            m_pos = nextPos;
            continue;
        }
        if (startsWithHeader(line, len))
            return ES_SUCCESS; // the next section starts without an empty line
        if (isBlank(line, len)) {
            m_pos = nextPos;
            return ES_SUCCESS;
        }
        QString key;
        QString value;
        const int at = findSeparator(line, len);
        if (at >= 0) {
            key = internedKey(line, at);
            const int valueLen = len - at - 2;
            // Short values ("Open", "1", "Auto") repeat as often as keys do.
            value = valueLen <= 24 ? internedKey(line + at + 2, valueLen) : QString(line + at + 2, valueLen);
        } else if (line[len - 1] == QLatin1Char(':')) {
            key = internedKey(line, len - 1);
        } else {
            return fault();
        }
        if (section.indexOf(key) >= 0) {
            last = -2; // the first of duplicate keys wins
        } else {
            last = section.m_vEntries.size();
            section.appendEntry(key, value);
        }
        m_pos = nextPos;
    }
    return ES_SUCCESS;
}

} // namespace zoparser
