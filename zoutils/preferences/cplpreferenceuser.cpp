#include "cplpreferenceuser.h"

#include "cplclickinfo.h"
#include "cpllabeldataset.h"
#include "cplpreferencekeylist.h"
#include "cplsection.h"
#include "czopreference.h"
#include "czosavefile.h"
#include "czoslog.h"
#include "generalutilities.h"
#include "zoconstants.h"
#include "zopreferencetexts_p.h"

#include <QDir>
#include <QFile>
#include <QTextCodec>
#include <QtDebug>

using namespace zoprefs;

QList<CPLLabelDataSet *> CPLPreferenceUser::m_pLabelDataSetList;
int CPLPreferenceUser::m_nDataSetCount = 0;

namespace {

const QLatin1String kLineEnd("\r\n");
const QLatin1String kNewLineHeader("\n*** ");

// Profiles are written in Latin-1. They are read in the local 8-bit encoding,
// falling back to Latin-1 where that is UTF-8 and the bytes are not, so that
// our own files always read back.
QString decodeProfile(const QByteArray &bytes)
{
    QTextCodec *codec = QTextCodec::codecForLocale();
    if (codec) {
        QTextCodec::ConverterState state;
        const QString text = codec->toUnicode(bytes.constData(), bytes.size(), &state);
        if (state.invalidChars == 0)
            return text;
    }
    return QString::fromLatin1(bytes);
}

// A header value must stay on its line.
QString oneLine(QString value)
{
    value.replace(QLatin1Char('\r'), QLatin1Char(' '));
    value.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return value;
}

// The value after "key:" up to the end of its line, trimmed; `found` tells
// whether the key was there.
QString headerValue(const QString &text, const QString &key, bool *found)
{
    const QString label = key + QLatin1Char(':');
    const int at = text.indexOf(label);
    *found = at >= 0;
    if (at < 0)
        return QString();
    const int from = at + label.size();
    int end = text.indexOf(QLatin1Char('\n'), from);
    if (end < 0)
        end = text.size();
    return text.mid(from, end - from).trimmed();
}

// The start of the next line that begins with "*** " after `from`, or the end.
int nextHeaderLine(const QString &text, int from)
{
    const int at = text.indexOf(kNewLineHeader, from);
    return at < 0 ? text.size() : at + 1;
}

// The start of the next line that begins with `marker` at or after `from`.
int nextLineStartingWith(const QString &text, const QString &marker, int from)
{
    for (int at = text.indexOf(marker, from); at >= 0; at = text.indexOf(marker, at + 1)) {
        if (at == 0 || text.at(at - 1) == QLatin1Char('\n'))
            return at;
    }
    return -1;
}

// Latin-1, as profiles have always been written, unless that would not read
// back the same (characters beyond Latin-1, or Latin-1 bytes that happen to
// form UTF-8): then UTF-8, so that nothing is lost.
QByteArray encodeProfile(const QString &text)
{
    bool ascii = true;
    for (const QChar c : text) {
        if (c.unicode() > 0x7f) {
            ascii = false;
            break;
        }
    }
    const QByteArray latin1 = text.toLatin1();
    if (ascii || decodeProfile(latin1) == text)
        return latin1;
    return text.toUtf8();
}

} // namespace

CPLPreferenceUser::CPLPreferenceUser()
    : m_strPassword(getMD5String(QString()))
    , m_strChosenLabelName(ZO_PRODUCT_ZOLVANE_UNIVERSAL)
    , m_strPreferredCalibration(kDefaultCalibration)
{
    createKeyLists();
}

CPLPreferenceUser::CPLPreferenceUser(const QString &name, const QString &password)
    : CPLPreferenceUser()
{
    const int ext = name.indexOf(ZO_FILE_TXT_EXTENSION);
    m_strUserName = ext >= 0 ? name.left(ext) : name;
    m_strPassword = getMD5String(password);
}

CPLPreferenceUser::CPLPreferenceUser(const CPLPreferenceUser &other)
{
    copyFrom(other);
}

CPLPreferenceUser &CPLPreferenceUser::operator=(const CPLPreferenceUser &other)
{
    if (this != &other)
        copyFrom(other);
    return *this;
}

