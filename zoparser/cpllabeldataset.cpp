#include "cpllabeldataset.h"

#include "cplsection.h"
#include "parserconstants_p.h"
#include "textform_p.h"

CPLLabelDataSet::CPLLabelDataSet(const QString &name, const QStringList &labels)
    : m_strName(name), m_lLabels(labels)
{
}

tag_estatus CPLLabelDataSet::getLabelData(QStringList *labels) const
{
    if (!labels)
        return ES_INVALID_POINTER;
    *labels = m_lLabels;
    return ES_SUCCESS;
}

tag_estatus CPLLabelDataSet::loadData(const QString &block)
{
    CPLSection section;
    zoparser::SectionReader reader(block);
    const tag_estatus status = reader.next(section);
    if (status == ES_END_OF_BUFFER)
        return ES_HEADER_NOT_FOUND;
    if (status != ES_SUCCESS)
        return status;
    if (section.name() != zoparser::kUserLabelNameSet())
        return ES_HEADER_NOT_FOUND;
    m_strName = section.comment();
    m_lLabels = section.keys();
    return ES_SUCCESS;
}

tag_estatus CPLLabelDataSet::saveData(QString &text) const
{
    CPLSection section(zoparser::kUserLabelNameSet(), m_strName);
    for (const QString &label : m_lLabels) {
        const tag_estatus status = section.setValue(label, QString());
        if (status != ES_SUCCESS)
            return status;
    }
    return section.saveSectionData(text);
}
