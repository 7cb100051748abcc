#include "cplclickinfo.h"

#include "cplsection.h"
#include "parserconstants_p.h"
#include "siasetupinfo.h"
#include "textform_p.h"
#include "usersections_p.h"

#include <memory>

tag_estatus CPLClickInfo::addTiffClickNumberSection(int formatRevision, bool complete, const QString &appVersion)
{
    if (m_strClickNumber.isEmpty())
        return ES_NO_CLICKNUMBERS;
    auto section = std::make_unique<CPLSection>(zoparser::kClickNumber());
    tag_estatus status = section->setValue(zoparser::kClickNumber(), m_strClickNumber);
    if (status == ES_SUCCESS)
        status = section->setValue(zoparser::kClickInfoType(), zoparser::kSingleClick());
    if (status == ES_SUCCESS)
        status = section->setIntValue(zoparser::kClickInfoFormat(), formatRevision);
    if (status == ES_SUCCESS)
        status = section->setBoolValue(zoparser::kCompleteClickNumber(), complete);
    if (status == ES_SUCCESS)
        status = section->setValue(zoparser::kAppVersion(), appVersion);
    if (status != ES_SUCCESS)
        return status;
    return addSection(section.release());
}

tag_estatus CPLClickInfo::appendUserSpecificSections(int sections)
{
    return zoparser::appendUserSections(*this, sections);
}

tag_estatus CPLClickInfo::appendAnalysisUserInputSection()
{
    if (getSection(zoparser::kAnalysisUserInput()))
        return ES_SUCCESS;
    return addSection(new CPLSection(zoparser::kAnalysisUserInput()));
}

tag_estatus CPLClickInfo::addImageSection(const QString &fileName, const QString &comment, tag_eimagetype type,
                                          sIASetupInfo *setup, bool replace)
{
    if (!setup)
        return ES_INVALID_POINTER;
    const QString name = imageTypeSectionName(type);
    if (name.isEmpty())
        return ES_WRONG_IMAGE_TYPE;
    if (!replace && getSection(name))
        return ES_ALREADY_PRESENT;
    auto section = std::make_unique<CPLSection>(name, comment);
    tag_estatus status = section->setValue(zoparser::kFileName(), fileName);
    if (status == ES_SUCCESS)
        status = setup->writeToSection(section.get(), type);
    if (status != ES_SUCCESS)
        return status;
    return addSection(section.release());
}

tag_estatus CPLClickInfo::saveClickInfo(const QString &path) const
{
    return saveFile(path);
}

tag_estatus CPLClickInfo::loadClickInfo(const QString &path)
{
    m_strClickNumber.clear();
    const tag_estatus status = loadFile(path);
    if (status != ES_SUCCESS)
        return status;
    if (m_lSections.isEmpty())
        return ES_NO_CLICKINFO_SECTIONS;
    if (const CPLSection *s = getSection(zoparser::kClickNumber()))
        s->getValue(zoparser::kClickNumber(), m_strClickNumber);
    return ES_SUCCESS;
}

tag_estatus CPLClickInfo::copySectionBuffer(QString &buffer, QString &section)
{
    section.clear();
    CPLSection parsed;
    zoparser::SectionReader reader(buffer);
    const tag_estatus status = reader.next(parsed);
    if (status == ES_END_OF_BUFFER) {
        buffer.clear();
        return status;
    }
    if (status != ES_SUCCESS)
        return status;
    section = buffer.mid(reader.sectionStart(), reader.position() - reader.sectionStart());
    buffer.remove(0, reader.position());
    return ES_SUCCESS;
}

CPLSection *CPLClickInfo::parseSectionFromBuffer(const QString &text, tag_estatus *status)
{
    auto section = std::make_unique<CPLSection>();
    zoparser::SectionReader reader(text);
    const tag_estatus result = reader.next(*section);
    if (status)
        *status = result;
    return result == ES_SUCCESS ? section.release() : nullptr;
}
