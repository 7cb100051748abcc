#include "cplsectionlist.h"

#include "cplsection.h"
#include "czosavefile.h"
#include "textform_p.h"

#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

CPLSectionList::CPLSectionList(const CPLSectionList &other)
{
    *this = other;
}

CPLSectionList &CPLSectionList::operator=(const CPLSectionList &other)
{
    if (this == &other)
        return *this;
    QList<CPLSection *> copies;
    copies.reserve(other.m_lSections.size());
    for (const CPLSection *s : other.m_lSections)
        copies.append(new CPLSection(*s));
    clear();
    m_lSections = copies;
    return *this;
}

CPLSectionList::~CPLSectionList()
{
    clear();
}

void CPLSectionList::clear()
{
    qDeleteAll(m_lSections);
    m_lSections.clear();
}

CPLSection *CPLSectionList::getSection(const QString &name) const
{
    for (CPLSection *s : m_lSections)
        if (s->name() == name)
            return s;
    return nullptr;
}

tag_estatus CPLSectionList::addSection(CPLSection *section)
{
    if (!section)
        return ES_INVALID_POINTER;
    if (m_lSections.contains(section))
        return ES_SUCCESS;
    for (int i = 0; i < m_lSections.size(); ++i) {
        if (m_lSections.at(i)->name() == section->name()) {
            delete m_lSections.at(i);
            m_lSections[i] = section;
            return ES_SUCCESS;
        }
    }
    m_lSections.append(section);
    return ES_SUCCESS;
}

bool CPLSectionList::removeSection(const QString &name)
{
    for (int i = 0; i < m_lSections.size(); ++i) {
        if (m_lSections.at(i)->name() == name) {
            delete m_lSections.takeAt(i);
            return true;
        }
    }
    return false;
}

tag_estatus CPLSectionList::loadFromText(const QString &text)
{
    clear();
    zoparser::SectionReader reader(text);
    for (;;) {
        auto *section = new CPLSection;
        const tag_estatus status = reader.next(*section);
        if (status != ES_SUCCESS) {
            delete section;
            return status == ES_END_OF_BUFFER ? ES_SUCCESS : status;
        }
        m_lSections.append(section);
    }
}

tag_estatus CPLSectionList::saveToText(QString &text) const
{
    QString out;
    for (const CPLSection *s : m_lSections) {
        const tag_estatus status = s->saveSectionData(out);
        if (status != ES_SUCCESS)
            return status;
    }
    text += out;
    return ES_SUCCESS;
}

tag_estatus CPLSectionList::loadFile(const QString &path)
{
    QFile file(path);
    if (!file.exists())
        return ES_FILE_NOT_FOUND;
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly))
        return ES_OPEN_FAILED;
    if (file.size() > maxFileSize())
        return ES_OUT_OF_MEMORY;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return ES_READ_FAILED;

    QTextCodec::ConverterState state;
    QString text = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars > 0)
        text = QString::fromLatin1(bytes); // older files were written in an 8-bit encoding
    return loadFromText(text);
}

tag_estatus CPLSectionList::saveFile(const QString &path) const
{
    QString text;
    const tag_estatus status = saveToText(text);
    if (status != ES_SUCCESS)
        return status;
    CZOSaveFile file(path);
    if (!file.open())
        return ES_OPEN_FAILED;
    const QByteArray bytes = text.toUtf8();
    if (file.device()->write(bytes) != bytes.size() || !file.commit())
        return ES_WRITE_FAILED;
    return ES_SUCCESS;
}
