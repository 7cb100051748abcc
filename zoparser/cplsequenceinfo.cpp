#include "cplsequenceinfo.h"

#include "cplsection.h"
#include "parserconstants_p.h"
#include "textform_p.h"
#include "usersections_p.h"

#include <memory>

namespace {

QString clickNumberKey(int oneBased)
{
    return zoparser::kClickNumber() + QLatin1Char(' ') + QString::number(oneBased);
}

} // namespace

tag_estatus CPLSequenceInfo::addClickNumber(const QString &clickNumber)
{
    if (clickNumber.isEmpty() || zoparser::hasLineBreak(clickNumber))
        return ES_INVALID_INPUT;
    m_lClickNumbers.append(clickNumber);
    return ES_SUCCESS;
}

tag_estatus CPLSequenceInfo::addSequenceNumberSection(const QString &appVersion)
{
    auto section = std::make_unique<CPLSection>(zoparser::kSequence());
    section->setValue(zoparser::kAppVersion(), appVersion);
    section->setIntValue(zoparser::kClickNumbersInSequence(), m_lClickNumbers.size());
    for (int i = 0; i < m_lClickNumbers.size(); ++i)
        section->setValue(clickNumberKey(i + 1), m_lClickNumbers.at(i));
    return addSection(section.release());
}

tag_estatus CPLSequenceInfo::appendUserSpecificSections(int sections)
{
    return zoparser::appendUserSections(*this, sections);
}

tag_estatus CPLSequenceInfo::saveSequenceInfo(const QString &path) const
{
    return saveFile(path);
}

tag_estatus CPLSequenceInfo::loadSequenceInfo(const QString &path)
{
    m_lClickNumbers.clear();
    const tag_estatus status = loadFile(path);
    if (status != ES_SUCCESS)
        return status;
    if (m_lSections.isEmpty())
        return ES_NO_SEQINFO_SECTIONS;
    const CPLSection *sequence = getSection(zoparser::kSequence());
    if (!sequence)
        return ES_SUCCESS;
    int count = 0;
    if (sequence->getIntValue(zoparser::kClickNumbersInSequence(), count) != ES_SUCCESS || count < 0)
        return ES_CORRUPT_FILE;
    QStringList numbers;
    for (int i = 1; i <= count; ++i) {
        QString number;
        if (sequence->getValue(clickNumberKey(i), number) != ES_SUCCESS || number.isEmpty())
            return ES_CORRUPT_FILE;
        numbers.append(number);
    }
    m_lClickNumbers = numbers;
    return ES_SUCCESS;
}
