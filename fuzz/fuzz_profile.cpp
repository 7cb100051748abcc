// Arbitrary bytes as a user profile: loaded, saved and loaded again. The
// second load must give the same sections as the first.
#include "cplpreferencemanager.h"
#include "cplpreferenceuser.h"
#include "cplsection.h"
#include "czopreference.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {
QTemporaryDir *folder()
{
    static QTemporaryDir *dir = [] {
        auto *d = new QTemporaryDir;
        qputenv("ALLUSERSPROFILE", d->filePath(QStringLiteral("all")).toUtf8());
        qputenv("APPDATA", d->filePath(QStringLiteral("roaming")).toUtf8());
        qputenv("ZO_DATA_ROOT", d->filePath(QStringLiteral("data/")).toUtf8());
        if (CZOPreference::getPreferenceManager()->initialLoad(d->filePath(QStringLiteral("app"))) != ES_SUCCESS)
            abort();
        QDir().mkpath(CZOPreference::getUserProfileDirPath() + QStringLiteral("/profiles"));
        return d;
    }();
    return dir;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    folder();
    const QString path = CZOPreference::getUserProfileDirPath() + QStringLiteral("/profiles/FZ.txt");
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            abort();
        file.write(reinterpret_cast<const char *>(data), qint64(size));
    }
    CPLPreferenceUser first(QStringLiteral("FZ"), QString());
    if (first.loadData(path) != ES_SUCCESS)
        abort();
    // A section whose name or comment the file form cannot hold is left out
    // on saving; only the writable ones must come back.
    QList<CPLSection *> writable;
    for (CPLSection *section : first.getCustomSettingsSections()) {
        QString text;
        if (section->saveSectionData(text) == ES_SUCCESS)
            writable.append(section);
    }
    const int before = writable.size();
    if (first.saveData() != ES_SUCCESS)
        abort();
    CPLPreferenceUser second(QStringLiteral("FZ"), QString());
    if (second.loadData(path) != ES_SUCCESS)
        abort();
    // saveData adds the general and password sections when missing.
    const QList<CPLSection *> &again = second.getCustomSettingsSections();
    if (again.size() < before)
        abort();
    for (int i = 0; i < before; ++i) {
        if (*again.at(i) != *writable.at(i))
            abort();
    }
    return 0;
}
