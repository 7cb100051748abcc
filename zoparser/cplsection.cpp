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

tag_estatus CPLSection::getValue(const QString &key, QString &value) const
{
    const auto it = m_hIndex.constFind(key);
    if (it == m_hIndex.constEnd())
        return ES_SECTION_KEY_NOT_FOUND;
    value = m_vEntries.at(it.value()).value;
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
    const auto it = m_hIndex.constFind(key);
    if (it != m_hIndex.constEnd()) {
        m_vEntries[it.value()].value = value;
    } else {
        m_hIndex.insert(key, m_vEntries.size());
        m_vEntries.append(Entry{key, value});
    }
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
    const auto it = m_hIndex.find(key);
    if (it == m_hIndex.end())
        return false;
    const int pos = it.value();
    m_hIndex.erase(it);
    m_vEntries.remove(pos);
    for (int i = pos; i < m_vEntries.size(); ++i)
        m_hIndex[m_vEntries.at(i).key] = i;
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