CPLPreferenceUser &CPLPreferenceUser::operator=(const CPLPreferenceUser *other)
{
    if (other && other != this)
        copyFrom(*other);
    return *this;
}

CPLPreferenceUser::~CPLPreferenceUser()
{
    clearKeyLists();
    clearCustomSections();
}

void CPLPreferenceUser::copyFrom(const CPLPreferenceUser &other)
{
    m_bNewAcquisitionSession = other.m_bNewAcquisitionSession;
    m_bSaveRequired = other.m_bSaveRequired;
    m_strUserName = other.m_strUserName;
    m_strPassword = other.m_strPassword;
    m_strChosenLabelName = other.m_strChosenLabelName;
    m_strPreferredCalibration = other.m_strPreferredCalibration;
    m_strDefaultUserPath = other.m_strDefaultUserPath;
    m_bAutoSave = other.m_bAutoSave;
    m_oSessionTimer = other.m_oSessionTimer;
    m_nActiveLabelData = other.m_nActiveLabelData;
    clearKeyLists();
    for (const CPLPreferenceKeyList *keys : other.m_vKeyLists)
        m_vKeyLists.append(keys ? new CPLPreferenceKeyList(*keys) : nullptr);
    clearCustomSections();
    for (const CPLSection *section : other.m_lCustomSections)
        m_lCustomSections.append(new CPLSection(*section));
}

void CPLPreferenceUser::createKeyLists()
{
    clearKeyLists();
    const int sets = qMin(m_nDataSetCount, m_pLabelDataSetList.size());
    for (int i = 0; i < sets; ++i) {
        const CPLLabelDataSet *set = m_pLabelDataSetList.at(i);
        m_vKeyLists.append(new CPLPreferenceKeyList(set ? set->getLabelCount() : 0));
    }
}

void CPLPreferenceUser::clearKeyLists()
{
    qDeleteAll(m_vKeyLists);
    m_vKeyLists.clear();
}

void CPLPreferenceUser::clearCustomSections()
{
    qDeleteAll(m_lCustomSections);
    m_lCustomSections.clear();
}

QString CPLPreferenceUser::profileFilePath() const
{
    return CZOPreference::getUserProfileDirPath() + QLatin1Char('/') + ZO_FOLDER_PROFILES + QLatin1Char('/')
        + m_strUserName + ZO_FILE_TXT_EXTENSION;
}

tag_estatus CPLPreferenceUser::loadData(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return ES_OPEN_FAILED;
    // Far beyond any real profile; refuse rather than exhaust memory.
    if (file.size() > qint64(256) * 1024 * 1024) {
        ZOS_LOG(QStringLiteral("User profile '%1' is too large to read.").arg(path), ZOS_LOG_ERROR);
        return ES_OPEN_FAILED;
    }
    QString text = decodeProfile(file.readAll());
    file.close();
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));

    bool found = false;
    QString value = headerValue(text, ZO_CI_CHOSEN_USER_LABEL_NAME_SET, &found);
    if (found)
        m_strChosenLabelName = value;
    value = headerValue(text, ZO_CI_PREFERRED_CALIBRATION, &found);
    if (found)
        m_strPreferredCalibration = value;

    m_bNewAcquisitionSession = true;
    m_bAutoSave = false; // never read back: every session starts with auto-save off
    createKeyLists();
    clearCustomSections();

    int rest = 0;
    int pos = nextLineStartingWith(text, kLabelSetMarker, 0);
    if (pos < 0) {
        // No label blocks: the sections follow the header block.
        int first = 0;
        while (first < text.size() && text.at(first) == QLatin1Char('\n'))
            ++first;
        if (text.midRef(first).startsWith(kSectionPrefix + ZO_CI_USER_INPUT + QLatin1Char(':')))
            rest = nextHeaderLine(text, first);
        else
            rest = first;
    } else {
        for (int i = 0; i < m_nDataSetCount && pos < text.size(); ++i) {
            int end = nextLineStartingWith(text, kLabelSetMarker, pos + 1);
            if (end < 0)
                end = nextHeaderLine(text, pos);
            QString block = text.mid(pos, end - pos);
            const int lineEnd = block.indexOf(QLatin1Char('\n'));
            block = lineEnd < 0 ? QString() : block.mid(lineEnd + 1);
            QStringList names;
            if (i < m_pLabelDataSetList.size() && m_pLabelDataSetList.at(i))
                m_pLabelDataSetList.at(i)->getLabelData(&names);
            if (i < m_vKeyLists.size() && m_vKeyLists.at(i))
                m_vKeyLists.at(i)->loadData(block, names);
            pos = end;
        }
        rest = pos;
    }
    loadSections(text, rest);

    CPLSection *section = nullptr;
    if (getCustomSettingsSection(kApplicationPaths, &section) == ES_SUCCESS && section->hasKey(kPreferredWorkingDirectory))
        m_strDefaultUserPath = section->value(kPreferredWorkingDirectory);
    section = nullptr;
    if (getCustomSettingsSection(ZO_CI_USER_PASSWORD, &section) == ES_SUCCESS && section->hasKey(kPasswordKey))
        m_strPassword = section->value(kPasswordKey);
    else
        m_strPassword = getMD5String(QString());
    return ES_SUCCESS;
}

