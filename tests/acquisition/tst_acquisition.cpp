// The acquisition helpers: CCD read-bias, read-noise, flat-field and defect
// corrections, set-up matching, new click-info records and the auto-background list.
#include "autobkglist.h"
#include "ccdcorrections.h"
#include "ccdcorrections_p.h"
#include "cilimage.h"
#include "clickinfoconstruction.h"
#include "cplcamerainfo.h"
#include "cplclickinfo.h"
#include "cplsection.h"
#include "cplsequenceinfo.h"
#include "setupmatching.h"
#include "czopreference.h"
#include "czoutilityfns.h"
#include "czoslog.h"
#include "siasetupinfo.h"
#include "testfiles.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

Q_DECLARE_METATYPE(SAutoBkgListInfo)

using Records = QList<SAutoBkgListInfo>;

namespace {

// A section from "key=value" entries.
CPLSection *section(const QString &name, const QStringList &entries)
{
    auto *s = new CPLSection(name);
    for (const QString &e : entries)
        s->setValue(e.section('=', 0, 0), e.section('=', 1));
    return s;
}

CILImage image(int w, int h, const std::function<int(int, int)> &value)
{
    CILImage im(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            im.setPixel(x, y, quint16(value(x, y)));
    im.RefreshImageStats();
    return im;
}

QString logText()
{
    QCoreApplication::sendPostedEvents();
    return QString::fromUtf8(readFile(getLogObject()->fileName()));
}

const double NaN = std::nan("");

using Change = std::function<void(sIASetupInfo &)>;

QString stampAt(qint64 seconds) { return QDateTime::currentDateTime().addSecs(seconds).toString("yyyyMMddhhmmss"); }

// Counts deletions, to see what the pruning search deletes.
struct CountedInfo : SIAImageInfo {
    static inline int deleted = 0;
    explicit CountedInfo(qint64 ageSeconds, double exposure = 0)
    {
        setup.timeStamp = QDateTime::currentSecsSinceEpoch() - ageSeconds;
        setup.exposureTime = exposure;
    }
    ~CountedInfo() override { ++deleted; }
};

} // namespace

Q_DECLARE_METATYPE(Change)

class TestAcquisition : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        useDataRoot(m_dir.path());
        QVERIFY(CZOSLogEventHandler::install());
        QCOMPARE(beginLog(QStringLiteral("tst_acquisition")), 1);
        CZOPreference::setAppVersion(QStringLiteral("4.7.2.1234"));
    }
    void cleanupTestCase() { closeLog(); }

    void readBias_data()
    {
        // sections: "section|key=value"; pixelLow: image pixels pixelLow..pixelLow+10, -1 for no image.
        QTest::addColumn<QStringList>("sections"); QTest::addColumn<int>("pixelLow");
        QTest::addColumn<int>("status"); QTest::addColumn<float>("result");
        const QString dc = "darkcharge image|Read Bias Level=", rbo = "readbiasonly image|Read Bias Level=",
                      rb = "readbias image|Read Bias Level=";
        QTest::newRow("darkcharge first") << QStringList{rb + "7", rbo + "6", dc + "5"} << 1000 << 0 << 5.0f;
        QTest::newRow("readbiasonly next") << QStringList{rb + "7", rbo + "6"} << 1000 << 0 << 6.0f;
        QTest::newRow("readbias over measuring") << QStringList{rb + "7"} << 1000 << 0 << 7.0f;
        QTest::newRow("stored needs no image") << QStringList{dc + "5.5"} << -1 << 0 << 5.5f;
        QTest::newRow("readbias needs an image") << QStringList{rb + "7"} << -1 << 31 << 0.0f;
        QTest::newRow("measured, default limits") << QStringList{} << 1000 << 0 << 100.5f;
        QTest::newRow("minimum at lower limit 0") << QStringList{} << 0 << 31 << 0.0f;
        QTest::newRow("maximum at upper limit 65535") << QStringList{} << 65525 << 31 << 0.0f;
        const QString cam = "Camera System Info|";
        const QStringList limits{cam + "Read Bias Lower Limit=100", cam + "Read Bias Upper Limit=200"};
        QTest::newRow("limits x10, inside") << limits << 1001 << 0 << 100.6f;
        QTest::newRow("limits x10, min at lower") << limits << 1000 << 31 << 0.0f;
        QTest::newRow("limits x10, max at upper") << limits << 1990 << 31 << 0.0f;
        QTest::newRow("multiplier of the readbias section")
            << (limits + QStringList{"readbias image|Data Multiplier=5"}) << 501 << 0 << 101.2f;
        QTest::newRow("multiplier of the camera ignored")
            << (limits + QStringList{cam + "Data Multiplier=5"}) << 501 << 31 << 0.0f;
        QTest::newRow("multiplier needs the camera section")
            << QStringList{"readbias image|Data Multiplier=5"} << 1000 << 0 << 100.5f;
        for (const QString &bad : {dc + "abc", rbo, dc + "1e999"})
            QTest::newRow(qPrintable("stored " + bad)) << QStringList{bad} << 1000 << 31 << 0.0f;
        for (const QString &bad : QStringList{"abc", "0"})
            QTest::newRow(qPrintable("multiplier " + bad))
                << (limits + QStringList{"readbias image|Data Multiplier=" + bad}) << 1001 << 31 << 0.0f;
        QTest::newRow("limit 60 sec") << QStringList{cam + "Read Bias Lower Limit=60 sec"} << 1001 << 31 << 0.0f;
    }

    void readBias()
    {
        QFETCH(QStringList, sections); QFETCH(int, pixelLow); QFETCH(int, status); QFETCH(float, result);
        CPLClickInfo ci;
        for (const QString &entry : sections) {
            const QString name = entry.section('|', 0, 0);
            if (!ci.getSection(name))
                ci.addSection(new CPLSection(name));
            ci.getSection(name)->setValue(entry.section('|', 1).section('=', 0, 0), entry.section('=', 1));
        }
        // Pixels low..low+10 in a 11x3 image: mean low+5.
        CILImage im = image(11, 3, [&](int x, int) { return pixelLow + x; });
        float value = -1;
        const int logged = logText().size();
        QCOMPARE(int(measureReadBias(ci, pixelLow < 0 ? nullptr : &im, &value)), status);
        QCOMPARE(value, result);
        QVERIFY(status == 0 || pixelLow < 0 || logText().size() > logged); // a refusal says why in the log
        QCOMPARE(int(measureReadBias(ci, &im, nullptr)), int(ES_INVALID_POINTER));
    }

    void readSigma_data()
    {
        QTest::addColumn<float>("lower"); QTest::addColumn<float>("upper");
        const float inf = std::numeric_limits<float>::infinity();
        QTest::newRow("strict integer limits") << 10.0f << 20.0f;
        QTest::newRow("fractional limits") << 9.5f << 1019.5f;
        QTest::newRow("negative lower") << -1.0f << 11.0f;
        QTest::newRow("infinite") << -inf << inf;
        QTest::newRow("upper 65535") << 19.0f << 65535.0f;
        QTest::newRow("empty range") << 20.0f << 10.0f;
        QTest::newRow("NaN") << std::nanf("") << 100.0f;
    }

    void readSigma()
    {
        QFETCH(float, lower); QFETCH(float, upper);
        // Both limits and their neighbours, then random values. 67 x 13 pixels
        // reach the scalar tail after the vectors; 300 x 230 pixels cross the
        // vectors' widening of their partial sums, 640 x 480 high ones would
        // overflow them without it. Sums and counts (0, ..., 65535) wrap.
        const int edges[] = {0, 9, 10, 11, 19, 20, 21, 1019, 1020, 65534, 65535};
        std::mt19937 rng(7);
        for (const QSize size : {QSize(67, 13), QSize(300, 230), QSize(640, 480)}) {
            const int w = size.width(), h = size.height(), high = w == 640 ? 0xFF00 : 0;
            auto random = [&](int x, int y) { return y == 0 && x < 11 ? edges[x] : int(rng() % 65536) | high; };
            // Paths: public (AVX2 where the processor has it), SSE2, scalar; each fresh and accumulating.
            for (int path = 0; path < 6; ++path) {
                const bool accumulate = path % 2;
                CILImage src = image(w, h, random), mask(w, h), sum = image(w, h, random);
                CILImage count = image(w, h, [&](int, int) { return int(rng() % 4) * 21845; });
                src.setImageStats(0, 0, 0); // stale: every path must set the source's too
                // The obvious per-pixel accumulation and a full refresh: what every path must give.
                CILImage ref[4] = {src, sum, count, mask};
                for (qint64 i = 0; i < src.getPixelCount(); ++i) {
                    const quint16 v = src.getPixels()[i];
                    const bool in = lower < float(v) && float(v) < upper;
                    ref[1].getPixels()[i] = quint16((accumulate ? sum.getPixels()[i] : 0) + (in ? v : 0));
                    ref[2].getPixels()[i] = quint16((accumulate ? count.getPixels()[i] : 0) + in);
                    ref[3].getPixels()[i] = in;
                }
                quint16 first = 0, last = 0;
                if (path < 2)
                    QVERIFY(createReadSigmaImage(&src, &sum, nullptr, &count, &mask, lower, upper, accumulate));
                else if (!ZoReadSigma::strictIntegerRange(lower, upper, first, last))
                    continue; // nothing to accumulate; the public path covers it
                else if (path < 4)
                    ZoReadSigma::accumulateImages<8>(src, sum, count, mask, first, last, accumulate);
                else
                    ZoReadSigma::accumulateImages<0>(src, sum, count, mask, first, last, accumulate);
                const CILImage *got[4] = {&src, &sum, &count, &mask};
                for (int k = 0; k < 4; ++k) {
                    ref[k].RefreshImageStats();
                    QVERIFY2(std::equal(ref[k].getPixels(), ref[k].getPixels() + w * h, got[k]->getPixels()),
                             qPrintable(QStringLiteral("size %1, path %2, image %3").arg(w).arg(path).arg(k)));
                    QCOMPARE(got[k]->getMinimum(), ref[k].getMinimum());
                    QCOMPARE(got[k]->getMaximum(), ref[k].getMaximum());
                    QCOMPARE(got[k]->getMean(), ref[k].getMean());
                }
            }
        }
    }

    void readSigmaBadInput()
    {
        CILImage other(4, 4), wrong(4, 3), e1, e2, e3, e4;
        other.fill(9);
        for (int missing = 0; missing < 4; ++missing) {
            CILImage *at[4] = {&other, &other, &other, &other};
            at[missing] = nullptr;
            QVERIFY(!createReadSigmaImage(at[0], at[1], nullptr, at[2], at[3], 0, 10, 1));
        }
        QVERIFY(!createReadSigmaImage(&wrong, &other, nullptr, &other, &other, 0, 10, 0));
        QCOMPARE(other.pixel(0, 0), quint16(9)); // not cleared
        QVERIFY(createReadSigmaImage(&e1, &e2, nullptr, &e3, &e4, 0, 10, 0));
    }

    void flatField_data()
    {
        QTest::addColumn<bool>("multiView"); QTest::addColumn<QStringList>("config"); QTest::addColumn<int>("capacity");
        QTest::addColumn<int>("status"); QTest::addColumn<QString>("values"); QTest::addColumn<bool>("warns");
        const QString table = "Shelf Position FOV Table=A=5;B=12.5;C=20";
        const QString ff5 = "Shelf Position B FF5 f/2 Coefs=", old = "Shelf Position B Flat Field f/2 Coefs=";
        QTest::newRow("FF5 key first") << false << QStringList{table, ff5 + "1,2,3", old + "4,5"} << 0 << 0 << "1,2,3" << false;
        QTest::newRow("old key next") << false << QStringList{table, old + "4,-5e-3"} << 0 << 0 << "4,-0.005" << false;
        QTest::newRow("empty FF5 falls back") << false << QStringList{table, ff5, old + "4"} << 0 << 0 << "4" << false;
        QTest::newRow("multi-view, no commas")
            << true << QStringList{"MV Flat Field f/2 Coefs=0.75", ff5 + "1"} << 0 << 0 << "0.75" << false;
        QTest::newRow("blanks around numbers") << false << QStringList{table, ff5 + " 1.5 , 2 "} << 0 << 0 << "1.5,2" << false;
        QTest::newRow("trailing comma") << false << QStringList{table, ff5 + "1,,3,"} << 0 << 0 << "1,0,3,0" << false;
        QTest::newRow("only commas and blanks") << false << QStringList{table, ff5 + ", ,"} << 0 << 0 << "0,0,0" << false;
        QTest::newRow("abc piece") << false << QStringList{table, ff5 + "1,abc,2"} << 0 << 0 << "1,0,2" << true;
        QTest::newRow("1e999 piece") << false << QStringList{table, ff5 + "1e999,nan"} << 0 << 0 << "0,0" << true;
        QTest::newRow("more pieces than room") << false << QStringList{table, ff5 + "1,2,x,4"} << 2 << 0 << "1,2" << true;
        QTest::newRow("unmapped FOV: key built all the same")
            << false << QStringList{"Shelf Position  FF5 f/2 Coefs=9"} << 1 << 0 << "9" << true;
        QTest::newRow("Andor default") << false << QStringList{table, "Camera System Info=Andor iKon-M"} << 0 << 0
                                       << "1,0,0,0,0,0" << false;
        QTest::newRow("no keys") << false << QStringList{table, "Camera System Info=Other"} << 0 << 31 << "" << true;
    }

    void flatField()
    {
        QFETCH(bool, multiView); QFETCH(QStringList, config); QFETCH(int, capacity);
        QFETCH(int, status); QFETCH(QString, values); QFETCH(bool, warns);
        CPLClickInfo ci;
        ci.addSection(section("luminescent image", {"f Number=2", "Field of View=12.5", "Imaging Angle=0"}));
        ci.addSection(section("Camera System Info", config));
        float coefs[8] = {-7, -7, -7, -7, -7, -7, -7, -7};
        int count = -1;
        const int logged = logText().size();
        QCOMPARE(int(getFlatFieldCoefficients(ci, coefs, capacity, count, multiView, IT_LUMINESCENT)), status);
        QStringList got;
        for (int i = 0; i < count; ++i)
            got << QString::number(coefs[i]);
        QCOMPARE(got.join(','), values);
        QVERIFY(std::all_of(coefs + count, coefs + 8, [](float c) { return c == -7.0f; })); // nothing past count
        QCOMPARE(logText().size() > logged, warns); // pieces dropped or unreadable, or no keys at all
        QCOMPARE(int(getFlatFieldCoefficients(ci, coefs, 0, count, multiView, IT_PHOTOGRAPH)), int(ES_INVALID_POINTER));
        QCOMPARE(count, 0);
    }

    void shelfPosition_data()
    {
        QTest::addColumn<QString>("table"); QTest::addColumn<QString>("fov"); // table null: no key
        QTest::addColumn<int>("status"); QTest::addColumn<QString>("shelf");
        const QString t = " A = 5 ; B=12.5;C=20;";
        QTest::newRow("exact") << t << "12.5" << 0 << "B";
        QTest::newRow("written with 17 digits") << t << "12.500000000000002" << 0 << "B";
        QTest::newRow("within 0.01") << t << "19.995" << 0 << "C";
        QTest::newRow("past 0.01") << t << "20.02" << 28 << "";
        QTest::newRow("blanks and unit") << t << " 5 cm" << 0 << "A";
        QTest::newRow("no table") << QString() << "5" << 49 << "";
        QTest::newRow("bad fov") << t << "abc" << 21 << "";
        QTest::newRow("empty fov") << t << "" << 21 << "";
        QTest::newRow("bad table") << "A=5;B" << "5" << 21 << "";
        QTest::newRow("table without name") << "=5" << "5" << 21 << "";
    }

    void shelfPosition()
    {
        QFETCH(QString, table); QFETCH(QString, fov); QFETCH(int, status); QFETCH(QString, shelf);
        CPLSection camera("Camera System Info");
        if (!table.isNull())
            camera.setValue("Shelf Position FOV Table", table);
        QString got = "stale";
        QCOMPARE(int(getShelfPositionFromFOV(camera, fov, got)), status);
        QCOMPARE(got, shelf);
    }

    void defectRepair_data()
    {
        // A 6x5 image with pixel value 10x + 100y, defects set to 9999. A linear
        // image repairs to itself inside; "x,y=v" lists the pixels that differ.
        QTest::addColumn<QStringList>("map"); QTest::addColumn<QString>("changed");
        QTest::newRow("column between good ones") << QStringList{"Defect Map Columns=2"} << "";
        QTest::newRow("two columns interpolated, edge copied")
            << QStringList{"Defect Map Columns= 3;0;2-3 ;"} << "0,0=10 0,1=110 0,2=210 0,3=310 0,4=410";
        QTest::newRow("rows after columns") << QStringList{"Defect Map Rows=4;1", "Defect Map Columns=5"}
                                            << "5,0=40 5,1=140 5,2=240 5,3=340 0,4=300 1,4=310 2,4=320 3,4=330 4,4=340 5,4=340";
        QTest::newRow("pixel: mean of 8 neighbours") << QStringList{"Defect Map Pixels=2,2"} << "";
        QTest::newRow("pixel cluster from the rim")
            << QStringList{"Defect Map Pixels=0,0;1,0;0,1;1,1"} << "0,0=143 1,0=70 0,1=205 1,1=154";
        QTest::newRow("joint: pixel beside a column")
            << QStringList{"Defect Map Columns=1", "Defect Map Pixels=0,0", "Defect Map Joint Repair=1"}
            << "0,0=100 1,0=80 1,1=132 1,4=360";
    }

    void defectRepair()
    {
        QFETCH(QStringList, map);
        QScopedPointer<CPLSection> camera(section("Camera System Info", map));
        SCCDDefectMap parsed;
        QCOMPARE(int(parseCCDDefectMap(*camera, parsed)), 0);
        for (const QVector<int> &lines : {parsed.columns, parsed.rows}) // sorted, each once
            QVERIFY(std::adjacent_find(lines.begin(), lines.end(), std::greater_equal<int>()) == lines.end());
        CILImage im = image(6, 5, [&](int x, int y) {
            const bool bad = parsed.columns.contains(x) || parsed.rows.contains(y) || parsed.pixels.contains(QPoint(x, y));
            return bad ? 9999 : 10 * x + 100 * y;
        });
        QCOMPARE(int(fixCCDDefects(camera.data(), &im)), 0);
        QStringList changed;
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 6; ++x)
                if (im.pixel(x, y) != 10 * x + 100 * y)
                    changed << QStringLiteral("%1,%2=%3").arg(x).arg(y).arg(im.pixel(x, y));
        QTEST(changed.join(' '), "changed");
        QVERIFY(im.getMaximum() < 9999); // statistics refreshed
    }

    void defectRepairRefusals()
    {
        CILImage im = image(4, 3, [](int x, int y) { return x + 10 * y; });
        const CILImage before = im;
        auto status = [&](const QStringList &map) {
            QScopedPointer<CPLSection> camera(section("Camera System Info", map));
            return int(fixCCDDefects(camera.data(), &im));
        };
        QCOMPARE(status({}), 0);
        for (const QStringList &map : QList<QStringList>{
                 {"Defect Map Pixels=4,0"}, {"Defect Map Rows=3"}, {"Defect Map Columns=0-3"},
                 {"Defect Map Rows=0-2", "Defect Map Columns=1", "Defect Map Joint Repair=1"},
                 {"Defect Map Columns=1", "Defect Map Pixels=0,0;1,0;2,0;3,0;0,1;1,1;2,1;3,1;0,2;1,2;2,2;3,2"}})
            QCOMPARE(status(map), int(ES_INVALID_ARGUMENT));
        for (const char *bad : {"Defect Map Columns=x", "Defect Map Pixels=3", "Defect Map Columns=-3",
                                "Defect Map Rows=2-1", "Defect Map Rows=0-65536", "Defect Map Joint Repair=maybe"})
            QCOMPARE(status({bad}), int(ES_INVALID_DATA_TYPE));
        QVERIFY(std::equal(before.getPixels(), before.getPixels() + 12, im.getPixels()));
        CPLSection camera;
        CILImage empty;
        QCOMPARE(int(fixCCDDefects(nullptr, &im)), int(ES_INVALID_POINTER));
        QCOMPARE(int(fixCCDDefects(&camera, &empty)), int(ES_INVALID_IMAGE));
    }

    void darkChargeSection()
    {
        CPLClickInfo ci;
        ci.addSection(section("luminescent image", {"Exposure Time=60 sec", "Binning Factor=4", "f Number=1"}));
        ci.addSection(section("darkcharge image", {"File Name=background.TIF", "EM Gain=High", "f Number=2"}));
        const float bias = 101.25f;
        QCOMPARE(int(updateDarkChargeImageSection(ci, IT_LUMINESCENT, &bias)), 0);
        const CPLSection *dark = ci.getSection("darkcharge image");
        QCOMPARE(dark->keys(), (QStringList{"File Name", "f Number", "Exposure Time", "Binning Factor", "Read Bias Level"}));
        QCOMPARE((QStringList{dark->value("f Number"), dark->value("Exposure Time")}), (QStringList{"1", "60 sec"}));
        float measured = 0;
        QCOMPARE(int(measureReadBias(ci, nullptr, &measured)), 0);
        QCOMPARE(measured, bias);
        CPLClickInfo fresh; // without a dark-charge section one is added
        fresh.addSection(section("luminescent image", {"Exposure Time=5 sec"}));
        QCOMPARE(int(updateDarkChargeImageSection(fresh, IT_LUMINESCENT)), 0);
        QCOMPARE(fresh.getSection("darkcharge image")->value("Exposure Time"), QString("5 sec"));
        QCOMPARE(int(updateDarkChargeImageSection(ci, IT_PHOTOGRAPH)), int(ES_INVALID_POINTER));
        QCOMPARE(int(updateDarkChargeImageSection(ci, IT_DARKCHARGE)), int(ES_INVALID_ARGUMENT));
    }

    void writeAndReadBack()
    {
        _tagAutoBkgListFileParam t;
        t.title = "Auto Bkg";
        t.header1 = "1,a,2,b,c"; // five fields: not read back
        t.header2 = "h2";
        t.header3 = "%1";
        t.column1 = QStringList{"1", "2", "3"};
        t.column2 = QStringList{" lum ", "b", "c"};
        t.column3 = QStringList{"4", "8", "30"};
        t.column4 = QStringList{"x"}; // shorter than the table: empty cells
        t.column5 = QStringList{"60 sec", "", "c5"}; // an empty fifth value is written, not read
        t.column6 = QStringList{"z", "w", "v"};
        t.rowCount = 3;
        const QString path = m_dir.filePath("written.txt");
        QVERIFY(QFile(path).open(QIODevice::WriteOnly)); // replaced, not appended to
        QCOMPARE(int(saveInfoToAutoBkgList(&t, ",", path)), 0);
        QCOMPARE(readFile(path),
                 QByteArray("#Auto Bkg\n#Binning Key\n1,a,2,b,c\nh2\n%1\n\n1, lum ,4,x,60 sec,z\n2,b,8,,,w\n3,c,30,,c5,v\n"));
        Records records{SAutoBkgListInfo("kept", "", "", "")};
        QCOMPARE(int(readInfoFromAutoBkgList(path, records)), 0);
        QCOMPARE(records, (Records{SAutoBkgListInfo("kept", "", "", ""), SAutoBkgListInfo("1", " lum ", "4", "60 sec"),
                                   SAutoBkgListInfo("3", "c", "30", "c5")}));
        QCOMPARE(int(saveInfoToAutoBkgList(&t, ";", path)), 0);
        QVERIFY(readFile(path).endsWith("\n3;c;30;;c5;v\n"));
        QCOMPARE(int(saveInfoToAutoBkgList(nullptr, ",", path)), int(ES_INVALID_POINTER));

        _tagAutoBkgListFileParam empty;
        QCOMPARE(int(saveInfoToAutoBkgList(&empty, ";", path)), 0);
        QCOMPARE(readBack(readFile(path)), Records());
    }

    void lineFilter_data()
    {
        QTest::addColumn<QByteArray>("bytes"); QTest::addColumn<Records>("records");
        const SAutoBkgListInfo first("1", "a", "2", "c"), second("3", "e", "4", "g");
        QTest::newRow("six fields") << QByteArray("#T\n#Binning Key\n\n1,a,2,b,c,d\n") << Records{first};
        QTest::newRow("untrimmed") << QByteArray("-1,a ,2, b , c ,") << Records{SAutoBkgListInfo("-1", "a ", "2", " c ")};
        for (const char *bad : {"1,a,x,b,c,d", "1.5,a,2,b,c,d", ",a,2,b,c,d", "1,a,2,b,,d", "1,a,2,b,c,d,e", "1,a,2,b,c"})
            QTest::newRow(bad) << QByteArray(bad) << Records();
        QTest::newRow("LF") << QByteArray("#T\n1,a,2,b,c,d\n3,e,4,f,g,h") << Records{first, second};
        QTest::newRow("CRLF") << QByteArray("#T\r\n1,a,2,b,c,d\r\n3,e,4,f,g,h\r\n") << Records{first, second};
        QTest::newRow("CR only") << QByteArray("#T\r1,a,2,b,c,d\r3,e,4,f,g,h\r") << Records{first, second};
        QTest::newRow("mixed, blank lines") << QByteArray("\r\n\r1,a,2,b,c,d\n\n\r3,e,4,f,g,h") << Records{first, second};
    }

    void lineFilter()
    {
        QFETCH(QByteArray, bytes);
        QTEST(readBack(bytes), "records");
    }

    void badPaths()
    {
        Records records;
        QCOMPARE(int(readInfoFromAutoBkgList(m_dir.filePath("missing.txt"), records)), int(ES_READ_FAILED));
        QCOMPARE(int(readInfoFromAutoBkgList(m_dir.path(), records)), int(ES_READ_FAILED)); // a directory
        QVERIFY(records.isEmpty());
        QVERIFY(logText().contains("\n Error opening Auto background configuration file."));

        // Writing where no file can be made fails silently.
        _tagAutoBkgListFileParam t;
        t.rowCount = 1;
        QCOMPARE(int(saveInfoToAutoBkgList(&t, ",", m_dir.path())), 0);
        QCOMPARE(int(saveInfoToAutoBkgList(&t, ",", m_dir.filePath("no/such/folder.txt"))), 0);
        QVERIFY(!QFile::exists(m_dir.filePath("no")));
    }

    void clickAndSequenceNumbers()
    {
        CPLClickInfo complete;
        QCOMPARE(int(createNewClickInfo(&complete, "JD20260101120000", true)), 0);
        QCOMPARE(complete.getClickNumber(), QString("JD20260101120000"));
        const CPLSection *number = complete.getSection("ClickNumber");
        QCOMPARE((QStringList{number->value("Zolvane Version"), number->value("Complete ClickNumber")}),
                 (QStringList{"4.7.2.1234", "1"}));
        QVERIFY(complete.getSection("User Input") && complete.getSection("Analysis User Input"));

        const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
        CPLClickInfo stamped;
        QCOMPARE(int(createNewClickInfo(&stamped, "JD", false)), 0);
        const QString text = stamped.getClickNumber();
        QVERIFY(text.size() == 2 + 14 && text.startsWith("JD"));
        const QDateTime when = QDateTime::fromString(text.mid(2), "yyyyMMddhhmmss");
        QVERIFY(when >= before && when <= QDateTime::currentDateTime());
        QCOMPARE(stamped.getSection("ClickNumber")->value("Complete ClickNumber"), QString("0"));
        QCOMPARE(int(createNewClickInfo(nullptr, "x", true)), int(ES_INVALID_POINTER));
        CPLClickInfo empty; // the parser refuses an empty click number
        QCOMPARE(int(createNewClickInfo(&empty, "", true)), int(ES_NO_CLICKNUMBERS));
        QVERIFY(!empty.getSection("User Input"));

        CPLSequenceInfo seq;
        seq.addClickNumber("stale");
        QCOMPARE(int(createNewSeqInfo(&seq, {"A1", "B2"})), 0);
        QCOMPARE(seq.getClickNumbers(), (QStringList{"A1", "B2"}));
        QCOMPARE(seq.getSection("Sequence")->value("Zolvane Version"), QString("4.7.2.1234"));
        CPLSequenceInfo none;
        QCOMPARE(int(createNewSeqInfo(&none, {})), 0);
        QVERIFY(none.getSection("Sequence") && none.getSection("User Input"));
        QCOMPARE(int(createNewSeqInfo(nullptr, {})), int(ES_INVALID_POINTER));
        CPLSequenceInfo bad;
        QCOMPARE(int(createNewSeqInfo(&bad, {"A1", ""})), int(ES_INVALID_INPUT));
        QVERIFY(!bad.getSection("Sequence"));
    }

    void fileNames()
    {
        const QStringList names{"photograph", "luminescent", "readbias", "readsigma", "background", "readbiasonly",
                                "reference", "structure", "fluorescentbkg", "photograph", "photograph", "photograph",
                                "x-ray", "photograph"}; // kinds 9-11 and 13 are unlisted
        for (int type = 0; type < names.size(); ++type) {
            QCOMPARE(tiffFileNameForImageType(type), names[type] + ".TIF");
            CPLClickInfo ci;
            sIASetupInfo setup;
            QCOMPARE(int(addTiffImageSection(&ci, tag_eimagetype(type), "comment", &setup, false)), 0);
            QCOMPARE(ci.getSection(imageTypeSectionName(type))->value("File Name"), names[type] + ".TIF");
        }
    }

    void roundTripThroughClickInfoFile()
    {
        CPLClickInfo ci;
        QCOMPARE(int(createNewClickInfo(&ci, "RT", false)), 0);
        CPLCameraInfo camera;
        QCOMPARE(int(addCameraInfoSection(&camera, &ci)), int(ES_INVALID_POINTER)); // no camera section
        QCOMPARE(int(addCameraInfoSection(nullptr, &ci)), int(ES_INVALID_POINTER));
        auto *system = new CPLSection("Camera System Info");
        system->setValue("Read Bias Lower Limit", "90");
        camera.addSection(system);
        QCOMPARE(int(addCameraInfoSection(&camera, &ci)), 0);
        system->setValue("Read Bias Lower Limit", "changed later"); // the click info holds a copy
        QCOMPARE(ci.getSection("Camera System Info")->value("Read Bias Lower Limit"), QString("90"));
        sIASetupInfo setup;
        setup.exposureTime = 60;
        QCOMPARE(int(addTiffImageSection(&ci, IT_LUMINESCENT, "(luminescent)", &setup, false)), 0);
        QCOMPARE(int(addTiffImageSection(nullptr, IT_XRAY, QString(), &setup, false)), int(ES_INVALID_POINTER));

        const QString folder = m_dir.filePath("click-1"); // created by the save
        QCOMPARE(int(saveNewClickInfo(folder, nullptr)), int(ES_INVALID_POINTER));
        QCOMPARE(int(saveNewClickInfo(folder, &ci)), 0);
        CPLClickInfo back;
        QCOMPARE(int(back.loadClickInfo(folder + "/ClickInfo.txt")), 0);
        QCOMPARE(back.getClickNumber(), ci.getClickNumber());
        QCOMPARE(back.sectionCount(), ci.sectionCount()); // the sections' own round trip is the parser's to test
        QCOMPARE(back.getSection("luminescent image")->value("Exposure Time"), QString("60 sec"));
        // Only one folder level is created; the save reports the failure.
        QVERIFY(saveNewClickInfo(m_dir.filePath("missing/click-2"), &ci) != ES_SUCCESS);
    }

    // Batch tools call these helpers without a GUI, where the busy cursor is nothing at all.
    void cursorWithoutAGui() { CZOUtilityFns::setCursor(ECURSOR_WAIT), CZOUtilityFns::restoreCursor(); }

    void rules_data()
    {
        // The wanted set-up is the default one (every number 0): the candidate
        // differs in one member only, so each edge is exact.
        QTest::addColumn<QString>("rule"); QTest::addColumn<Change>("change"); QTest::addColumn<bool>("matches");
        using S = sIASetupInfo;
        auto row = [](const char *name, const char *rule, auto S::*member, QVariant v, bool m) {
            using T = std::remove_reference_t<decltype(S().*member)>;
            QTest::newRow(name) << QString(rule) << Change([=](S &s) { s.*member = v.value<T>(); }) << m;
        };
        for (const char *rule : {"lumin", "fluor"}) {
            const QByteArray r(rule);
            const bool fl = r == "fluor";
            row(r + " exposure at 1e-5", rule, &S::exposureTime, 1e-5, true);
            row(r + " exposure past 1e-5", rule, &S::exposureTime, 1.1e-5, false);
            row(r + " NaN exposure passes", rule, &S::exposureTime, NaN, true);
            row(r + " binning", rule, &S::binningFactor, 2, false);
            row(r + " temperature", rule, &S::demandTemperature, "-80", fl);
            row(r + " temperature trimmed", rule, &S::demandTemperature, " \t", true);
            row(r + " f-stop", rule, &S::lumFStop, "4", !fl);
            row(r + " level case", rule, &S::fluorescenceLevel, "HIGH", true);
            // Lower-cased, a dotted capital I gains a combining dot: not "high".
            row(r + " dotted capital I", rule, &S::fluorescenceLevel, QString::fromUtf8("H\u0130GH"), !fl);
            row(r + " excitation", rule, &S::excitationFilter, "GFP", !fl);
            row(r + " emission", rule, &S::emissionFilter, "Cy5.5", !fl);
            row(r + " fov at 1e-5", rule, &S::fov, 1e-5, true);
            row(r + " fov past 1e-5", rule, &S::fov, 1.1e-5, !fl);
        }
        row("photo exposure exact", "photo", &S::photoExposureTime, 1e-12, false);
        row("photo NaN fails equality", "photo", &S::photoExposureTime, NaN, false);
        row("photo binning", "photo", &S::photoBinning, 2, false);
        row("photo f-stop as written", "photo", &S::photoFStop, "8 ", false);
        row("photo fov exact", "photo", &S::fov, 1e-12, false);
        row("photo angle exact", "photo", &S::imagingAngle, 1e-12, false);
        row("photo position case", "photo", &S::positionName, "LOAD", true);
        row("xray exposure at 0.01", "xray", &S::xrayExposureTime, 0.01, true);
        row("xray exposure past 0.01", "xray", &S::xrayExposureTime, 0.011, false);
        row("xray binning", "xray", &S::xrayBinning, 4, false);
        row("xray f-stop as written", "xray", &S::xrayFStop, "8.0", false);
        row("xray fov exact", "xray", &S::fov, 0.001, false);
        row("xray angle at 0.01", "xray", &S::imagingAngle, -0.01, true);
        row("xray angle past 0.01", "xray", &S::imagingAngle, 0.011, false);
        row("xray position case", "xray", &S::positionName, "load", true);
        row("xray voltage past 0.01", "xray", &S::xrayTubeVoltage, 0.011, false);
        row("xray NaN voltage passes", "xray", &S::xrayTubeVoltage, NaN, true);
        row("xray current at 0.01", "xray", &S::xrayTubeCurrent, 0.01, true);
        row("xray filter case", "xray", &S::xrayTubeFilter, "OUT", true);
        row("xray filter", "xray", &S::xrayTubeFilter, "in", false);
        row("flref fov exact", "flref", &S::fov, 1e-12, false);
        row("flref binning compared", "flref", &S::binningFactor, 2, false);
        row("flref binning ignored", "flrefNoBinning", &S::binningFactor, 2, true);
        row("flref excitation case", "flref", &S::excitationFilter, "block", true);
        row("flref level", "flref", &S::fluorescenceLevel, "Low", false);
        row("flref emission not compared", "flref", &S::emissionFilter, "Cy5.5", true);
        row("flref angle exact", "flref", &S::imagingAngle, 1e-12, false);
    }

    void rules()
    {
        QFETCH(QString, rule); QFETCH(Change, change);
        sIASetupInfo wanted;
        wanted.demandTemperature = QStringLiteral(" ");
        sIASetupInfo candidate = wanted;
        change(candidate);
        QTEST(rule == "photo"              ? isPhotoParametersMatched(&wanted, &candidate)
              : rule == "xray"             ? isXrayParametersMatched(&wanted, &candidate)
              : rule.startsWith("flref")   ? isFLReferenceParametersMatched(wanted, candidate, rule == "flref")
                                           : isLuminParametersMatched(&wanted, &candidate, rule == "fluor"),
              "matches");
    }

    void searchesReturnTheLastMatch()
    {
        sIASetupInfo wanted;
        wanted.exposureTime = 60;
        SIAImage first, other, last;
        first.setup = last.setup = wanted;
        other.setup.exposureTime = 30;
        QList<SIAImage *> images{&first, &last, &other};
        QCOMPARE(findMatchingImageFromList(images, &wanted, false), &last);
        QList<SIAImage *> none{nullptr};
        QVERIFY(!findMatchingImageFromList(none, &wanted, false));
        QVERIFY(!findMatchingImageFromList(images, nullptr, false));
        using Pair = std::pair<const sIASetupInfo *, const sIASetupInfo *>;
        for (const auto &[a, b] : {Pair(&wanted, nullptr), Pair(nullptr, &wanted)}) // every rule refuses a missing side
            QVERIFY(!isLuminParametersMatched(a, b, false) && !isLuminParametersMatched(a, b, true)
                    && !isPhotoParametersMatched(a, b) && !isXrayParametersMatched(a, b));

        SIAImageInfo p1(wanted, "p1"), p2(wanted, "p2"), x;
        x.setup.xrayTubeVoltage = 35;
        x.setup.photoBinning = 2;
        QList<SIAImageInfo *> infos{&p1, &p2, &x};
        QCOMPARE(findMatchingPhotoFromList(infos, &wanted)->name, QString("p2"));
        QCOMPARE(findMatchingXrayFromList(infos, &wanted)->name, QString("p2"));
        wanted.xrayTubeVoltage = 35;
        QCOMPARE(findMatchingXrayFromList(infos, &wanted), &x);
    }

    void pruningSearch()
    {
        CountedInfo::deleted = 0;
        sIASetupInfo wanted;
        wanted.exposureTime = 5;
        SIAImageInfo *staleFront = new CountedInfo(7200, 5), *match = new CountedInfo(3590, 5),
                     *freshOther = new CountedInfo(0, 9);
        QList<SIAImageInfo *> list{staleFront, match, new CountedInfo(3610, 5), freshOther};
        QCOMPARE(findMatchingImageFromList2(list, &wanted, false), match);
        // The stale match behind was pruned; the stale one in front was not visited.
        QCOMPARE(list, (QList<SIAImageInfo *>{staleFront, match, freshOther}));
        QCOMPARE(CountedInfo::deleted, 1);
        qDeleteAll(list);

        CountedInfo::deleted = 0;
        list = {new CountedInfo(3700, 5), nullptr, new CountedInfo(86400, 5), new CountedInfo(3610, 5)}; // null entries go too
        QVERIFY(!findMatchingImageFromList2(list, &wanted, false));
        QVERIFY(list.isEmpty());
        QCOMPARE(CountedInfo::deleted, 3);
    }

    void fluorescentReferenceFromSections()
    {
        CPLSection a("a"), b("b"), c("c");
        for (CPLSection *s : {&a, &b, &c})
            for (auto kv : {std::pair("fov", "12.5"), {"binning factor", "4"}, {"excitation filter", "GFP"},
                            {"emission filter", "whatever"}})
                s->setValue(kv.first, kv.second);
        c.setValue("Imaging Angle", "90");
        sIASetupInfo wanted;
        wanted.fov = 12.5;
        wanted.binningFactor = 4;
        wanted.excitationFilter = "gfp";
        QList<CPLSection *> list{&a, &b, &c};
        QCOMPARE(findMatchingFluorescentReferenceImageFromList(list, &wanted, true), &b);
        wanted.binningFactor = 8;
        QVERIFY(!findMatchingFluorescentReferenceImageFromList(list, &wanted, true));
        QCOMPARE(findMatchingFluorescentReferenceImageFromList(list, &wanted, false), &b);
        // A missing level reads as the default "High", which the wanted set-up has.
        wanted.fluorescenceLevel = "Low";
        QVERIFY(!findMatchingFluorescentReferenceImageFromList(list, &wanted, false));
    }

    void mostRecent_data()
    {
        // offsets: seconds from now, per section; days -1: background search (48 h); expected: index, -1 for none.
        QTest::addColumn<QList<qint64>>("offsets"); QTest::addColumn<int>("days"); QTest::addColumn<int>("expected");
        const qint64 h = 3600;
        QTest::newRow("youngest wins") << QList<qint64>{-10 * h, -2 * h, -20 * h} << -1 << 1;
        QTest::newRow("equal ages: later wins") << QList<qint64>{-2 * h, -2 * h, -5 * h} << -1 << 1;
        QTest::newRow("future wins over past") << QList<qint64>{-60, h, -120} << -1 << 1;
        QTest::newRow("47.9 h qualifies") << QList<qint64>{-47 * h - 54 * 60} << -1 << 0;
        QTest::newRow("48.1 h is too old") << QList<qint64>{-48 * h - 6 * 60} << -1 << -1;
        QTest::newRow("empty") << QList<qint64>{} << -1 << -1;
        QTest::newRow("0 days: only future") << QList<qint64>{-60, 2 * h, -1} << 0 << 1;
        QTest::newRow("0 days: past is too old") << QList<qint64>{-60} << 0 << -1;
        QTest::newRow("2 days") << QList<qint64>{-47 * h, -49 * h} << 2 << 0;
    }

    void mostRecent()
    {
        QFETCH(QList<qint64>, offsets); QFETCH(int, days); QFETCH(int, expected);
        QList<CPLSection *> list;
        for (const qint64 offset : offsets)
            list.append(new CPLSection(stampAt(offset)));
        CPLSection *found = days < 0 ? findMostRecentBkgInfo(list) : findMostRecentXRayRefInfo(list, days);
        QCOMPARE(found, expected < 0 ? nullptr : list.at(expected));
        qDeleteAll(list);
    }

    void matchingBackground_data()
    {
        QTest::addColumn<QString>("exposure"); QTest::addColumn<double>("wanted"); QTest::addColumn<bool>("matches");
        QTest::newRow("60 sec") << "60 sec" << 60.0 << true;
        QTest::newRow("59 sec") << "59 sec" << 60.0 << false;
        QTest::newRow("no unit reads as 0") << "0.5" << 0.5 << false;
        QTest::newRow("no unit matches 0") << "0.5" << 0.0 << true;
        for (const char *unreadable : {"", "abc sec", "1e999 sec"}) // read as 0
            QTest::addRow("unreadable '%s'", unreadable) << unreadable << 0.0 << true;
        QTest::newRow("at 1e-5") << "0.00001 sec" << 0.0 << true;
        QTest::newRow("past 1e-5") << "0.0000101 sec" << 0.0 << false;
    }

    void matchingBackground()
    {
        QFETCH(QString, exposure); QFETCH(double, wanted); QFETCH(bool, matches);
        sIASetupInfo setup;
        setup.exposureTime = wanted;
        setup.demandTemperature = " -90 ";
        CPLSection recent(stampAt(-3600)), old(stampAt(-49 * 3600)), other(stampAt(-60));
        for (CPLSection *s : {&recent, &old, &other}) {
            s->setValue("Exposure Time", exposure);
            s->setValue("Demand Temperature", "-90");
        }
        other.setValue("Binning Factor", "2");
        QList<CPLSection *> list{&other, &old, &recent};
        QCOMPARE(getMatchingBkgImageSection(list, &setup), matches ? &recent : nullptr);
        QVERIFY(!getMatchingBkgImageSection({&old}, &setup));
        setup.demandTemperature = "-80";
        QVERIFY(!getMatchingBkgImageSection(list, &setup));
    }

    void darkBackgroundThreshold()
    {
        QVERIFY(ZOA_CheckIfDarkBkgNeeded(1, 1, 0.00075f));
        QVERIFY(!ZOA_CheckIfDarkBkgNeeded(1, 2, 0.002f)); // 0.0005
        QVERIFY(!ZOA_CheckIfDarkBkgNeeded(1, 1, 0.00074f)); // the float lies just below the double threshold
        QVERIFY(ZOA_CheckIfDarkBkgNeeded(-1, 1, 0.00075f));
        QVERIFY(ZOA_CheckIfDarkBkgNeeded(1, 0, 0.001f)); // infinite ratio
        QVERIFY(!ZOA_CheckIfDarkBkgNeeded(0, 0, 1.0f));  // NaN ratio
    }

    void copiesShareTheImage()
    {
        sIASetupInfo s;
        s.exposureTime = 3;
        auto *image = new CILImage(2, 2);
        SIAImage a(s, image);
        CILImage kept(1, 1);
        SIAImage c(sIASetupInfo(), &kept);
        c = a; // takes set-up and image; does not delete the image it held before
        QVERIFY(c.image == image && c.setup.exposureTime == 3.0);
        QCOMPARE(kept.getWidth(), 1);
        c.image = nullptr; // `a` alone deletes the shared image
    }

private:
    Records readBack(const QByteArray &bytes)
    {
        const QString path = m_dir.filePath("read.txt");
        if (!writeFile(path, bytes))
            return {SAutoBkgListInfo("not written", "", "", "")};
        Records records;
        return readInfoFromAutoBkgList(path, records) == ES_SUCCESS ? records : Records{SAutoBkgListInfo("failed", "", "", "")};
    }
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestAcquisition)
#include "tst_acquisition.moc"
