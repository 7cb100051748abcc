#include "prefstestfixture.h"

#include "cplpreferencekey.h"
#include "cplpreferencekeylist.h"

#include <QCryptographicHash>

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

static QString flags(const CPLPreferenceUser &user)
{
    return QString::number(user.isAutoSave()) + QString::number(user.isSaveRequired())
        + QString::number(user.isNewAcquisitionSession()) + QString::number(user.getActiveLabelDataIndex());
}

class TestCPLPreferenceUser : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_folders.setUp(); }

    void firstSaveWritesTheLayoutByteForByte()
    {
        CPLPreferenceUser user(QStringLiteral("JD"), QStringLiteral("secret"));
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
private:
    CPLPreferenceUser *reload(const QString &name)
    {
        auto *user = new CPLPreferenceUser(name + ".txt", QString());
        return user->loadData(path(name)) == ES_SUCCESS ? user : (delete user, nullptr);
    }
    QString path(const QString &name) const { return m_folders.profilesFolder() + name + ".txt"; }
    PrefsFolders m_folders;
};

QTEST_MAIN(TestCPLPreferenceUser)
#include "tst_cplpreferenceuser.moc"
