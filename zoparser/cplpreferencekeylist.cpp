#include "cplpreferencekeylist.h"

#include "cpllabeldataset.h"
#include "cplpreferencekey.h"
#include "cplsection.h"
#include "parserconstants_p.h"
#include "textform_p.h"

CPLPreferenceKeyList::CPLPreferenceKeyList(int count)
{
    for (int i = 0; i < count; ++i)
        m_vKeys.append(new CPLPreferenceKey);
}

CPLPreferenceKeyList::CPLPreferenceKeyList(const CPLPreferenceKeyList &other)
{
    *this = other;
}

CPLPreferenceKeyList &CPLPreferenceKeyList::operator=(const CPLPreferenceKeyList &other)
{
    if (this == &other)
        return *this;
    QVector<CPLPreferenceKey *> copies;
    copies.reserve(other.m_vKeys.size());
    for (const CPLPreferenceKey *k : other.m_vKeys)
        copies.append(new CPLPreferenceKey(*k));
    qDeleteAll(m_vKeys);
    m_vKeys = copies;
    return *this;
}

CPLPreferenceKeyList::~CPLPreferenceKeyList()
{
    qDeleteAll(m_vKeys);
}

CPLPreferenceKey *CPLPreferenceKeyList::operator[](int i) const
{
    return i >= 0 && i < m_vKeys.size() ? m_vKeys.at(i) : nullptr;
}

CPLPreferenceKey *CPLPreferenceKeyList::findKey(const QString &name) const
{
    for (CPLPreferenceKey *k : m_vKeys)
        if (k->name() == name)
            return k;
    return nullptr;
}

tag_estatus CPLPreferenceKeyList::loadData(const QString &block, const QStringList &names)
{
    // The block normally comes without its header line; one is put in front
    // so that the key lines read as a section. A block that still has its
    // header is read as it is.
    const bool hasHeader = block.trimmed().startsWith(zoparser::headerPrefix());
    const QString text = hasHeader ? block : zoparser::headerPrefix() + zoparser::kUserLabelNameSet()
            + QStringLiteral(":\n") + block;
    CPLSection section;
    zoparser::SectionReader reader(text);
    tag_estatus status = reader.next(section);
    if (status == ES_SUCCESS) {
        CPLSection rest;
        if (reader.next(rest) != ES_END_OF_BUFFER)
            status = ES_FORMAT_CHAR_NOT_FOUND;
    } else if (status == ES_END_OF_BUFFER) {
        status = ES_SUCCESS;
    }
    // A fault before the first section leaves `section` empty: every value
    // is then empty, but the list still has one key per name.

    qDeleteAll(m_vKeys);
    m_vKeys.clear();
    m_vKeys.reserve(names.size());
    for (const QString &name : names)
        m_vKeys.append(new CPLPreferenceKey(name, section.value(name)));
    return status;
}

tag_estatus CPLPreferenceKeyList::saveData(CPLLabelDataSet *labelSet, QString *text) const
{
    if (!labelSet || !text)
        return ES_INVALID_POINTER;
    QStringList labels;
    labelSet->getLabelData(&labels);
    CPLSection section(zoparser::kUserLabelNameSet(), labelSet->name());
    for (int i = 0; i < labels.size(); ++i) {
        const tag_estatus status = section.setValue(labels.at(i), i < m_vKeys.size() ? m_vKeys.at(i)->value() : QString());
        if (status != ES_SUCCESS)
            return status;
    }
    return section.saveSectionData(*text);
}