// Reads the sections from `from` on. The text is cut at header lines first so
// that each section is parsed from a small piece: linear even for huge files.
// A piece that breaks the grammar is skipped; the sections after it are kept.
void CPLPreferenceUser::loadSections(const QString &text, int from)
{
    int pos = from;
    int skipped = 0;
    while (pos < text.size()) {
        const int end = nextHeaderLine(text, pos + 1);
        QString piece = text.mid(pos, end - pos);
        pos = end;
        QString sectionText;
        const tag_estatus status = CPLClickInfo::copySectionBuffer(piece, sectionText);
        if (status == ES_END_OF_BUFFER)
            continue;
        if (status != ES_SUCCESS) {
            ++skipped;
            continue;
        }
        CPLSection *section = CPLClickInfo::parseSectionFromBuffer(sectionText);
        if (!section) {
            ++skipped;
            continue;
        }
        if (section->name().isEmpty()) {
            qDebug("Encountered a section with no section key!!!");
            delete section;
            break;
        }
        m_lCustomSections.append(section);
        m_bSaveRequired = true;
        // Lines after the section's ending empty line that are not a header
        // are the rest of a broken piece.
        if (!piece.trimmed().isEmpty())
            ++skipped;
    }
    if (skipped > 0)
        ZOS_LOG(QStringLiteral("User profile of '%1': %2 damaged part(s) skipped.").arg(m_strUserName).arg(skipped),
                ZOS_LOG_WARNING);
}

tag_estatus CPLPreferenceUser::saveData()
{
    const QString profileDir = CZOPreference::getUserProfileDirPath();
    if (profileDir.isEmpty())
        return ES_WRITE_FAILED; // no profile directory yet: never write next to the root
    const QString folder = profileDir + QLatin1Char('/') + ZO_FOLDER_PROFILES;
    if (!QDir().mkpath(folder) || !QFileInfo(folder).isDir())
        return ES_WRITE_FAILED;

    // The old profile is replaced only by commit(), once all is written.
    CZOSaveFile file(profileFilePath());
    if (!file.open())
        return ES_OPEN_FAILED;

    bool hasGeneral = false;
    for (const CPLSection *section : qAsConst(m_lCustomSections))
        hasGeneral = hasGeneral || section->name().compare(kGeneralUserSetting, Qt::CaseInsensitive) == 0;
    if (!hasGeneral)
        loadGeneralUserSettings();
    updatePasswordSettingsSection();

    QString text;
    text += ZO_CI_USER_PROFILE_HEADER + kLineEnd;
    text += ZO_CI_USER_ID + QLatin1String(":\t") + oneLine(m_strUserName) + kLineEnd;
    text += ZO_CI_CHOSEN_USER_LABEL_NAME_SET + QLatin1String(":\t") + oneLine(m_strChosenLabelName) + kLineEnd;
    text += ZO_CI_PREFERRED_CALIBRATION + QLatin1String(":\t") + oneLine(m_strPreferredCalibration) + kLineEnd;
    text += kAutoSaveKey + QLatin1String(":\t") + QLatin1String(m_bAutoSave ? "yes" : "no") + kLineEnd;
    text += kLineEnd;
    for (int i = 0; i < m_nDataSetCount && i < m_vKeyLists.size() && i < m_pLabelDataSetList.size(); ++i) {
        if (m_vKeyLists.at(i))
            m_vKeyLists.at(i)->saveData(m_pLabelDataSetList.at(i), &text);
    }
    for (const CPLSection *section : qAsConst(m_lCustomSections)) {
        if (section->saveSectionData(text) != ES_SUCCESS)
            ZOS_LOG(QStringLiteral("User profile of '%1': section '%2' cannot be written and is left out.")
                        .arg(m_strUserName, section->name()),
                    ZOS_LOG_WARNING);
    }
    const QByteArray bytes = encodeProfile(text);
    if (file.device()->write(bytes) != bytes.size() || !file.commit()) {
        ZOS_LOG(QStringLiteral("Error saving user preferences to file...."), ZOS_LOG_ERROR);
        return ES_UNKNOWN_ERROR;
    }
    m_bSaveRequired = false;
    return ES_SUCCESS;
}

