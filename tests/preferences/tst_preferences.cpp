// User profiles, the manager that loads and activates them, and the store's
// statics, each test in a fresh set of folders.
#include "answerer.h"
#include "cpllabeldataset.h"
#include "cplpreferencekey.h"
#include "cplpreferencekeylist.h"
#include "cplpreferencemanager.h"
#include "cplpreferenceuser.h"
#include "cplsection.h"
#include "czopreference.h"
#include "czoslog.h"
#include "czossettings.h"
#include "czosuseriddialog.h"
#include "testfiles.h"
#include "zouserstats.h"

#include <QComboBox>
#include <QCryptographicHash>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

// Points the data folder, ALLUSERSPROFILE, APPDATA and the application folder
// into one temporary folder, and loads the (empty) store from there.
struct PrefsFolders {
    QScopedPointer<QTemporaryDir> dir;

    void setUp()
    {
        QStandardPaths::setTestModeEnabled(true);
        dir.reset(new QTemporaryDir);
        QVERIFY(dir->isValid());
        qputenv("ZO_DATA_ROOT", dir->filePath(QStringLiteral("data/")).toUtf8());
        qputenv("ALLUSERSPROFILE", allUsers().toUtf8());
        qputenv("APPDATA", appData().toUtf8());
        QDir().mkpath(appDir());
        QCOMPARE(load(), ES_SUCCESS);
    }
    QString allUsers() const { return dir->filePath(QStringLiteral("all")); }
    QString appData() const { return dir->filePath(QStringLiteral("roaming")); }
    QString appDir() const { return dir->filePath(QStringLiteral("app")); }
    QString profileDir() const { return allUsers() + QStringLiteral("/Application Data/Norbeck Instruments/Zolvane"); }
    QString profilesFolder() const { return profileDir() + QStringLiteral("/profiles/"); }

    tag_estatus load() { return CZOPreference::getPreferenceManager()->initialLoad(appDir()); }

    // Adds a user (with an optional section) and makes it the active one.
    static CPLPreferenceUser *activate(const QString &name, CPLSection *section = nullptr)
    {
        CPLPreferenceManager *manager = CZOPreference::getPreferenceManager();
        int index = -1;
        if (manager->addUser(name, &index, QString()) != ES_SUCCESS)
            return nullptr;
        if (section)
            (*manager)[unsigned(index)]->addCustomSettingsSection(section);
        return manager->setActiveUser(unsigned(index)) == ES_SUCCESS ? CZOPreference::getActiveUser() : nullptr;
    }

    // A new section holding `values`, in their order.
    static CPLSection *section(const QString &name, const QList<QPair<QString, QString>> &values)
    {
        auto *section = new CPLSection(name);
        for (const auto &[key, value] : values)
            section->setValue(key, value);
        return section;
    }

    // Writes a whole file, making its folders first.
    void writeFile(const QString &path, const QByteArray &bytes) const
    {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QVERIFY(::writeFile(path, bytes));
    }
};

static QByteArray md5(const QByteArray &text)
{
    return QCryptographicHash::hash(text, QCryptographicHash::Md5).toHex();
}

static const QByteArray kHeader = "*** User Input:\t(User Profile)\r\nUser ID:\tAB\r\n\r\n";
static const QByteArray kLabels = "*** User Label Name Set:\tZolvane Universal\r\nUser:\tme\r\nGroup:\tG1\r\n\r\n";

// Everything a profile holds but its flags.
static QString snapshot(const CPLPreferenceUser &user)
{
    QString name, digest, label, calibration, folder;
    user.getUserName(&name), user.getUserPass(&digest), user.getChosenLabelName(&label);
    user.getDefaultCalibration(&calibration), user.getDefaultUserPath(&folder);
    QString text = QStringList{name, digest, label, calibration, folder}.join('|');
    for (int i = 0; i < user.keyListCount(); ++i)
        user[i]->saveData(CPLPreferenceUser::m_pLabelDataSetList.at(i), &text);
    for (const CPLSection *section : user.getCustomSettingsSections())
        section->saveSectionData(text);
    return text;
}

// The customisation flags in field order.
static QVariantList fields(const tag_scustomizeinfo &i)
{
    return {i.bDockToolPanel, i.bDockLeft, i.strActivityBar, i.bSaveColors, i.bSaveDiskPaths, i.bSaveWindowDetails,
            i.bSaveFileList, i.bEnableTransIllumLocation, i.bAdvancedOption, i.bIndividualColorScale, i.nMRUSize,
            i.nWndPrefWidthPercent, i.nWndPrefHeightPercent, i.strPhotonUnit, i.strCountUnit,
            i.bSaveFloatCorrectedImage, i.strImageExportFormat};
}

// The 3D view settings in field order.
static QVariantList fields(const S3DViewSettings &s)
{
    return {s.nBackgroundColorType, s.oBackgroundSolidColor, s.oGradientTopColor, s.oGradientBottomColor,
            s.strBackgroundPresetColor, s.strLuminColorTable, s.strFluorColorTable, s.bLuminReverse, s.bFluorReverse,
            s.bUsePaletteSettingsDuringLoad, s.oLuminROILineColor, s.oFluorROILineColor, s.str3DVolumeColorTable,
            s.b3DVolumeReverse, s.o2DViewBackgroundColor, s.o3DViewTextColor, s.o2DViewTextColor, s.o3DSurfaceColor,
            s.n2DTextSize, s.n3DTextSize, s.strCTTargetType};
}

static QString flags(const CPLPreferenceUser &user)
{
    return QString::number(user.isAutoSave()) + QString::number(user.isSaveRequired())
        + QString::number(user.isNewAcquisitionSession()) + QString::number(user.getActiveLabelDataIndex());
}

