// Arbitrary bytes as "ProbesTree.xml": load, build the menus, save the recent
// list back. The probe folder is a temporary one.
#include "czotreemenucombobox.h"

#include <QApplication>
#include <QFile>
#include <QStandardItemModel>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace {

struct Fixture {
    QTemporaryDir dir;
    std::unique_ptr<QApplication> app;
    std::unique_ptr<CZOTreeMenuComboBox> combo;
    QString path;
    Fixture()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("ZO_DATA_ROOT", QFile::encodeName(dir.path()));
        static int argc = 1;
        static char name[] = "fuzz_probetree";
        static char *argv[] = {name, nullptr};
        app.reset(new QApplication(argc, argv));
        combo.reset(new CZOTreeMenuComboBox(PROBETREE_AUTOFLUORESCENCE));
        path = dir.filePath(QStringLiteral("fuzzed.xml"));
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static Fixture fixture;
    QFile file(fixture.path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 0;
    file.write(reinterpret_cast<const char *>(data), qint64(size));
    file.close();
    std::unique_ptr<QStandardItemModel> model(fixture.combo->createTreeModelFromFile(fixture.path));
    if (!fixture.combo->probeNames().isEmpty())
        fixture.combo->saveRecentUsedProbes(QStringList{fixture.combo->probeNames().first()});
    return 0;
}
