#pragma once
// Points every folder the preferences use at one temporary folder: the
// application data folder, ALLUSERSPROFILE, APPDATA and the application's own
// folder, and loads the (empty) profile directory there.

#include "cplpreferencemanager.h"
#include "czopreference.h"

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
    }
    QString allUsers() const { return dir->filePath(QStringLiteral("all")); }
    QString appData() const { return dir->filePath(QStringLiteral("roaming")); }
    QString appDir() const { return dir->filePath(QStringLiteral("app")); }
    QString profileDir() const { return allUsers() + QStringLiteral("/Application Data/Norbeck Instruments/Zolvane"); }
    QString profilesFolder() const { return profileDir() + QStringLiteral("/profiles/"); }

    // Loads the store's manager from the current folders.
    tag_estatus load() { return CZOPreference::getPreferenceManager()->initialLoad(appDir()); }

    void writeFile(const QString &path, const QByteArray &bytes) const
    {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }
    static QByteArray readFile(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};