void CPLPreferenceUser::loadGeneralUserSettings()
{
    auto *section = new CPLSection(kGeneralUserSetting);
    section->setValue(kDockToolPanel, kNo);
    section->setValue(kDockLeft, kNo);
    section->setValue(kShowActivityBar, ZO_LOGCAT_WARNINGS_ERRORS);
    section->setValue(kSaveColors, ZO_CI_YES);
    section->setValue(kAdvancedOption, kNo);
    section->setValue(kSaveDiskPaths, ZO_CI_YES);
    section->setValue(kSaveWindowDetails, ZO_CI_YES);
    section->setValue(kSaveFileList, ZO_CI_YES);
    section->setValue(kMRUSize, QStringLiteral("5"));
    section->setValue(kWindowWidthPercent, QStringLiteral("55"));
    section->setValue(kWindowHeightPercent, QStringLiteral("65"));
    section->setValue(kSaveFloatCorrected, kNo);
    section->setValue(kImageExportFormat, QStringLiteral("png"));
    m_lCustomSections.append(section);
}

void CPLPreferenceUser::updatePasswordSettingsSection()
{
    CPLSection *section = nullptr;
    if (getCustomSettingsSection(ZO_CI_USER_PASSWORD, &section) != ES_SUCCESS) {
        section = new CPLSection(ZO_CI_USER_PASSWORD);
        m_lCustomSections.append(section);
    }
    section->setValue(kPasswordKey, m_strPassword);
}

