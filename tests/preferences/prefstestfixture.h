#pragma once
// Points the data folder, ALLUSERSPROFILE, APPDATA and the application folder into one temporary folder,
// and loads the (empty) store from there.

#include "cplpreferencemanager.h"
#include "cplpreferenceuser.h"
#include "cplsection.h"
#include "czopreference.h"
#include "testfiles.h"

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

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
