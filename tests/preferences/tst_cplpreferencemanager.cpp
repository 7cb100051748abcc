#include "prefstestfixture.h"

#include "cpllabeldataset.h"
#include "czoslog.h"
#include "czosuseriddialog.h"
#include "zouserstats.h"

#include <QComboBox>
#include <QLineEdit>
#include <QTimer>

class TestCPLPreferenceManager : public QObject
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

        QCOMPARE(manager()->setActiveUser(1), ES_SUCCESS);
        QCOMPARE(manager()->deleteActiveUser(), ES_SUCCESS);
        QVERIFY(manager()->getActiveUserName().isEmpty());
        QVERIFY(!QFileInfo::exists(m_folders.profilesFolder() + "BB.txt"));
        QVERIFY(!QFileInfo::exists(m_folders.profilesFolder() + "ROIs for BB"));
        QCOMPARE(manager()->deleteUser("AA"), ES_SUCCESS);
        QVERIFY(!QFileInfo::exists(m_folders.profilesFolder() + "ROIs for AA"));
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
        // Nobody to choose: "_none_" is the only entry and chooses nobody.
        QStringList items;
        answerDialog([&items](CZOSUserIDDialog *dialog) {
            for (int i = 0; i < dialog->userComboBox()->count(); ++i)
                items << dialog->userComboBox()->itemText(i);
            dialog->accept();
        });
        QCOMPARE(manager()->selectUser(QString()), ES_UNKNOWN_ERROR);
        QCOMPARE(items, QStringList{"_none_"});
        QVERIFY(!manager()->getActiveUser());
        QVERIFY(!manager()->selectionDialog());

        // A wrong password keeps the dialog open with a message; cancelling changes nothing.
        manager()->addUser("AB", "a");
        manager()->addUser("CD", "c");
        QString seen;
        answerDialog([&seen](CZOSUserIDDialog *dialog) {
            dialog->passwordEdit()->setText("wrong");
            dialog->accept();
            seen = dialog->userComboBox()->currentText() + (dialog->isVisible() && !dialog->message().isEmpty() ? "+" : "");
            dialog->reject();
        });
        QCOMPARE(manager()->selectUser("CD"), ES_UNKNOWN_ERROR);
        QCOMPARE(seen, QStringLiteral("CD+"));
        QVERIFY(!manager()->getActiveUser());

        answerDialog([](CZOSUserIDDialog *dialog) {
            dialog->passwordEdit()->setText("c");
            QTest::keyClick(dialog->passwordEdit(), Qt::Key_Return);
        });
        QCOMPARE(manager()->selectUser("CD"), ES_UNKNOWN_ERROR);
        QCOMPARE(manager()->getActiveUserName(), QStringLiteral("CD"));
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
    }
private:
    // Runs `answer` on the selection dialog once it is shown.
    void answerDialog(std::function<void(CZOSUserIDDialog *)> answer)
    {
        auto *timer = new QTimer(this);
        timer->setInterval(10);
        connect(timer, &QTimer::timeout, this, [this, timer, answer] {
            CZOSUserIDDialog *dialog = manager()->selectionDialog();
            if (!dialog || !dialog->isVisible())
                return;
            timer->stop();
            timer->deleteLater();
            answer(dialog);
        });
        timer->start();
    }
    CPLPreferenceManager *manager() { return CZOPreference::getPreferenceManager(); }
    PrefsFolders m_folders;
};

QTEST_MAIN(TestCPLPreferenceManager)
#include "tst_cplpreferencemanager.moc"