tag_estatus CPLPreferenceUser::getUserName(QString *name) const
{
    if (!name)
        return ES_INVALID_POINTER;
    *name = m_strUserName;
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceUser::getUserPass(QString *digest) const
{
    if (!digest)
        return ES_INVALID_POINTER;
    *digest = m_strPassword;
    return ES_SUCCESS;
}

void CPLPreferenceUser::setNewPass(const QString &password)
{
    m_strPassword = getMD5String(password);
}

tag_estatus CPLPreferenceUser::setNewPass(const QString &oldPassword, const QString &newPassword)
{
    if (!checkPassword(oldPassword))
        return ES_WRONG_INFORMATION;
    setNewPass(newPassword);
    return ES_SUCCESS;
}

bool CPLPreferenceUser::checkPassword(const QString &password) const
{
    return getMD5String(password) == m_strPassword;
}

tag_estatus CPLPreferenceUser::getChosenLabelName(QString *name) const
{
    if (!name)
        return ES_INVALID_POINTER;
    *name = m_strChosenLabelName;
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceUser::getDefaultCalibration(QString *calibration) const
{
    if (!calibration)
        return ES_INVALID_POINTER;
    *calibration = m_strPreferredCalibration;
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceUser::getDefaultUserPath(QString *path) const
{
    if (!path)
        return ES_INVALID_POINTER;
    *path = m_strDefaultUserPath;
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceUser::setActiveLabelData(int index)
{
    if (index < 0 || index >= m_nDataSetCount)
        return ES_INVALID_INPUT;
    m_nActiveLabelData = index;
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceUser::getActiveLabelData(CPLLabelDataSet **set) const
{
    if (!set)
        return ES_INVALID_POINTER;
    *set = nullptr;
    if (m_nActiveLabelData < 0 || m_nActiveLabelData >= m_pLabelDataSetList.size())
        return ES_INVALID_INPUT;
    *set = m_pLabelDataSetList.at(m_nActiveLabelData);
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceUser::getActiveKeyListData(CPLPreferenceKeyList **keys) const
{
    if (!keys)
        return ES_INVALID_POINTER;
    *keys = (*this)[m_nActiveLabelData];
    return *keys ? ES_SUCCESS : ES_INVALID_INPUT;
}

tag_estatus CPLPreferenceUser::getLabelData(const QString &name, CPLLabelDataSet **set)
{
    if (!set)
        return ES_INVALID_POINTER;
    *set = nullptr;
    for (CPLLabelDataSet *candidate : qAsConst(m_pLabelDataSetList)) {
        if (candidate && candidate->name() == name) {
            *set = candidate;
            return ES_SUCCESS;
        }
    }
    return ES_ID_NOT_FOUND;
}

tag_estatus CPLPreferenceUser::getLabelDataNames(QStringList *names)
{
    if (!names)
        return ES_INVALID_POINTER;
    names->clear();
    for (const CPLLabelDataSet *set : qAsConst(m_pLabelDataSetList))
        names->append(set ? set->name() : QString());
    return ES_SUCCESS;
}

CPLPreferenceKeyList *CPLPreferenceUser::operator[](int i) const
{
    return i >= 0 && i < m_vKeyLists.size() ? m_vKeyLists.at(i) : nullptr;
}

tag_estatus CPLPreferenceUser::addCustomSettingsSection(CPLSection *section)
{
    if (!section)
        return ES_INVALID_POINTER;
    if (!m_lCustomSections.contains(section))
        m_lCustomSections.append(section);
    return ES_SUCCESS;
}

bool CPLPreferenceUser::removeCustomSettingsSection(CPLSection *section)
{
    if (!section || !m_lCustomSections.removeOne(section))
        return false;
    delete section;
    return true;
}

tag_estatus CPLPreferenceUser::getCustomSettingsSection(const QString &key, CPLSection **section) const
{
    if (!section)
        return ES_INVALID_POINTER;
    *section = nullptr;
    for (CPLSection *candidate : m_lCustomSections) {
        if (candidate->name() == key) {
            *section = candidate;
            return ES_SUCCESS;
        }
    }
    return ES_SECTION_KEY_NOT_FOUND;
}

QTime CPLPreferenceUser::getCurrentSessionTime() const
{
    if (!m_oSessionTimer.isValid())
        return QTime(0, 0);
    return QTime(0, 0).addMSecs(int(m_oSessionTimer.elapsed() % (qint64(24) * 3600 * 1000)));
}

QString CPLPreferenceUser::getCurrentSession() const
{
    return getCurrentSessionTime().toString(QStringLiteral("hh:mm:ss"));
}

tag_estatus CPLPreferenceUser::getRoiFolderForUser(const QString &user, QString *folder)
{
    if (!folder)
        return ES_INVALID_POINTER;
    *folder = CZOPreference::getUserProfileDirPath() + QLatin1Char('/') + ZO_FOLDER_PROFILES + QLatin1Char('/')
        + ZO_CI_ROIS_FOR_PREFIX + user;
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceUser::getNextRoiFileNameFromUserFolder(QString &folder, QString *fileName) const
{
    if (!fileName)
        return ES_INVALID_POINTER;
    QDir dir(folder);
    if (!dir.exists() && !QDir().mkpath(folder))
        return ES_DIR_CREATE_FAILED;
    constexpr int kSlots = 900;
    QVector<bool> used(kSlots, false);
    const QLatin1String prefix("ROI_");
    const QStringList entries = dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    for (const QString &entry : entries) {
        if (!entry.startsWith(prefix))
            continue;
        const int underscore = entry.indexOf(QLatin1Char('_'), prefix.size());
        if (underscore <= prefix.size())
            continue;
        bool ok = false;
        const qlonglong n = entry.midRef(prefix.size(), underscore - prefix.size()).toLongLong(&ok);
        if (ok && n >= 0)
            used[int(n % kSlots)] = true;
    }
    int k = 1;
    while (k < kSlots && used.at(k))
        ++k;
    if (k == kSlots)
        k = 1; // every number taken: start over at 1
    *fileName = prefix + QString::number(k) + QLatin1Char('_') + m_strUserName + ZO_FILE_TXT_EXTENSION;
    return ES_SUCCESS;
}

CPLSection *CPLPreferenceUser::findRoiSection(const QString &menuName) const
{
    for (CPLSection *section : m_lCustomSections) {
        if (section->name().startsWith(ZO_CI_ROI_FILE_PREFIX) && section->hasKey(kMenuName)
            && section->value(kMenuName) == menuName)
            return section;
    }
    return nullptr;
}

CPLSection *CPLPreferenceUser::find3DRoiSection(const QString &menuName) const
{
    for (CPLSection *section : m_lCustomSections) {
        if (section->name() == k3DRoiSection && section->hasKey(kMenuName) && section->value(kMenuName) == menuName)
            return section;
    }
    return nullptr;
}

tag_estatus CPLPreferenceUser::saveRoiMenuAndFileNames(int number, const QString &menuName, QString *fileName)
{
    if (!fileName)
        return ES_INVALID_POINTER;
    const QString name = kRoiFileSection.arg(number);
    CPLSection *section = nullptr;
    if (getCustomSettingsSection(name, &section) != ES_SUCCESS) {
        section = new CPLSection(name);
        m_lCustomSections.append(section);
    }
    if (section->setValue(kMenuName, menuName) != ES_SUCCESS || section->setValue(kFileOnDisk, *fileName) != ES_SUCCESS)
        return ES_INVALID_ARGUMENT;
    m_bSaveRequired = true;
    return ES_SUCCESS;
}

QStringList CPLPreferenceUser::getROIMenuNames() const
{
    QStringList names;
    for (const CPLSection *section : m_lCustomSections) {
        if (section->name().startsWith(ZO_CI_ROI_FILE_PREFIX) && section->hasKey(kMenuName))
            names.append(section->value(kMenuName));
    }
    return names;
}

tag_estatus CPLPreferenceUser::getRoiFileNameForMenuName(const QString &menuName, QString *fileName) const
{
    if (!fileName)
        return ES_INVALID_POINTER;
    const CPLSection *section = findRoiSection(menuName);
    if (!section)
        return ES_ID_NOT_FOUND;
    *fileName = section->value(kFileOnDisk);
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceUser::deleteUserRoiMenuItem(const QString &menuName)
{
    CPLSection *section = findRoiSection(menuName);
    if (!section)
        return ES_ID_NOT_FOUND;
    removeCustomSettingsSection(section);
    m_bSaveRequired = true;
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceUser::save3DROIFileDetails(const QString &menuName, const QString &fileName)
{
    CPLSection *section = find3DRoiSection(menuName);
    if (!section) {
        section = new CPLSection(k3DRoiSection);
        m_lCustomSections.append(section);
    }
    if (section->setValue(kMenuName, menuName) != ES_SUCCESS
        || section->setValue(ZO_KEY_FILE_NAME, fileName) != ES_SUCCESS)
        return ES_INVALID_ARGUMENT;
    m_bSaveRequired = true;
    return ES_SUCCESS;
}

tag_estatus CPLPreferenceUser::get3DROIFileName(const QString &menuName, QString *fileName) const
{
    if (!fileName)
        return ES_INVALID_POINTER;
    const CPLSection *section = find3DRoiSection(menuName);
    if (!section)
        return ES_ID_NOT_FOUND;
    *fileName = section->value(ZO_KEY_FILE_NAME);
    return ES_SUCCESS;
}

QStringList CPLPreferenceUser::get3DROIMenuNames() const
{
    QStringList names;
    for (const CPLSection *section : m_lCustomSections) {
        if (section->name() == k3DRoiSection && section->hasKey(kMenuName))
            names.append(section->value(kMenuName));
    }
    return names;
}

tag_estatus CPLPreferenceUser::delete3DROIFileDetails(const QString &menuName)
{
    CPLSection *section = find3DRoiSection(menuName);
    if (!section)
        return ES_ID_NOT_FOUND;
    removeCustomSettingsSection(section);
    m_bSaveRequired = true;
    return ES_SUCCESS;
}