class TestPreferences : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(CZOSLogEventHandler::install()); }
    void init() { m_folders.setUp(); }
    void cleanup()
    {
        closeLog();
        manager()->setActiveUserToNone();
    }

    void firstSaveWritesTheLayoutByteForByte()
    {
        CPLPreferenceUser user(QStringLiteral("JD"), QStringLiteral("secret"));
        QCOMPARE(user.getCurrentSessionTime(), QTime(0, 0)); // no session yet
        QCOMPARE(user.saveData(), ES_SUCCESS);
        QVERIFY(!user.isSaveRequired());
        QByteArray expected = "*** User Input:\t(User Profile)\r\nUser ID:\tJD\r\n"
                              "Chosen User Label Name Set:\tZolvane Universal\r\nPreferred calibration:\tcounts\r\n"
                              "Auto-Save datasets:\tno\r\n\r\n*** User Label Name Set:\tZolvane Universal\r\n";
        for (const char *label : {"User", "Group", "Experiment", "Comment1", "Comment2", "Time Point", "Animal Number",
                                  "Animal Strain", "Animal Model", "Sex", "View", "Cell Line", "Reporter", "Treatment",
                                  "Luc Injection Time", "IACUC Number"})
            expected += QByteArray(label) + ":\t\r\n";
        expected += "\r\n*** General User Setting:\r\nDock Tool Panel:\tNo\r\nDock Left:\tNo\r\n"
                    "Show Activity Bar:\tWarnings / Errors\r\nSave Colors:\tYes\r\nAdvanced Option:\tNo\r\n"
                    "Save Disk-Paths:\tYes\r\nSave Window Details:\tYes\r\nSave File List:\tYes\r\nMRU Size:\t5\r\n"
                    "WindowPrefWidthInPercent:\t55\r\nWindowPrefHeightInPercent:\t65\r\n"
                    "Save Float-Corrected Image:\tNo\r\nImageExportFormat:\tpng\r\n\r\n"
                    "*** User Password:\r\nPassword:\t" + md5("secret") + "\r\n\r\n";
        QCOMPARE(readFile(path("JD")), expected);
    }

    // A copy, made or assigned, holds all a profile holds, on its own; saving
    // then loading gives it back, and saving that again writes the same bytes.
    void roundTripsAndCopiesKeepEverything()
    {
        QString sets = "*** User Label Name Set:\tMice\r\nStrain:\t\r\nAge:\t\r\n\r\n";
        QCOMPARE(CZOPreference::getPreferenceManager()->loadLabelData(&sets), ES_SUCCESS);
        CPLPreferenceUser user(QStringLiteral("RT"), QStringLiteral("pw"));
        QCOMPARE(user.setNewPass(QStringLiteral("wrong"), QStringLiteral("pw2")), ES_WRONG_INFORMATION);
        QCOMPARE(user.setNewPass(QStringLiteral("pw"), QStringLiteral("pw2")), ES_SUCCESS);
        user.setChosenLabelName(QStringLiteral("Mice"));
        user.setDefaultCalibration(QStringLiteral("radiance"));
        user.setDefaultUserPath(QStringLiteral("/data/work"));
        user.setAutoSave(true);
        user.setAcquisitionSession(false);
        user.setUpdateFlag();
        QCOMPARE(user.setActiveLabelData(1), ES_SUCCESS);
        user[0]->operator[](1)->setValue(QStringLiteral("Study 4"));
        user[1]->operator[](1)->setValue(QStringLiteral("12 weeks"));
        CPLSection *general = PrefsFolders::section("general user setting", {{"MRU Size", "7"}}); // any case counts
        user.addCustomSettingsSection(general);
        user.addCustomSettingsSection(
            PrefsFolders::section("Application Related Paths", {{"Preferred working Directory", "/data/work"}}));
        auto *notes = new CPLSection(QStringLiteral("Notes"), QStringLiteral("comment"));
        notes->setValue(QStringLiteral("Text"), QStringLiteral("line one\nline two: with\tTAB"));
        notes->setValue(QStringLiteral("Empty"), QString());
        user.addCustomSettingsSection(notes);
        user.addCustomSettingsSection(new CPLSection(*notes)); // same name twice: both kept

        const CPLPreferenceUser made(user);
        CPLPreferenceUser assigned(QStringLiteral("OT"), QStringLiteral("other")), fromPointer;
        assigned.addCustomSettingsSection(new CPLSection(QStringLiteral("Stale")));
        assigned = user;
        fromPointer = &user;
        const QString before = snapshot(user);
        QCOMPARE(snapshot(made) + snapshot(assigned) + snapshot(fromPointer), before.repeated(3));
        QCOMPARE(flags(made) + flags(assigned) + flags(fromPointer), QStringLiteral("1101").repeated(3));
        general->setValue(QStringLiteral("MRU Size"), QStringLiteral("9"));
        QCOMPARE(snapshot(made), before);

        QCOMPARE(user.saveData(), ES_SUCCESS);
        const QByteArray first = readFile(path("RT"));
        QVERIFY(!first.contains("*** General User Setting:"));
        QScopedPointer<CPLPreferenceUser> loaded(reload("RT"));
        QVERIFY(loaded);
        QCOMPARE(snapshot(*loaded), snapshot(user));
        QVERIFY(loaded->checkPassword(QStringLiteral("pw2")));
        loaded->setAutoSave(true); // the one thing never read back
        QCOMPARE(loaded->saveData(), ES_SUCCESS);
        QCOMPARE(readFile(path("RT")), first);

        // A set the list holds no data for gives an empty key list.
        CPLPreferenceUser::m_pLabelDataSetList.append(nullptr);
        ++CPLPreferenceUser::m_nDataSetCount;
        const CPLPreferenceUser withEmptySet;
        QVERIFY(withEmptySet.keyListCount() == 3 && withEmptySet[2]->count() == 0);
        QVERIFY(loaded->loadData(path("RT")) == ES_SUCCESS && loaded->keyListCount() == 3); // read again: its list too
    }

    void nameComesFromTheFileAndAutoSaveIsNeverReadBack()
    {
        m_folders.writeFile(path("AB"), "*** User Input:\t(User Profile)\r\nUser ID:\tZZ\r\n"
                                        "Chosen User Label Name Set:\t  Mine  \r\nAuto-Save datasets:\tyes\r\n\r\n");
        CPLPreferenceUser user(QStringLiteral("AB.txt.bak"), QString());
        user.setAutoSave(true);
        QCOMPARE(user.loadData(path("AB")), ES_SUCCESS);
        QVERIFY(!user.isAutoSave());
        QString text;
        user.getUserName(&text);
        QCOMPARE(text, QStringLiteral("AB"));
        user.getChosenLabelName(&text);
        QCOMPARE(text, QStringLiteral("Mine"));
        CPLPreferenceUser(QStringLiteral(".txt"), QString()).getUserName(&text);
        QCOMPARE(text, QString());
        // Far larger than any profile (sparse here): from one byte past 256 MiB refused before it is read.
        QVERIFY(QFile(path("AB")).resize(qint64(256) * 1024 * 1024));
        QCOMPARE(user.loadData(path("AB")), ES_SUCCESS);
        QVERIFY(QFile(path("AB")).resize(qint64(256) * 1024 * 1024 + 1));
        QCOMPARE(user.loadData(path("AB")), ES_OPEN_FAILED);
    }

    void damagedProfilesLoad_data()
    {
        QTest::addColumn<QByteArray>("bytes"); QTest::addColumn<QStringList>("sections"); QTest::addColumn<QString>("group");
        QByteArray binary;
        for (int i = 0; i < 4096; ++i)
            binary += char((i * 131 + 7) % 256);
        const QByteArray good = kHeader + kLabels + "*** A:\r\nk:\tv\r\n\r\n";
        QTest::newRow("empty") << QByteArray() << QStringList() << QString();
        QTest::newRow("binary") << binary << QStringList() << QString();
        QTest::newRow("binary after good sections") << good + binary << QStringList{"A"} << "G1";
        QTest::newRow("truncated mid-section") << good + "*** B:\r\nk1:\tv1\r\nk2:\tpartial val" << QStringList{"A", "B"}
                                               << "G1";
        QTest::newRow("broken section between good ones")
            << good + "*** B:\r\nno separator here\r\n\r\n*** C:\r\nk:\tv\r\n\r\n" << QStringList{"A", "C"} << "G1";
        QTest::newRow("lone CR line ends") << QByteArray(good).replace("\r\n", "\r") << QStringList{"A"} << "G1";
        QTest::newRow("no label block, stray lines") << kHeader + "*** A:\r\nk:\tv\r\n\r\njunk line\r\n*** C:\r\nk:\tv\r\n"
                                                     << QStringList{"A", "C"} << QString();
    }

    void damagedProfilesLoad()
    {
        QFETCH(QByteArray, bytes); QFETCH(QStringList, sections); QFETCH(QString, group);
        m_folders.writeFile(path("AB"), bytes);
        CPLPreferenceUser user(QStringLiteral("AB"), QStringLiteral("old"));
        QCOMPARE(user.loadData(path("AB")), ES_SUCCESS);
        QStringList names;
        for (const CPLSection *section : user.getCustomSettingsSections())
            names << section->name();
        QCOMPARE(names, sections);
        const CPLPreferenceKey *key = user[0]->findKey(QStringLiteral("Group"));
        QCOMPARE(key ? key->value() : QString(), group);
        QVERIFY(user.checkPassword(QString())); // no password section: the empty password
        // Whatever was read saves and reads back the same.
        QCOMPARE(user.saveData(), ES_SUCCESS);
        QScopedPointer<CPLPreferenceUser> again(reload("AB"));
        QVERIFY(again);
        QCOMPARE(again->getCustomSettingsSections().size(), user.getCustomSettingsSections().size());
    }

    void textEncodings_data()
    {
        QTest::addColumn<QString>("value"); QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("latin-1 stays latin-1") << QString::fromUtf8("caf\u00e9") << QByteArray("caf\xe9");
        QTest::newRow("beyond latin-1 as utf-8") << QString::fromUtf8("\u6f22") << QByteArray("\xe6\xbc\xa2");
        // These two Latin-1 bytes would read back as one UTF-8 character.
        QTest::newRow("latin-1 that looks like utf-8") << QString::fromUtf8("\u00c3\u00a9") << QByteArray("\xc3\x83\xc2\xa9");
    }

    void textEncodings()
    {
        QFETCH(QString, value); QFETCH(QByteArray, bytes);
        CPLPreferenceUser user(QStringLiteral("EN"), QString());
        user.addCustomSettingsSection(PrefsFolders::section("Text", {{"v", value}}));
        QCOMPARE(user.saveData(), ES_SUCCESS);
        QVERIFY(readFile(path("EN")).contains("*** Text:\r\nv:\t" + bytes + "\r\n"));
        QScopedPointer<CPLPreferenceUser> loaded(reload("EN"));
        QVERIFY(loaded);
        QCOMPARE(loaded->getCustomSettingsSections().first()->value(QStringLiteral("v")), value);
    }

    void roiFileNumbers_data()
    {
        QTest::addColumn<QStringList>("entries"); QTest::addColumn<QString>("next");
        QStringList all;
        for (int i = 1; i < 900; ++i)
            all << QStringLiteral("ROI_%1_RO.txt").arg(i);
        QTest::newRow("1 2 4 taken") << QStringList{"ROI_1_RO.txt", "ROI_2_x.txt", "ROI_4_RO.txt"} << "ROI_3_RO.txt";
        QTest::newRow("numbers count modulo 900") << QStringList{"ROI_901_RO.txt"} << "ROI_2_RO.txt";
        QTest::newRow("other names ignored") << QStringList{"ROI_x_RO.txt", "ROI__RO.txt", "roi_1_RO.txt", "ROI_1"}
                                             << "ROI_1_RO.txt";
        QTest::newRow("all taken starts over") << all << "ROI_1_RO.txt";
    }

    void roiFileNumbers()
    {
        QFETCH(QStringList, entries); QFETCH(QString, next);
        CPLPreferenceUser user(QStringLiteral("RO"), QString());
        QString folder;
        QCOMPARE(CPLPreferenceUser::getRoiFolderForUser(QStringLiteral("RO"), &folder), ES_SUCCESS);
        for (const QString &entry : entries) // each write makes the folder
            m_folders.writeFile(folder + "/" + entry, "x");
        QString fileName;
        QCOMPARE(user.getNextRoiFileNameFromUserFolder(folder, &fileName), ES_SUCCESS);
        QCOMPARE(fileName, next);
    }

    void roiMenusSurviveASave()
    {
        CPLPreferenceUser user(QStringLiteral("RM"), QString());
        QString file = QStringLiteral("ROI_1_RM.txt");
        QCOMPARE(user.saveRoiMenuAndFileNames(1, QStringLiteral("Tumour"), &file), ES_SUCCESS);
        file = QStringLiteral("ROI_2_RM.txt");
        QCOMPARE(user.saveRoiMenuAndFileNames(2, QStringLiteral("Liver"), &file), ES_SUCCESS);
        QCOMPARE(user.save3DROIFileDetails(QStringLiteral("Volume"), QStringLiteral("v.roi")), ES_SUCCESS);
        QCOMPARE(user.save3DROIFileDetails(QStringLiteral("Other"), QStringLiteral("o.roi")), ES_SUCCESS);
        QCOMPARE(user.saveData(), ES_SUCCESS);

        QScopedPointer<CPLPreferenceUser> loaded(reload("RM"));
        QVERIFY(loaded);
        QCOMPARE(loaded->getROIMenuNames(), (QStringList{"Tumour", "Liver"}));
        QCOMPARE(loaded->getRoiFileNameForMenuName(QStringLiteral("Liver"), &file), ES_SUCCESS);
        QCOMPARE(file, QStringLiteral("ROI_2_RM.txt"));
        QCOMPARE(loaded->get3DROIFileName(QStringLiteral("Other"), &file), ES_SUCCESS);
        QCOMPARE(file, QStringLiteral("o.roi"));
        QCOMPARE(loaded->deleteUserRoiMenuItem(QStringLiteral("Tumour")), ES_SUCCESS);
        QCOMPARE(loaded->deleteUserRoiMenuItem(QStringLiteral("Tumour")), ES_ID_NOT_FOUND);
        QCOMPARE(loaded->delete3DROIFileDetails(QStringLiteral("Volume")), ES_SUCCESS);
        QCOMPARE(loaded->getROIMenuNames(), QStringList{"Liver"});
        QCOMPARE(loaded->get3DROIMenuNames(), QStringList{"Other"});
    }

    void profileFilesInNameOrder_data()
    {
        QTest::addColumn<QStringList>("files"); QTest::addColumn<QStringList>("users");
        QTest::newRow("initials only, name order, case kept")
            << QStringList{"abc.txt", "notes.doc", "LONGNAME.txt", "AB.txt"} << QStringList{"AB", "abc"};
        QTest::newRow("eight characters is too long") << QStringList{"ABCD.txt", "A.txt", ".txt"} << QStringList{"A"};
        QTest::newRow("blank name skipped, extension case-sensitive")
            << QStringList{"  .txt", "XY.TXT", "QR.txtx"} << QStringList{"QR"};
    }

    void profileFilesInNameOrder()
    {
        QFETCH(QStringList, files); QFETCH(QStringList, users);
        for (const QString &file : files)
            m_folders.writeFile(m_folders.profilesFolder() + file, "*** User Input:\t(User Profile)\r\n\r\n");
        QDir().mkpath(m_folders.profilesFolder() + "DIR.txt"); // folders are not profiles
        QCOMPARE(m_folders.load(), ES_SUCCESS);
        QStringList *names = nullptr;
        QCOMPARE(manager()->getAllUserNames(&names), ES_SUCCESS);
        QCOMPARE(*names, users);
        QVERIFY(!manager()->getActiveUser());
        QCOMPARE(m_folders.load(), ES_SUCCESS); // loading again duplicates nobody
        QCOMPARE(manager()->userCount(), users.size());
        int count = -1;
        QCOMPARE(manager()->getUserCount(&count), ES_SUCCESS);
        QCOMPARE(count, users.size());
    }

    void profilesAreCarriedOver()
    {
        // Per-user profiles are moved over, replacing what is there; the obsolete folder goes.
        const QByteArray header = "*** User Input:\t(User Profile)\r\n\r\n";
        m_folders.writeFile(m_folders.profilesFolder() + "OL.txt", header + "*** Old:\r\n\r\n");
        m_folders.writeFile(m_folders.appData() + "/Tessaly/Zolvane/profiles/OL.txt", header + "*** New:\r\n\r\n");
        m_folders.writeFile(m_folders.appData() + "/Tessaly/Zolvane/profiles/NW.txt", header);
        m_folders.writeFile(m_folders.appDir() + "/user profiles/old/JD.txt", "x");
        QCOMPARE(m_folders.load(), ES_SUCCESS);
        QCOMPARE(CZOPreference::getUserProfileDirPath(), m_folders.profileDir());
        QVERIFY(!QFileInfo::exists(m_folders.appDir() + "/user profiles"));
        QCOMPARE(manager()->userCount(), 2);
        QVERIFY(readFile(m_folders.profilesFolder() + "OL.txt").contains("*** New:"));
        QVERIFY(!QFileInfo::exists(m_folders.appData() + "/Tessaly"));

        // Machine-wide ones are copied, never deleted, and only into a new directory.
        QVERIFY(QDir(m_folders.allUsers()).removeRecursively());
        const QString old = m_folders.allUsers() + "/Application Data/Tessaly/Zolvane/profiles/MW.txt";
        m_folders.writeFile(old, header);
        QCOMPARE(m_folders.load(), ES_SUCCESS);
        QCOMPARE(manager()->getUserIndex("MW"), 0);
        QVERIFY(QFileInfo::exists(old));
        QVERIFY(QFile::remove(m_folders.profilesFolder() + "MW.txt"));
        QCOMPARE(m_folders.load(), ES_SUCCESS);
        QCOMPARE(manager()->userCount(), 0);

        // A profile that cannot be carried over (a folder in its place) keeps the old folder.
        const QString kept = m_folders.appData() + "/Tessaly/Zolvane/profiles/KP.txt";
        m_folders.writeFile(kept, header);
        QVERIFY(QDir().mkpath(m_folders.profilesFolder() + "KP.txt"));
        QCOMPARE(m_folders.load(), ES_SUCCESS);
        QVERIFY(QFileInfo::exists(kept));
    }

    void addUserRules_data()
    {
        QTest::addColumn<QString>("name"); QTest::addColumn<int>("status"); QTest::addColumn<int>("count");
        QTest::addColumn<QString>("active");
        QTest::newRow("existing name in other case activates") << "ab" << int(ES_SUCCESS) << 1 << "AB";
        QTest::newRow("two letters added upper-case") << "xy" << int(ES_SUCCESS) << 2 << "";
        QTest::newRow("three letters") << "XYZ" << int(ES_SUCCESS) << 2 << "";
        QTest::newRow("four letters refused") << "ABCD" << int(ES_INVALID_USER_ID) << 1 << "";
        QTest::newRow("one letter refused") << "a" << int(ES_INVALID_USER_ID) << 1 << "";
    }

    void addUserRules()
    {
        QFETCH(QString, name); QFETCH(int, status); QFETCH(int, count); QFETCH(QString, active);
        QCOMPARE(manager()->addUser(QStringLiteral("AB"), QStringLiteral("pw")), ES_SUCCESS);
        int index = -2;
        QCOMPARE(int(manager()->addUser(name, &index, QStringLiteral("pw"))), status);
        QCOMPARE(manager()->userCount(), count);
        QCOMPARE(manager()->getActiveUserName(), active);
        QCOMPARE(index, status == ES_SUCCESS ? manager()->getUserIndex(name.toUpper()) : -1);
        QVERIFY(!QFileInfo::exists(m_folders.profilesFolder() + name.toUpper() + ".txt")); // adding saves nothing
    }

    void activationLogsInAndTheLogLogsOut()
    {
        QCOMPARE(beginLog(QStringLiteral("Test")), 1);
        QCOMPARE(manager()->addUser(QStringLiteral("jd"), QString()), ES_SUCCESS);
        QCOMPARE(manager()->setActiveUser(1), ES_INVALID_INPUT);
        QVERIFY(!manager()->getActiveUser());
        QCOMPARE(manager()->setActiveUser(0), ES_SUCCESS);
        QCOMPARE(CZOPreference::getActiveUser(), (*manager())[0]);
        QCOMPARE(manager()->getActiveUserName(), QStringLiteral("JD"));
        QCoreApplication::processEvents();
        closeLog();

        const QString log = QString::fromLatin1(readFile(m_folders.dir->filePath("data/zoactivity.log")));
        QVERIFY2(log.contains("\t>>JD Logged IN<<\r\n"), qPrintable(log));
        QVERIFY2(log.contains(QRegularExpression("\t>>JD Logged OUT<< Session Lasted: 00:00:0\\d\r\n")), qPrintable(log));
        QVERIFY(readFile(userStatsFileName()).contains("login,JD,"));
        QCOMPARE(manager()->setActiveUser(0), ES_SUCCESS);
        QCOMPARE(m_folders.load(), ES_SUCCESS); // reloading forgets the active user
        QVERIFY(!manager()->getActiveUser() && manager()->getActiveUserName().isEmpty());
        QCOMPARE(beginLog(QStringLiteral("Test")), 1); // nobody to log out
        closeLog();
        QCOMPARE(readFile(m_folders.dir->filePath("data/zoactivity.log")).count("Logged OUT"), 1);
    }

    void deletingUsers()
    {
        for (const char *name : {"AA", "BB", "CC"}) {
            int index = -1;
            QCOMPARE(manager()->addUser(name, &index, QString()), ES_SUCCESS);
            QCOMPARE((*manager())[unsigned(index)]->saveData(), ES_SUCCESS);
            QString roi;
            CPLPreferenceUser::getRoiFolderForUser(name, &roi);
            m_folders.writeFile(roi + "/ROI_1_" + name + ".txt", "roi");
        }
        QCOMPARE(manager()->deleteActiveUser(), ES_UNKNOWN_ERROR);
        QCOMPARE(manager()->deleteUser("ZZ"), ES_UNKNOWN_ERROR);

        QCOMPARE(manager()->setActiveUser(0), ES_SUCCESS);
        QCOMPARE(manager()->deleteActiveUser(), ES_SUCCESS);
        QVERIFY(manager()->getActiveUserName().isEmpty());
        QVERIFY(!QFileInfo::exists(m_folders.profilesFolder() + "AA.txt"));
        QVERIFY(!QFileInfo::exists(m_folders.profilesFolder() + "ROIs for AA"));
        QCOMPARE(manager()->deleteUser("BB"), ES_SUCCESS);
        QVERIFY(!QFileInfo::exists(m_folders.profilesFolder() + "ROIs for BB"));
        QStringList *names = nullptr;
        manager()->getAllUserNames(&names);
        QCOMPARE(*names, QStringList{"CC"});

        QCOMPARE(manager()->deleteAllUsers(), ES_SUCCESS);
        QCOMPARE(manager()->userCount(), 0);
        QVERIFY(!QFileInfo::exists(m_folders.profilesFolder() + "CC.txt"));
        QVERIFY(QFileInfo::exists(m_folders.profilesFolder() + "ROIs for CC")); // only files go here
    }

    void selectionThroughTheDialog()
    {
        QStringList items;
        QString seen;
        Answerer answer({[&items](QWidget *w) {
                             auto *dialog = static_cast<CZOSUserIDDialog *>(w);
                             for (int i = 0; i < dialog->userComboBox()->count(); ++i)
                                 items << dialog->userComboBox()->itemText(i);
                             dialog->deleteButton()->click();
                             items << dialog->message();
                             dialog->accept();
                         },
                         [&seen](QWidget *w) {
                             auto *dialog = static_cast<CZOSUserIDDialog *>(w);
                             dialog->passwordEdit()->setText("wrong");
                             dialog->accept();
                             seen = dialog->userComboBox()->currentText() + (dialog->isVisible() && !dialog->message().isEmpty() ? "+" : "");
                             dialog->reject();
                         },
                         [](QWidget *w) {
                             static_cast<CZOSUserIDDialog *>(w)->passwordEdit()->setText("c");
                             QTest::keyClick(static_cast<CZOSUserIDDialog *>(w)->passwordEdit(), Qt::Key_Return);
                         }},
                        [this] { return manager()->selectionDialog(); });
        // Nobody to choose: "_none_" is the only entry and chooses nobody.
        QCOMPARE(manager()->selectUser(QString()), ES_UNKNOWN_ERROR);
        QCOMPARE(items, (QStringList{"_none_", "Choose a user first."}));
        QVERIFY(!manager()->getActiveUser());
        QVERIFY(!manager()->selectionDialog());

        // A wrong password keeps the dialog open with a message; cancelling changes nothing.
        manager()->addUser("AB", "a");
        manager()->addUser("CD", "c");
        QCOMPARE(manager()->selectUser("CD"), ES_UNKNOWN_ERROR);
        QCOMPARE(seen, QStringLiteral("CD+"));
        QVERIFY(!manager()->getActiveUser());
        QCOMPARE(manager()->selectUser("CD"), ES_UNKNOWN_ERROR);
        QCOMPARE(manager()->getActiveUserName(), QStringLiteral("CD"));
        QCOMPARE(answer.seen.size(), 3);
    }

    void labelData()
    {
        QString text = "*** User Label Name Set:\tMice\r\nStrain:\t\r\nAge:\t\r\n\r\n"
                       "*** User Label Name Set:\tPlates\r\nWell:\t\r\n\r\n";
        QCOMPARE(manager()->loadLabelData(&text), ES_SUCCESS);
        QStringList names;
        CPLPreferenceUser::getLabelDataNames(&names);
        QCOMPARE(names, (QStringList{"Zolvane Universal", "Mice", "Plates"}));
        QCOMPARE(CPLPreferenceUser::m_nDataSetCount, 3);
        CPLPreferenceUser user; // the first set is a set like the others
        CPLLabelDataSet *set = nullptr;
        QVERIFY(user.setActiveLabelData(0) == ES_SUCCESS && user.getActiveLabelData(&set) == ES_SUCCESS && set);
        QCOMPARE(user.setActiveLabelData(2), ES_SUCCESS);
        // A damaged set is reported, and the good ones before and after it still load.
        text = "*** User Label Name Set:\tMice\r\nAge:\t\r\n\r\n*** User Label Name Set:\tBroken\r\nno separator\r\n\r\n"
               "*** User Label Name Set:\tPlates\r\nWell:\t\r\n\r\n";
        QVERIFY(manager()->loadLabelData(&text) != ES_SUCCESS);
        CPLPreferenceUser::getLabelDataNames(&names);
        QCOMPARE(names.mid(3), (QStringList{"Mice", "Plates"}));
        text = "*** Not a label set:\r\n\r\n";
        QCOMPARE(manager()->loadLabelData(&text), ES_SUCCESS);
        CPLPreferenceUser::getLabelDataNames(&names);
        QCOMPARE(names, QStringList{"Zolvane Universal"});
        QCOMPARE(user.getActiveLabelData(&set), ES_INVALID_INPUT); // its set is gone
    }

    // The store's statics and the settings it reads and writes through the
    // active user's sections.
    void viewSettingsFromTheProfile()
    {
        CPLPreferenceUser *user = PrefsFolders::activate(QStringLiteral("VW"));
        QVERIFY(user);
        QTest::qWait(5);
        QVERIFY(user->getCurrentSessionTime() > QTime(0, 0)); // choosing a user starts its session
        // Every key in field order, a text for it and what that text reads as.
        const QStringList keys{"3D View Background Color Type", "3D View Background Solid Color",
            "3D View Background Gradient Top Color", "3D View Background Gradient Bottom Color",
            "3D View Background preset color", "Lumin Color Table", "Fluor Color table", "Lumin Reverse Checkbox",
            "Fluor Reverse Checkbox", "Use Palette Settings during Load Time", "Lumin ROI Line Color", "Fluor ROI Line Color",
            "3DVolume Color Table", "3DVolume Reverse CheckBox", "2D View Background solid color", "3D View Text Color",
            "2D View Text Color", "3D Surface Color", "2D Text Size", "3D Text Size", "CT Target Type"};
        const QStringList texts{"2", "10 20", "1 2 3", "4 5 6", "Dusk", "Cool", "Grays", "0", "1", "0", "7 8 9", "300 -1 9",
                                "Hot", "5", "11 12 13", "14 15 16", "17 18 19", "20 21 22", "12", "14", "Phantom"};
        const QVariantList read{2, QColor(10, 20, 0), QColor(1, 2, 3), QColor(4, 5, 6), "Dusk", "Cool", "Grays", false, true,
                                false, QColor(7, 8, 9), QColor(255, 0, 9), "Hot", true, QColor(11, 12, 13), QColor(14, 15, 16),
                                QColor(17, 18, 19), QColor(20, 21, 22), 12, 14, "Phantom"};
        const QVariantList defaults{0, QColor(50, 152, 255), QColor(Qt::black), QColor(Qt::black), "Midnight", "Rainbow",
                                    "YellowHot", true, false, true, QColor(Qt::red), QColor(Qt::blue), "Jet", false,
                                    QColor(Qt::white), QColor(Qt::white), QColor(Qt::black), QColor(Qt::gray), 8, 8, "Animal"};
        auto *section = new CPLSection(QStringLiteral("3D View Preferences"));
        user->addCustomSettingsSection(section);
        S3DViewSettings s;
        for (int round : {0, 1}) {
            // Then unreadable numbers and keys of another case: each keeps its default.
            for (int i = 0; i < keys.size(); ++i)
                if (!round || read[i].type() == QVariant::Int || read[i].type() == QVariant::Bool)
                    section->setValue(keys[i], round ? "twelve" : texts[i]);
                else
                    section->removeKey(keys[i]), section->setValue(keys[i].toLower(), texts[i]);
            QCOMPARE(user->saveData(), ES_SUCCESS);
            QVERIFY(CZOPreference::get3DViewPreferencesFromFile(s));
            QCOMPARE(fields(s), round ? defaults : read);
            CZOPreference::initialize3DViewPreferences();
            QCOMPARE(CZOPreference::getDefault3DViewSettings().n3DTextSize, round ? 8 : 14);
        }
        QString presets; // each preset's top and bottom colour; an unknown name gets the first
        for (const QString &name : CZOPreference::getPresetColorNames() + QStringList("unknown"))
            presets += CZOPreference::getPresetColor(name).oTopColor.name() + CZOPreference::getPresetColor(name).oBottomColor.name();
        QCOMPARE(presets, "#000000#000000#3298ff#c8e4ff#00007a#6c7ca7#000000#000000");
        QColor lumin, fluor;
        CZOPreference::getPreferredROILineColor(false, lumin), CZOPreference::getPreferredROILineColor(true, fluor);
        QCOMPARE((QVector<QColor>{lumin, fluor}), (QVector<QColor>{Qt::red, Qt::blue}));
    }

    void saveFilters_data()
    {
        QTest::addColumn<QString>("format"); QTest::addColumn<QString>("filter"); QTest::addColumn<QString>("result");
        QTest::newRow("preferred moves first, empty parts dropped")
            << "tif" << "PNG (*.png);;;;TIFF (*.tif);;JPEG (*.jpg);;" << "TIFF (*.tif);;PNG (*.png);;JPEG (*.jpg)";
        QTest::newRow("absent: untouched, empty parts too") << "bmp" << "PNG (*.png);;;;TIFF (*.tif)"
                                                            << "PNG (*.png);;;;TIFF (*.tif)";
    }

    void saveFilters()
    {
        QFETCH(QString, format); QFETCH(QString, filter); QFETCH(QString, result);
        CPLPreferenceUser *user = PrefsFolders::activate(QStringLiteral("SF"));
        QVERIFY(user);
        CZOPreference::setUsersPreferredFormat(format);
        CZOPreference::setUsersPreferredFormat(QString()); // ignored
        QCOMPARE(CZOPreference::getUsersPreferredFormat(), format);
        CPLSection *general = nullptr; // written into the user's settings at once
        QVERIFY(user->getCustomSettingsSection("General User Setting", &general) == ES_SUCCESS
                && general->value("ImageExportFormat") == format);
        CZOPreference::modifySaveFilterByPreference(filter);
        QCOMPARE(filter, result);
    }

    void preferredWindowSize()
    {
        QCOMPARE(CZOPreference::preferredSizeForScreen(QSize(1920, 1080), 80, 80, true), QSize(1632, 810));
        QCOMPARE(CZOPreference::preferredSizeForScreen(QSize(1920, 1080), 80, 80, false), QSize(1536, 864));
        QCOMPARE(CZOPreference::preferredSizeForScreen(QSize(1001, 999), 55, 65, false), QSize(550, 649)); // truncates
    }

    void missingSettingsSectionIsCreatedWithItsDefaults()
    {
        CPLPreferenceUser *user = PrefsFolders::activate("DF");
        *settings()->getCustomizeInfo() = tag_scustomizeinfo(); // every flag off: each must be read
        CZOPreference::readUserTxtFile();
        QVERIFY(user->isSaveRequired()); // the new section must reach the file
        CPLSection *general = nullptr;
        QCOMPARE(user->getCustomSettingsSection("General User Setting", &general), ES_SUCCESS);
        QCOMPARE(general->keys(),
                 (QStringList{"Dock Tool Panel", "Dock Left", "Show Activity Bar", "Save Colors",
                              "Enable TransIllumination Location", "Individual Color Scale", "Save Float-Corrected Image",
                              "Advanced Option", "Save Disk-Paths", "Save Window Details", "Save File List", "MRU Size",
                              "WindowPrefWidthInPercent", "WindowPrefHeightInPercent", "ImageExportFormat"}));
        const tag_scustomizeinfo *i = settings()->getCustomizeInfo();
        QCOMPARE((QVariantList{i->bDockToolPanel, i->bDockLeft, i->strActivityBar, i->bSaveColors,
                               i->bEnableTransIllumLocation, i->bIndividualColorScale, i->bSaveFloatCorrectedImage,
                               i->bAdvancedOption, i->bSaveDiskPaths, i->bSaveWindowDetails, i->bSaveFileList, i->nMRUSize,
                               i->nWndPrefWidthPercent, i->nWndPrefHeightPercent, i->strImageExportFormat}),
                 (QVariantList{false, false, "Warnings / Errors", true, true, true, false, false, true, true, true, 5, 55,
                               65, "png"}));
    }

    void mruSizeRules_data()
    {
        QTest::addColumn<QString>("fileList"); QTest::addColumn<QString>("mruSize"); QTest::addColumn<int>("size");
        QTest::newRow("list off") << "No" << "7" << 0;
        QTest::newRow("too large") << "Yes" << "12" << 5;
        QTest::newRow("negative counts as too large") << "yes" << "-3" << 5;
        QTest::newRow("ten stays") << "YES" << "10" << 10;
        QTest::newRow("zero stays") << "Yes" << "0" << 0;
        QTest::newRow("empty") << "Yes" << "" << 5;
    }

    void mruSizeRules()
    {
        QFETCH(QString, fileList); QFETCH(QString, mruSize); QFETCH(int, size);
        QVERIFY(PrefsFolders::activate("MR", PrefsFolders::section("General User Setting", {{"Save File List", fileList},
                                                                                          {"MRU Size", mruSize},
                                                                                          {"WindowPrefWidthInPercent", ""}})));
        settings()->readCustomizeInfo();
        QCOMPARE(settings()->getCustomizeInfo()->nMRUSize, size);
        QCOMPARE(settings()->getCustomizeInfo()->nWndPrefWidthPercent, 55);
        for (int i = 0; i < 12; ++i)
            settings()->addMRUString(QStringLiteral("file%1.tif").arg(i));
        QCOMPARE(settings()->getMRUCount(), size);
        QCOMPARE(settings()->getMRUString(0), size ? QStringLiteral("file11.tif") : QString());
        QCOMPARE(settings()->getMRUString(unsigned(size)), QString());
    }

    void mruList()
    {
        QVERIFY(PrefsFolders::activate("ML"));
        CZOPreference::readUserTxtFile(); // five empty slots
        QVERIFY(!settings()->addMRUString(QString()));
        QVERIFY(settings()->addMRUString("b.tif"));
        QVERIFY(settings()->addMRUString("c:/A.TIF"));
        QVERIFY(settings()->addMRUString("C:/a.tif"));
        QCOMPARE(settings()->getMRUCount(), 2);
        QCOMPARE(settings()->getMRUString(0), QStringLiteral("C:/a.tif"));
        for (const char *name : {"1", "2", "3", "4"})
            settings()->addMRUString(name);
        QCOMPARE(settings()->getMRUCount(), 5);
        QCOMPARE(settings()->getMRUString(4), QStringLiteral("C:/a.tif")); // b.tif dropped out
        QVERIFY(settings()->removeMRUString("C:/A.tif"));
        QVERIFY(!settings()->removeMRUString("C:/A.tif"));
        QCOMPARE(settings()->getMRUCount(), 4);
        QCOMPARE(settings()->getMRUString(3), QStringLiteral("1"));
        QVERIFY(settings()->removeMRUString("3")); // from the middle: the later ones move up
        QCOMPARE(QStringList({settings()->getMRUString(0), settings()->getMRUString(1), settings()->getMRUString(2)}),
                 QStringList({"4", "2", "1"}));
        QCOMPARE(settings()->getMRUCount(), 3);
    }

    void pathsAndWindowsRoundTrip()
    {
        CPLPreferenceUser *user = PrefsFolders::activate("RT");
        CZOPreference::readUserTxtFile();
        settings()->setOpenPath("/open");
        settings()->setExportPath("/export");
        settings()->setBrowsePath("/browse"), settings()->setSetUpFileOpenPath("/setup");
        user->setDefaultUserPath("/work");
        settings()->addMRUString("/one.tif");
        settings()->addMRUString("/two.tif");
        settings()->setMainWndRect(QRect(QPoint(10, 20), QPoint(800, 600)));
        settings()->setMainWndState(WND_STATE_MAXIMIZED);
        settings()->setProfileSettings({QColor(1, 2, 3), QColor(4, 5, 6), QRect(7, 8, 9, 10)});
        CZOPreference::writeUserTxtFile();
        QCOMPARE(user->saveData(), ES_SUCCESS);

        CZOPreference::getPreferenceManager()->setActiveUserToNone();
        QCOMPARE(m_folders.load(), ES_SUCCESS);
        QCOMPARE(CZOPreference::getPreferenceManager()->setActiveUser(0), ES_SUCCESS);
        CPLSection *paths = nullptr;
        QCOMPARE(CZOPreference::getActiveUser()->getCustomSettingsSection("Application Related Paths", &paths),
                 ES_SUCCESS);
        QCOMPARE(paths->value("MRU File 1"), QStringLiteral("/two.tif"));
        QCOMPARE(paths->value("Preferred working Directory"), QStringLiteral("/work"));
        CZOSSettings fresh;
        std::swap(*settings(), fresh);
        CZOPreference::readUserTxtFile();
        const CZOSSettings *s = settings();
        QCOMPARE((QVariantList{s->getOpenPath() + s->getBrowsePath() + s->getSetUpFileOpenPath(), s->getExportPath(),
                               s->getMRUString(0), s->getMRUString(1), s->getMainWndRect(), int(s->getMainWndState()),
                               s->getProfileSettings().oLineColor, s->getProfileSettings().oBackColor,
                               s->getProfileSettings().oRect, s->getToolPanelRect(), s->getHistogramSettings().oLineColor}),
                 (QVariantList{"/open/browse/setup", "/export", "/two.tif", "/one.tif",
                               QRect(QPoint(10, 20), QPoint(800, 600)), int(WND_STATE_MAXIMIZED), QColor(1, 2, 3),
                               QColor(4, 5, 6), QRect(7, 8, 9, 10),
                               QRect(QPoint(-1, -1), QPoint(-1, -1)), QColor(Qt::red)})); // never written: defaults
        std::swap(*settings(), fresh);
    }

    void customizeInfoKeepsOtherKeys()
    {
        CPLSection *general = PrefsFolders::section("General User Setting", {{"Own Key", "kept"}, {"Dock Left", "yes"},
                                                                                {"Save Float-Corrected Image", "Yes"}});
        CPLPreferenceUser *user = PrefsFolders::activate("CK", general);
        settings()->readCustomizeInfo();
        QVERIFY(!settings()->isDockedRight() && settings()->getCustomizeInfo()->bSaveFloatCorrectedImage);
        settings()->getCustomizeInfo()->bAdvancedOption = true;
        settings()->getCustomizeInfo()->nWndPrefWidthPercent = 81;
        settings()->getCustomizeInfo()->nWndPrefHeightPercent = 71;
        QCOMPARE(settings()->writeCustomizeInfo(), ES_SUCCESS);
        QCOMPARE(QStringList({general->value("WindowPrefWidthInPercent"), general->value("WindowPrefHeightInPercent"),
                              general->value("Own Key"), general->value("Advanced Option"), general->value("Dock Left")}),
                 QStringList({"81", "71", "kept", "Yes", "Yes"}));
        QVERIFY(user->isSaveRequired());
        // Every field is written and read back, over the defaults in memory.
        tag_scustomizeinfo *info = settings()->getCustomizeInfo();
        *info = {true, true, "All", true, true, true, true, true, true, true, 7, 81, 71, "photons/s", "counts", true, "tif"};
        QCOMPARE(settings()->writeCustomizeInfo(), ES_SUCCESS);
        const QVariantList written = fields(*info);
        *info = tag_scustomizeinfo();
        settings()->readCustomizeInfo();
        QCOMPARE(fields(*info), written);
    }

    void noActiveUserKeepsLastValues()
    {
        QVERIFY(PrefsFolders::activate("NA"));
        settings()->readCustomizeInfo();
        settings()->setOpenPath("/last");
        CZOPreference::getPreferenceManager()->setActiveUserToNone();
        CZOPreference::readUserTxtFile();
        CZOPreference::writeUserTxtFile(); // nothing to write to, and no error box
        QCOMPARE(settings()->getOpenPath(), QStringLiteral("/last"));
        QCOMPARE(settings()->getCustomizeInfo()->nMRUSize, 5);
        QCOMPARE(settings()->writeCustomizeInfo(), ES_INVALID_STATE);
    }

private:
    CPLPreferenceUser *reload(const QString &name)
    {
        auto *user = new CPLPreferenceUser(name + ".txt", QString());
        return user->loadData(path(name)) == ES_SUCCESS ? user : (delete user, nullptr);
    }
    QString path(const QString &name) const { return m_folders.profilesFolder() + name + ".txt"; }
    CPLPreferenceManager *manager() { return CZOPreference::getPreferenceManager(); }
    CZOSSettings *settings() { return CZOPreference::getSettings(); }
    PrefsFolders m_folders;
};

QTEST_MAIN(TestPreferences)
#include "tst_preferences.moc"
