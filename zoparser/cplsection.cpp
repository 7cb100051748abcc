#include "cplsection.h"

#include "textform_p.h"

#include <cmath>

CPLSection::CPLSection(const QString &name, const QString &comment)
    : m_strName(name), m_strComment(comment)
{
}

QStringList CPLSection::keys() const
{
    QStringList out;
    out.reserve(m_vEntries.size());
    for (const Entry &e : m_vEntries)
        out.append(e.key);
    return out;
}

int CPLSection::indexOf(const QString &key) const
{
    if (m_vEntries.size() >= kIndexFrom)
        return m_hIndex.value(key, -1);
    for (int i = 0; i < m_vEntries.size(); ++i)
        if (m_vEntries.at(i).key == key)
            return i;
    return -1;
}

void CPLSection::appendEntry(const QString &key, const QString &value)
{
    m_vEntries.append(Entry{key, value});
    if (m_vEntries.size() == kIndexFrom)
        rebuildIndex();
    else if (m_vEntries.size() > kIndexFrom)
        m_hIndex.insert(key, m_vEntries.size() - 1);
}

void CPLSection::rebuildIndex()
{
    m_hIndex.clear();
    if (m_vEntries.size() < kIndexFrom)
        return;
    m_hIndex.reserve(m_vEntries.size());
    for (int i = 0; i < m_vEntries.size(); ++i)
        m_hIndex.insert(m_vEntries.at(i).key, i);
}

tag_estatus CPLSection::getValue(const QString &key, QString &value) const
{
    const int i = indexOf(key);
    if (i < 0)
        return ES_SECTION_KEY_NOT_FOUND;
    value = m_vEntries.at(i).value;
    return ES_SUCCESS;
}

QString CPLSection::value(const QString &key, const QString &defaultValue) const
{
    QString out = defaultValue;
    getValue(key, out);
    return out;
}

tag_estatus CPLSection::getIntValue(const QString &key, int &value) const
{
    QString text;
    if (getValue(key, text) != ES_SUCCESS)
        return ES_SECTION_KEY_NOT_FOUND;
    return zoparser::parseInt(text, value) ? ES_SUCCESS : ES_INVALID_DATA_TYPE;
}

tag_estatus CPLSection::getDoubleValue(const QString &key, double &value) const
{
    QString text;
    if (getValue(key, text) != ES_SUCCESS)
        return ES_SECTION_KEY_NOT_FOUND;
    return zoparser::parseDouble(text, value) ? ES_SUCCESS : ES_INVALID_DATA_TYPE;
}

tag_estatus CPLSection::getBoolValue(const QString &key, bool &value) const
{
    QString text;
    if (getValue(key, text) != ES_SUCCESS)
        return ES_SECTION_KEY_NOT_FOUND;
    return zoparser::parseBool(text, value) ? ES_SUCCESS : ES_INVALID_DATA_TYPE;
}

bool CPLSection::isStorableKey(const QString &key)
{
    return !key.startsWith(QLatin1Char('\t')) && !key.startsWith(zoparser::headerPrefix())
        && !key.contains(zoparser::separator()) && !zoparser::hasLineBreak(key);
}

tag_estatus CPLSection::setValue(const QString &key, const QString &value)
{
    if (!isStorableKey(key))
        return ES_INVALID_ARGUMENT;
    const int i = indexOf(key);
    if (i >= 0)
        m_vEntries[i].value = value;
    else
        appendEntry(key, value);
    return ES_SUCCESS;
}

tag_estatus CPLSection::setIntValue(const QString &key, int value)
{
    return setValue(key, QString::number(value));
}

tag_estatus CPLSection::setDoubleValue(const QString &key, double value)
{
    return setValue(key, zoparser::formatDouble(value));
}

tag_estatus CPLSection::setBoolValue(const QString &key, bool value)
{
    return setValue(key, value ? QStringLiteral("1") : QStringLiteral("0"));
}

bool CPLSection::removeKey(const QString &key)
{
    const int i = indexOf(key);
    if (i < 0)
        return false;
    m_vEntries.remove(i);
    rebuildIndex();
    return true;
}

void CPLSection::clear()
{
    m_vEntries.clear();
    m_hIndex.clear();
}

tag_estatus CPLSection::saveSectionData(QString &text) const
{
    if (m_strName.isEmpty() || m_strName.contains(zoparser::separator()) || zoparser::hasLineBreak(m_strName)
        || zoparser::hasLineBreak(m_strComment))
        return ES_INVALID_ARGUMENT;

    const QString eol = zoparser::lineEnd();
    text += zoparser::headerPrefix();
    text += m_strName;
    text += QLatin1Char(':');
    if (!m_strComment.isEmpty()) {
        text += QLatin1Char('\t');
        text += m_strComment;
    }
    text += eol;
    for (const Entry &e : m_vEntries) {
        text += e.key;
        text += zoparser::separator();
        zoparser::appendValue(text, e.value);
        text += eol;
    }
    text += eol;
    return ES_SUCCESS;
}

bool CPLSection::operator==(const CPLSection &other) const
{
    return m_strName == other.m_strName && m_strComment == other.m_strComment && m_vEntries == other.m_vEntries;
}
