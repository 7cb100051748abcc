// Performs one save of the libraries at a time, for faultcheck.sh to cut short
// with injected faults. Usage: savedriver OPERATION prepare|run|verify FOLDER
//   prepare  writes the old state into FOLDER
//   run      performs the save; exit 0 when the library reported success, 1
//            when it reported failure (a silent save always exits 0)
//   verify   (queue-add only) reopens what a producer left and checks it
// Just before the save, "savedriver: save" goes to stderr: the sweep counts
// the system calls made after it.
#include "autobkglist.h"
#include "cilimage.h"
#include "cplclickinfo.h"
#include "cplpreferencemanager.h"
#include "clickinfoconstruction.h"
#include "czoimagequeue.h"
#include "czopreference.h"
#include "czoscsvparser.h"
#include "czossettings.h"
#include "czotreemenucombobox.h"
#include "siasetupinfo.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QtEndian>

#include <cstdio>
#include <functional>
#include <map>
#include <unistd.h>

namespace {

QString g_folder;
const QStringList kHeader{"id", "name", "value"};
constexpr int kSide = 4;
constexpr int kFrameBytes = kSide * kSide * 2;

QString at(const QString &name) { return g_folder + QLatin1Char('/') + name; }

void beginSave(bool announce = true)
{
    if (announce)
        std::fputs("savedriver: save\n", stderr);
}

int exitCode(bool saved) { return saved ? 0 : 1; }

QByteArray frame(quint16 number)
{
    QByteArray bytes(kFrameBytes, Qt::Uninitialized);
    for (int i = 0; i < kSide * kSide; ++i)
        qToLittleEndian(number, bytes.data() + 2 * i);
    return bytes;
}

int csvPrepare()
{
    QFile file(at("table.csv"));
    QByteArray text = "id,name,value\r\n";
    for (int i = 1; i <= 30; ++i)
        text += QByteArray::number(i) + ",mouse_" + QByteArray::number(i * 7) + "," + QByteArray::number(i * i) + "\r\n";
    return exitCode(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
}

struct Operation { std::function<int()> prepare, run; };

using CsvChange = std::function<bool(CZOSCSVParser &)>;

// A change of the prepared table: the `earlier` ones unannounced, then the announced `save`.
Operation csvChange(const CsvChange &save, const CsvChange &earlier = {})
{
    return {csvPrepare, [=] {
                CZOSCSVParser parser(at("table.csv"), kHeader);
                if (earlier && !earlier(parser))
                    return 2;
                beginSave();
                return exitCode(save(parser));
            }};
}

bool setName(CZOSCSVParser &parser) { return parser.setCSVColumnValue(7, 1, "a much longer name") == ES_SUCCESS; }

// The probe tree installs its built-in file on first use.
int probesPrepare() { return exitCode(CZOTreeMenuComboBox().loadedProbeCount() > 0); }

_tagAutoBkgListFileParam bkgTable(int rows)
{
    _tagAutoBkgListFileParam table;
    table.title = QStringLiteral("Auto background");
    int n = 0;
    for (QString *header : {&table.header1, &table.header2, &table.header3, &table.header4})
        *header = QStringLiteral("h%1").arg(++n);
    for (int row = 0; row < rows; ++row) {
        table.column1 << QString::number(row);
        table.column2 << QStringLiteral("exposure %1").arg(row * 10);
        table.column3 << QString::number(row % 4 + 1);
        table.column4 << QStringLiteral("open");
        table.column5 << QStringLiteral("bkg%1").arg(row);
        table.column6 << QStringLiteral("x");
    }
    table.rowCount = rows;
    return table;
}

int saveBkg(int rows, bool announce)
{
    beginSave(announce);
    const _tagAutoBkgListFileParam table = bkgTable(rows);
    return exitCode(saveInfoToAutoBkgList(&table, QStringLiteral(","), at("AutoBkgList.txt")) == ES_SUCCESS);
}

// The active user with its settings written back and saved.
int saveProfile(const QString &recentFile, bool announce)
{
    CPLPreferenceManager *manager = CZOPreference::getPreferenceManager();
    if (manager->initialLoad(at("app")) != ES_SUCCESS)
        return exitCode(false);
    int index = manager->getUserIndex(QStringLiteral("AB"));
    if ((index < 0 && manager->addUser(QStringLiteral("AB"), &index, QStringLiteral("pw")) != ES_SUCCESS)
        || manager->setActiveUser(unsigned(index)) != ES_SUCCESS)
        return exitCode(false);
    CZOPreference::readUserTxtFile();
    CZOPreference::getSettings()->addMRUString(recentFile);
    CZOPreference::writeUserTxtFile();
    beginSave(announce);
    return exitCode(manager->saveData() == ES_SUCCESS);
}

int saveClickInfo(int images, bool announce)
{
    CPLClickInfo info;
    bool ok = createNewClickInfo(&info, QStringLiteral("AB20260101120000"), true) == ES_SUCCESS;
    sIASetupInfo setup;
    setup.timeStamp = 1767268800; // the same record on every run
    for (int i = 0; i < images && ok; ++i)
        ok = addTiffImageSection(&info, tag_eimagetype(i), QStringLiteral("image %1").arg(i), &setup, true) == ES_SUCCESS;
    beginSave(announce);
    return exitCode(ok && saveNewClickInfo(at("click"), &info) == ES_SUCCESS);
}

int saveTiff(quint16 seed, bool announce)
{
    beginSave(announce);
    CILImage image(64, 48);
    for (int i = 0; i < 64 * 48; ++i)
        image.getPixels()[i] = quint16(i * seed);
    return exitCode(image.saveTiff(at("image.tif")) == ES_SUCCESS);
}

// A queue left as its producer leaves it: the object is never deleted, since
// its destructor would remove the file.
CZOImageQueue *queueWith(int frames, int capacity, bool finalise, bool announce)
{
    auto *queue = new CZOImageQueue;
    beginSave(announce);
    queue->initImageQueue(at("frames.zoq"), quint64(capacity), kSide, kSide, ZOS_DT_UINT16, false);
    for (int n = 1; n <= frames; ++n)
        if (!queue->addFrame(frame(quint16(n)).constData()))
            break;
    if (finalise)
        queue->finalizeImageQueue(1, 0);
    return queue;
}

// What a producer left must reopen, and every frame it holds be whole: the
// newest frames in order, as many as the ring holds (one fewer when the
// producer died overwriting the oldest).
int queueVerify()
{
    if (!QFile::exists(at("frames.zoq")))
        return 0; // killed before the first header was in place
    auto *queue = new CZOImageQueue;
    if (!queue->initFromFile(at("frames.zoq"), ZOS_DT_UINT16))
        return 2;
    const int count = int(queue->getNumberOfFrames());
    QByteArray buffer(kFrameBytes, '\0');
    int first = 0;
    for (int i = 0; i < count; ++i) {
        if (!queue->getFrameAt(quint64(i), buffer.data()))
            return 2;
        const quint16 number = qFromLittleEndian<quint16>(buffer.constData());
        first = i == 0 ? number : first;
        if (buffer != frame(number) || number != first + i)
            return 2;
    }
    const int newest = first + count - 1;
    const bool allHeld = count == std::min(newest, 3) || (newest >= 3 && count == 2);
    return count == 0 || allHeld ? 0 : 2;
}

const std::map<QString, Operation> &operations()
{
    static const std::map<QString, Operation> table{
        {"csv-set", csvChange(setName)},
        // A later change of the same parser: through the swapped staging file,
        // keeping the rows after the changed one without a look.
        {"csv-set-again", csvChange(setName, [](CZOSCSVParser &p) {
             const QString name = p.getCSVColumnValue(20, 1);
             return p.setCSVColumnValue(20, 1, "x") == ES_SUCCESS && p.setCSVColumnValue(20, 1, name) == ES_SUCCESS;
         })},
        {"csv-add", csvChange([](CZOSCSVParser &p) { return p.addRow({"31", "mouse_new", "961"}) == ES_SUCCESS; })},
        {"csv-remove", csvChange([](CZOSCSVParser &p) { return p.removeRow("7") == ES_SUCCESS; })},
        {"csv-cut", csvChange([](CZOSCSVParser &p) { return p.removeRow("30") == ES_SUCCESS; })},
        {"probes", {probesPrepare, [] {
             CZOTreeMenuComboBox combo;
             beginSave();
             return exitCode(combo.saveRecentUsedProbes({"EGFP", "mCherry"}));
         }}},
        {"autobkg", {[] { return saveBkg(3, false); }, [] { return saveBkg(5, true); }}},
        {"profile", {[] { return saveProfile("/data/old.tif", false); },
                     [] { return saveProfile("/data/new.tif", true); }}},
        {"clickinfo", {[] { return saveClickInfo(1, false); }, [] { return saveClickInfo(3, true); }}},
        {"tiff", {[] { return saveTiff(3, false); }, [] { return saveTiff(5, true); }}},
        {"queue-init", {[] { return exitCode(!queueWith(4, 3, true, false)->isImageQueueModInProcess()); },
                        [] { return exitCode(queueWith(0, 3, false, true)->isImageQueueModInProcess()); }}},
        {"queue-add", {[] { return 0; }, [] { return queueWith(7, 3, false, true) ? 0 : 1; }}},
    };
    return table;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const auto found = argc == 4 ? operations().find(QString::fromUtf8(argv[1])) : operations().end();
    if (found == operations().end()) {
        std::fputs("usage: savedriver OPERATION prepare|run|verify FOLDER\n", stderr);
        return 2;
    }
    g_folder = QDir(QString::fromLocal8Bit(argv[3])).absolutePath();
    // Every folder the libraries use lies in FOLDER.
    qputenv("ZO_DATA_ROOT", QFile::encodeName(g_folder + "/data/"));
    qputenv("ALLUSERSPROFILE", QFile::encodeName(at("all")));
    qputenv("APPDATA", QFile::encodeName(at("roaming")));
    QDir().mkpath(at("app"));
    const QByteArray phase(argv[2]);
    const int code = phase == "prepare" ? found->second.prepare() : phase == "run" ? found->second.run()
                                                                    : queueVerify();
    // No destructors: a queue file must outlive its object here.
    std::fflush(stderr);
    _exit(code);
}
