#include "cplcamerainfo.h"
#include "cplclickinfo.h"
#include "cpllabeldataset.h"
#include "cplpreferencekey.h"
#include "cplpreferencekeylist.h"
#include "cplsection.h"
#include "cplsequenceinfo.h"
#include "cplsettingsfilewrapper.h"
#include "siasetupinfo.h"
#include "testfiles.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

Q_DECLARE_METATYPE(tag_estatus)

template<> char *QTest::toString(const tag_estatus &status) { return qstrdup(QByteArray::number(int(status))); }

static bool sameSections(const CPLSectionList &a, const CPLSectionList &b)
{
    return std::equal(a.sections().begin(), a.sections().end(), b.sections().begin(), b.sections().end(),
                      [](const CPLSection *x, const CPLSection *y) { return *x == *y; });
}

class TestCPLRecords : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useDataRoot(m_root.path()); }

    void init()
    {
        static int n = 0;
        m_dir = m_root.filePath(QString::number(++n));
        QVERIFY(QDir().mkpath(m_dir));
    }

    void clickInfoRoundTrip()
    {
        CPLClickInfo info;
        info.setClickNumber(QStringLiteral("AB20260101120000"));
        QCOMPARE(info.addTiffClickNumberSection(1, false, QStringLiteral("4.7.2")), ES_SUCCESS);
        QCOMPARE(info.appendUserSpecificSections(CPLClickInfo::UserInputSection), ES_SUCCESS);
        QCOMPARE(info.appendAnalysisUserInputSection(), ES_SUCCESS);
        sIASetupInfo setup;
        setup.exposureTime = 60;
        setup.demandTemperature = QStringLiteral("-90");
        QCOMPARE(info.addImageSection(QStringLiteral("luminescent.TIF"), QString(), IT_LUMINESCENT, &setup, false), ES_SUCCESS);
        QCOMPARE(info.addImageSection(QStringLiteral("photograph.TIF"), QStringLiteral("note"), IT_PHOTOGRAPH, &setup, false), ES_SUCCESS);
        auto *camera = new CPLSection(QStringLiteral("Camera System Info"));
        camera->setValue(QStringLiteral("Shelf Position A FF5 f/2 Coefs"), QStringLiteral("1.0,0.0,0.0"));
        camera->setValue(QStringLiteral("Defect Map"), QStringLiteral("12 40\n13 41"));
        QCOMPARE(info.addSection(camera), ES_SUCCESS);
        info.getSection(QStringLiteral("User Input"))->setValue(QStringLiteral("Group"), QStringLiteral("Study: 4\tB"));

        const QString path = m_dir + QStringLiteral("/ClickInfo.txt");
        QCOMPARE(info.saveClickInfo(path), ES_SUCCESS);
        const QByteArray bytes = readFile(path);
        QVERIFY(bytes.startsWith("*** ClickNumber:\r\n"));
        QCOMPARE(bytes.count('\n'), bytes.count("\r\n"));

        CPLClickInfo back;
        QCOMPARE(back.loadClickInfo(path), ES_SUCCESS);
        QCOMPARE(back.getClickNumber(), info.getClickNumber());
        QVERIFY(sameSections(back, info));
        QCOMPARE(back.sections().at(3)->name(), QStringLiteral("luminescent image"));

        // Background search reads these keys from an image section.
        const CPLSection *lumin = back.getSection(QStringLiteral("luminescent image"));
        QCOMPARE(lumin->value(QStringLiteral("Exposure Time")), QStringLiteral("60 sec"));
        QCOMPARE(lumin->value(QStringLiteral("Demand Temperature")), QStringLiteral("-90"));
        QCOMPARE(back.getSection(QStringLiteral("User Input"))->keys().size(), 16);

        // Copies are deep.
        CPLClickInfo copy = back;
        copy.getSection(QStringLiteral("Camera System Info"))->setValue(QStringLiteral("x"), QStringLiteral("y"));
        QVERIFY(!back.getSection(QStringLiteral("Camera System Info"))->hasKey(QStringLiteral("x")));
    }

    void clickInfoBuildersReportBadArguments()
    {
        CPLClickInfo info;
        QCOMPARE(info.addTiffClickNumberSection(1, true, QString()), ES_NO_CLICKNUMBERS);
        sIASetupInfo setup;
        QCOMPARE(info.addImageSection(QStringLiteral("a.TIF"), QString(), IT_LUMINESCENT, nullptr, true), ES_INVALID_POINTER);
        QCOMPARE(info.addImageSection(QStringLiteral("a.TIF"), QString(), tag_eimagetype(IT_IMAGETYPE_COUNT), &setup, true), ES_WRONG_IMAGE_TYPE);
        QCOMPARE(info.addImageSection(QStringLiteral("a.TIF"), QString(), IT_XRAY, &setup, false), ES_SUCCESS);
        QCOMPARE(info.addImageSection(QStringLiteral("b.TIF"), QString(), IT_XRAY, &setup, false), ES_ALREADY_PRESENT);
        QCOMPARE(info.getSection(QStringLiteral("x-ray image"))->value(QStringLiteral("File Name")), QStringLiteral("a.TIF"));
        QCOMPARE(info.addImageSection(QStringLiteral("b.TIF"), QString(), IT_XRAY, &setup, true), ES_SUCCESS);
        QCOMPARE(info.getSection(QStringLiteral("x-ray image"))->value(QStringLiteral("File Name")), QStringLiteral("b.TIF"));
        QCOMPARE(info.appendUserSpecificSections(0x2), ES_INVALID_INPUT);
        QCOMPARE(info.sectionCount(), 1);
        QCOMPARE(info.addSection(nullptr), ES_INVALID_POINTER);
    }

    void addSectionReplacesByName()
    {
        CPLSequenceInfo list;
        list.addSection(new CPLSection(QStringLiteral("A")));
        list.addSection(new CPLSection(QStringLiteral("B")));
        auto *newer = new CPLSection(QStringLiteral("A"));
        newer->setValue(QStringLiteral("k"), QStringLiteral("v"));
        QCOMPARE(list.addSection(newer), ES_SUCCESS);
        QCOMPARE(list.sectionCount(), 2);
        QCOMPARE(list.sections().first(), newer);
        QCOMPARE(list.addSection(newer), ES_SUCCESS); // already held: kept, not deleted
        QCOMPARE(list.getSection(QStringLiteral("A"))->value(QStringLiteral("k")), QStringLiteral("v"));
        QVERIFY(list.removeSection(QStringLiteral("A")));
        QCOMPARE(list.getSection(QStringLiteral("A")), nullptr);
    }

    void sequenceRoundTrip()
    {
        for (const QStringList &clicks : {QStringList(), QStringList{"AB20260101120000", "AB20260101120100", "odd: name"}}) {
            CPLSequenceInfo seq;
            seq.addClickNumber(QStringLiteral("dropped"));
            seq.clearSequenceList();
            for (const QString &c : clicks)
                QCOMPARE(seq.addClickNumber(c), ES_SUCCESS);
            QCOMPARE(seq.addClickNumber(QString()), ES_INVALID_INPUT);
            QCOMPARE(seq.addSequenceNumberSection(QStringLiteral("4.7.2")), ES_SUCCESS);
            QCOMPARE(seq.appendUserSpecificSections(1), ES_SUCCESS);
            QCOMPARE(seq.sectionCount(), 2);
            const QString path = m_dir + QStringLiteral("/SequenceInfo.txt");
            QCOMPARE(seq.saveSequenceInfo(path), ES_SUCCESS);
            CPLSequenceInfo back;
            back.addClickNumber(QStringLiteral("stale"));
            back.addSection(new CPLSection(QStringLiteral("stale")));
            QCOMPARE(back.loadSequenceInfo(path), ES_SUCCESS);
            QCOMPARE(back.getClickNumbers(), clicks);
            QVERIFY(sameSections(back, seq));
        }
    }

    void settingsTypedReads()
    {
        const QString path = m_dir + QStringLiteral("/AB.txt");
        QVERIFY(writeFile(path, "*** User Input:\t(User Profile)\r\n\r\n*** View:\r\nSize:\t8\r\nOn:\t1\r\nScale:\t0.25\r\n\r\n"));
        CPLSettingsFileWrapper prefs;
        QCOMPARE(prefs.load(path), ES_SUCCESS);
        QCOMPARE(prefs.getSection(QStringLiteral("User Input"))->comment(), QStringLiteral("(User Profile)"));
        int size = 0, untouched = 5;
        bool on = false;
        double scale = 0;
        QString text;
        QVERIFY(prefs.getIntValue("View", "Size", size) == ES_SUCCESS && size == 8);
        QVERIFY(prefs.getBoolValue("View", "On", on) == ES_SUCCESS && on);
        QVERIFY(prefs.getDoubleValue("View", "Scale", scale) == ES_SUCCESS && scale == 0.25);
        QVERIFY(prefs.getValue("View", "Size", text) == ES_SUCCESS && text == "8");
        QCOMPARE(prefs.getIntValue("View", "Scale", untouched), ES_INVALID_DATA_TYPE);
        QCOMPARE(prefs.getIntValue("No Such Section", "Size", untouched), ES_SECTION_KEY_NOT_FOUND);
        prefs.clear();
        QVERIFY(prefs.getIntValue("View", "Size", untouched) == ES_SECTION_KEY_NOT_FOUND && untouched == 5);
    }

    void labelSetAndKeyListRoundTrip()
    {
        const QStringList labels{"User", "Group", "Comment: free"};
        CPLLabelDataSet set(QStringLiteral("Zolvane Universal"), labels);
        QString text;
        QCOMPARE(set.saveData(text), ES_SUCCESS);
        CPLLabelDataSet setBack;
        QCOMPARE(setBack.loadData(text), ES_SUCCESS);
        QCOMPARE(setBack.name(), set.name());
        QStringList names;
        QCOMPARE(setBack.getLabelData(&names), ES_SUCCESS);
        QCOMPARE(names, labels);
        QCOMPARE(setBack.getLabelData(nullptr), ES_INVALID_POINTER);

        CPLPreferenceKeyList keys(labels.size());
        keys[0]->setValue(QStringLiteral("AB"));
        keys[2]->setValue(QStringLiteral("two\nlines"));
        QString block;
        QCOMPARE(keys.saveData(&set, &block), ES_SUCCESS);
        QVERIFY(block.startsWith(QStringLiteral("*** User Label Name Set:\tZolvane Universal\r\n")));
        QCOMPARE(keys.saveData(nullptr, &block), ES_INVALID_POINTER);

        // The profile reader drops the header line before handing the block over.
        const QString body = block.mid(block.indexOf(QLatin1Char('\n')) + 1);
        for (const QString &given : {body, block}) {
            CPLPreferenceKeyList back;
            QCOMPARE(back.loadData(given, labels), ES_SUCCESS);
            QCOMPARE(back.count(), 3);
            for (int i = 0; i < 3; ++i)
                QCOMPARE(*back[i], CPLPreferenceKey(labels.at(i), keys[i]->value()));
        }

        // A label set block must start with its header.
        QCOMPARE(setBack.loadData(body), ES_FORMAT_CHAR_NOT_FOUND);
        QCOMPARE(setBack.loadData(QStringLiteral("*** Other:\nUser:\t\n")), ES_HEADER_NOT_FOUND);
        QCOMPARE(setBack.name(), set.name());
    }

    // Every member set away from its default must come back, for each kind of image.
    void setupRoundTripPerKind()
    {
        sIASetupInfo s;
        s.exposureTime = 0.1, s.photoExposureTime = 0.02, s.xrayExposureTime = 3.5, s.fov = 12.6, s.imagingAngle = -22.5;
        s.xrayTubeVoltage = 35.5, s.xrayTubeCurrent = 80, s.subjectHeight = 2.25, s.ccdTemperature = -89.5, s.zoomFactor = 1.25f;
        s.binningFactor = 8, s.photoBinning = 2, s.xrayBinning = 4, s.timeStamp = Q_INT64_C(5000000000); // past 2038
        for (QString *text : {&s.demandTemperature, &s.excitationFilter, &s.emissionFilter, &s.fluorescenceLevel,
                              &s.lumFStop, &s.lumBinningType, &s.lumExposureMode, &s.exposureUnits, &s.emGain,
                              &s.positionName, &s.doorLock, &s.focusMode, &s.stageHeight, &s.photoFStop,
                              &s.photoBinningType, &s.photoExposureMode, &s.xrayFStop, &s.xrayTubeFilter})
            *text = QStringLiteral("x ") + *text;
        for (const auto &[type, keyCount] : {std::pair(IT_LUMINESCENT, 20), {IT_PHOTOGRAPH, 15}, {IT_XRAY, 16}}) {
            CPLSection written(QStringLiteral("image")), defaults(QStringLiteral("image")), again(QStringLiteral("image"));
            QCOMPARE(s.writeToSection(&written, type), ES_SUCCESS);
            sIASetupInfo().writeToSection(&defaults, type);
            QCOMPARE(written.count(), keyCount);
            QCOMPARE(written.keys(), defaults.keys());
            for (const QString &key : written.keys())
                QVERIFY2(written.value(key) != defaults.value(key), qPrintable(key));
            QString text;
            written.saveSectionData(text);
            std::unique_ptr<CPLSection> back(CPLClickInfo::parseSectionFromBuffer(text));
            sIASetupInfo r;
            QCOMPARE(r.readFromSection(*back, type), ES_SUCCESS);
            r.writeToSection(&again, type);
            QCOMPARE(again, written);
            // A key that does not parse is reported; the others are still read.
            back->setValue(QStringLiteral("Field of View"), QStringLiteral("wide"));
            sIASetupInfo bad;
            QCOMPARE(bad.readFromSection(*back, type), ES_INVALID_DATA_TYPE);
            QVERIFY(bad.fov == sIASetupInfo().fov && bad.ccdTemperature == s.ccdTemperature);
        }
        QCOMPARE(s.writeToSection(nullptr, IT_LUMINESCENT), ES_INVALID_POINTER);
    }

    void badFiles_data()
    {
        QTest::addColumn<QString>("kind"); QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<tag_estatus>("status"); QTest::addColumn<int>("sectionsKept");
        const QByteArray a("*** A:\r\nk:\tv\r\n\r\n");
        QTest::newRow("empty") << "click" << QByteArray() << ES_NO_CLICKINFO_SECTIONS << 0;
        QTest::newRow("truncated in a key") << "click" << a + "*** B:\r\nExposure Ti" << ES_FORMAT_CHAR_NOT_FOUND << 1;
        QTest::newRow("truncated in a value") << "click" << a + "*** B:\r\nExposure Time:\t6" << ES_SUCCESS << 2;
        QTest::newRow("Latin-1 bytes") << "click" << QByteArray("*** A:\nT:\t-90 \xb0" "C\n") << ES_SUCCESS << 1;
        QByteArray garbage(4096, '\0');
        // A fixed seed: about one draw in two hundred is refused for another reason (no section at all).
        std::generate(garbage.begin(), garbage.end(), [r = QRandomGenerator(7)]() mutable { return char(r.bounded(256)); });
        QTest::newRow("binary") << "click" << garbage << ES_FORMAT_CHAR_NOT_FOUND << 0;
        QTest::newRow("50 MB of garbage") << "settings" << a + QByteArray(50 << 20, 'x') << ES_FORMAT_CHAR_NOT_FOUND << 1;
        QTest::newRow("sequence short of click numbers") << "sequence"
            << QByteArray("*** Sequence:\nClickNumbers in Sequence:\t2\nClickNumber 1:\tA\n") << ES_CORRUPT_FILE << -1;
        QTest::newRow("sequence of blank lines") << "sequence" << QByteArray("\r\n\r\n") << ES_NO_SEQINFO_SECTIONS << -1;
        QTest::newRow("camera section missing")
            << "camera" << QByteArray("*** Other:\nx:\t1\n") << ES_SYSTEM_CONFIG_NOT_FOUND << 1;
        QTest::newRow("camera section found") << "camera"
            << QByteArray("*** Other:\nx:\t1\n\n*** Camera System Info:\nCamera System Info:\tiKon\n") << ES_SUCCESS << 2;
    }

    void badFiles()
    {
        QFETCH(QString, kind); QFETCH(QByteArray, bytes); QFETCH(tag_estatus, status); QFETCH(int, sectionsKept);
        const QString path = m_dir + QStringLiteral("/ClickInfo.txt");
        QVERIFY(writeFile(path, bytes));
        if (kind == QLatin1String("sequence")) {
            CPLSequenceInfo seq;
            QCOMPARE(seq.loadSequenceInfo(path), status);
            QVERIFY(seq.getClickNumbers().isEmpty());
        } else if (kind == QLatin1String("camera")) {
            CPLCameraInfo camera;
            QCOMPARE(camera.loadCameraInfo(path), status);
            const CPLSection *system = camera.getCameraSystemInfoSection();
            QCOMPARE(system != nullptr, status == ES_SUCCESS);
            QVERIFY(!system || system->value(QStringLiteral("Camera System Info")) == QLatin1String("iKon"));
            QCOMPARE(camera.sectionCount(), sectionsKept);
        } else if (kind == QLatin1String("settings")) {
            CPLSettingsFileWrapper settings;
            QCOMPARE(settings.load(path), status);
            QCOMPARE(settings.sectionCount(), sectionsKept);
        } else {
            CPLClickInfo info;
            QCOMPARE(info.loadClickInfo(path), status);
            QCOMPARE(info.sectionCount(), sectionsKept);
            if (QTest::currentDataTag() == QByteArrayLiteral("Latin-1 bytes"))
                QCOMPARE(info.sections().first()->value(QStringLiteral("T")), QStringLiteral("-90 °C"));
            QCOMPARE(info.loadClickInfo(m_dir + QStringLiteral("/missing.txt")), ES_FILE_NOT_FOUND);
            QCOMPARE(info.loadClickInfo(m_dir), ES_OPEN_FAILED);
        }
    }

    void failedSaveLeavesFileAlone()
    {
        const QString path = m_dir + QStringLiteral("/ClickInfo.txt");
        QVERIFY(writeFile(path, "old"));
        CPLClickInfo info;
        info.addSection(new CPLSection(QStringLiteral("fine")));
        info.addSection(new CPLSection(QStringLiteral("two\nlines")));
        QCOMPARE(info.saveClickInfo(path), ES_INVALID_ARGUMENT);
        QCOMPARE(readFile(path), QByteArray("old"));
        QVERIFY(info.removeSection(QStringLiteral("two\nlines")));
        QCOMPARE(info.saveClickInfo(m_dir + QStringLiteral("/no/such/folder/ClickInfo.txt")), ES_OPEN_FAILED);
    }

    void typedReads_data()
    {
        QTest::addColumn<QString>("text"); QTest::addColumn<bool>("intOk"); QTest::addColumn<int>("intValue");
        QTest::addColumn<bool>("doubleOk"); QTest::addColumn<double>("doubleValue"); QTest::addColumn<bool>("boolOk");
        QTest::addColumn<bool>("boolValue");

        QTest::newRow("plain integer") << "42" << true << 42 << true << 42.0 << true << true;
        QTest::newRow("blanks around") << "  -7 " << true << -7 << true << -7.0 << true << true;
        QTest::newRow("zero is false") << "0" << true << 0 << true << 0.0 << true << false;
        QTest::newRow("decimal is not an int") << "2.5" << false << 0 << true << 2.5 << false << false;
        QTest::newRow("comma is not a decimal point") << "2,5" << false << 0 << false << 0.0 << false << false;
        QTest::newRow("unit suffix") << "60 sec" << false << 0 << false << 0.0 << false << false;
        QTest::newRow("int overflow") << "3000000000" << false << 0 << true << 3e9 << false << false;
        QTest::newRow("empty") << "" << false << 0 << false << 0.0 << false << false;
        QTest::newRow("Yes") << "Yes" << false << 0 << false << 0.0 << true << true;
    }

    void typedReads()
    {
        QFETCH(QString, text); QFETCH(bool, intOk); QFETCH(int, intValue); QFETCH(bool, doubleOk);
        QFETCH(double, doubleValue); QFETCH(bool, boolOk); QFETCH(bool, boolValue);

        CPLSection s(QStringLiteral("S"));
        QCOMPARE(s.setValue(QStringLiteral("k"), text), ES_SUCCESS);

        // Failed reads leave the caller's default in place.
        int i = 99;
        QCOMPARE(s.getIntValue(QStringLiteral("k"), i), intOk ? ES_SUCCESS : ES_INVALID_DATA_TYPE);
        QCOMPARE(i, intOk ? intValue : 99);
        double d = 99;
        QCOMPARE(s.getDoubleValue(QStringLiteral("k"), d), doubleOk ? ES_SUCCESS : ES_INVALID_DATA_TYPE);
        QCOMPARE(d, doubleOk ? doubleValue : 99.0);
        bool b = !boolValue;
        QCOMPARE(s.getBoolValue(QStringLiteral("k"), b), boolOk ? ES_SUCCESS : ES_INVALID_DATA_TYPE);
        QVERIFY(!boolOk || b == boolValue);

        // A missing key is its own failure, for every type.
        QString t = QStringLiteral("kept");
        QCOMPARE(s.getValue(QStringLiteral("K"), t), ES_SECTION_KEY_NOT_FOUND);
        QCOMPARE(t, QStringLiteral("kept"));
        QCOMPARE(s.getDoubleValue(QStringLiteral("missing"), d), ES_SECTION_KEY_NOT_FOUND);
        QCOMPARE(s.getBoolValue(QStringLiteral("missing"), b), ES_SECTION_KEY_NOT_FOUND);
    }

    void doubleRoundTrip_data()
    {
        QTest::addColumn<double>("value");
        QTest::newRow("negative zero") << -0.0;
        QTest::newRow("denormal") << std::numeric_limits<double>::denorm_min();
        QTest::newRow("needs 17 digits") << 0.30000000000000004;
        QTest::newRow("infinity") << std::numeric_limits<double>::infinity();
        QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN();
    }

    void doubleRoundTrip()
    {
        QFETCH(double, value);
        CPLSection s(QStringLiteral("S"));
        QCOMPARE(s.setDoubleValue(QStringLiteral("v"), value), ES_SUCCESS);

        QString text;
        QCOMPARE(s.saveSectionData(text), ES_SUCCESS);
        std::unique_ptr<CPLSection> back(CPLClickInfo::parseSectionFromBuffer(text));
        QVERIFY(back);
        double read = 0;
        QCOMPARE(back->getDoubleValue(QStringLiteral("v"), read), ES_SUCCESS);
        // Bit-exact, sign of zero included; any NaN stands for NaN.
        QVERIFY(std::isnan(value) ? std::isnan(read) : std::memcmp(&read, &value, sizeof value) == 0);
    }

    void writesKeepOrderAndReplaceInPlace()
    {
        CPLSection s(QStringLiteral("S"));
        for (const auto &[key, value] : {std::pair("b", "1"), {"a", "2"}, {"c", "3"}, {"a", "22"}})
            s.setValue(key, value);
        QCOMPARE(s.keys(), (QStringList{"b", "a", "c"}));
        QVERIFY(s != CPLSection(QStringLiteral("S")) && CPLSection(QStringLiteral("A")) != CPLSection(QStringLiteral("B")));
        // Large sections look keys up through an index: every key stays found across a removal.
        CPLSection big(QStringLiteral("Big"));
        for (int i = 0; i < 100; ++i)
            big.setValue(QString::number(i), QString::number(i * 7));
        QVERIFY(big.removeKey(QStringLiteral("50")) && !big.hasKey(QStringLiteral("50")));
        for (int i = 0; i < 100; ++i)
            QCOMPARE(big.value(QString::number(i)), i == 50 ? QString() : QString::number(i * 7));
        QCOMPARE(s.value(QStringLiteral("a")), QStringLiteral("22"));

        QVERIFY(s.removeKey(QStringLiteral("b")) && !s.removeKey(QStringLiteral("b"))); // there once only
        QCOMPARE(s.keys(), (QStringList{"a", "c"}));
        // Look-up still finds the keys that moved up.
        QCOMPARE(s.value(QStringLiteral("c")), QStringLiteral("3"));
        s.setValue(QStringLiteral("c"), QStringLiteral("33"));
        QCOMPARE(s.count(), 2);
        QCOMPARE(s.value(QStringLiteral("c")), QStringLiteral("33"));
    }

    void unstorableTextIsRefused_data()
    {
        QTest::addColumn<QString>("text"); QTest::addColumn<bool>("badName");
        QTest::newRow("line feed") << "a\nb" << true;
        QTest::newRow("carriage return") << "a\rb" << true;
        QTest::newRow("colon tab") << "a:\tb" << true;
        QTest::newRow("leading tab") << "\ta" << false;
        QTest::newRow("header prefix") << "*** a" << false;
    }

    void unstorableTextIsRefused()
    {
        QFETCH(QString, text); QFETCH(bool, badName);
        CPLSection s(QStringLiteral("S"));
        QCOMPARE(s.setValue(text, QStringLiteral("v")), ES_INVALID_ARGUMENT);
        QCOMPARE(s.count(), 0);

        // A name or comment that cannot be stored writes nothing at all.
        QString out = QStringLiteral("before");
        if (badName)
            QCOMPARE(CPLSection(text).saveSectionData(out), ES_INVALID_ARGUMENT);
        QCOMPARE(CPLSection(QString()).saveSectionData(out), ES_INVALID_ARGUMENT);
        if (text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r')))
            QCOMPARE(CPLSection(QStringLiteral("S"), text).saveSectionData(out), ES_INVALID_ARGUMENT);
        QCOMPARE(out, QStringLiteral("before"));
    }

    void parse_data()
    {
        // entries: "key=value" in the section's order
        QTest::addColumn<QString>("text"); QTest::addColumn<QString>("name"); QTest::addColumn<QString>("comment");
        QTest::addColumn<QStringList>("entries");

        const QStringList entries{"Exposure Time=60 sec", "Path=C:\\data: one"};
        QTest::newRow("CRLF") << "*** Camera:\r\nExposure Time:\t60 sec\r\nPath:\tC:\\data: one\r\n\r\n"
                              << "Camera" << "" << entries;
        QTest::newRow("CR alone") << "*** Camera:\rExposure Time:\t60 sec\rPath:\tC:\\data: one\r\r"
                                  << "Camera" << "" << entries;
        QTest::newRow("no final line end") << "*** Camera:\nExposure Time:\t60 sec\nPath:\tC:\\data: one"
                                           << "Camera" << "" << entries;
        QTest::newRow("header comment") << "*** User Input:\t(User Profile)\r\nUser ID:\tAB\r\n"
                                        << "User Input" << "(User Profile)" << QStringList{"User ID=AB"};
        QTest::newRow("colons in name and key") << "*** a:b::\nk:1::\t:v\n" << "a:b:" << "" << QStringList{"k:1:=:v"};
        QTest::newRow("empty value without tab")
            << "*** S:\nkey:\nother:\t\n" << "S" << "" << QStringList{"key=", "other="};
        QTest::newRow("first duplicate wins")
            << "*** S:\nk:\t1\nk:\t2\n\tmore\nj:\t3\n" << "S" << "" << QStringList{"k=1", "j=3"};
        QTest::newRow("keys almost headers")
            << "*** S:\n** k:\tv\nx** j:\tw\n*** T:\n" << "S" << "" << QStringList{"** k=v", "x** j=w"};
        QTest::newRow("continuation lines") << "*** S:\nk:\tone\r\n\ttwo\r\n\t\r\n\tfour\nj:\tx\n"
                                            << "S" << "" << QStringList{"k=one\ntwo\n\nfour", "j=x"};
    }

    void parse()
    {
        QFETCH(QString, text);
        tag_estatus status = ES_UNKNOWN_ERROR;
        std::unique_ptr<CPLSection> s(CPLClickInfo::parseSectionFromBuffer(text, &status));
        QCOMPARE(status, ES_SUCCESS);
        QVERIFY(s);
        QTEST(s->name(), "name");
        QTEST(s->comment(), "comment");
        QStringList entries;
        for (const QString &key : s->keys())
            entries << key + QLatin1Char('=') + s->value(key);
        QTEST(entries, "entries");
    }

    void badText_data()
    {
        QTest::addColumn<QString>("text"); QTest::addColumn<tag_estatus>("status");
        QTest::newRow("empty") << "" << ES_END_OF_BUFFER;
        QTest::newRow("header without colon") << "*** Camera\nk:\tv\n" << ES_FORMAT_CHAR_NOT_FOUND;
        QTest::newRow("header without name") << "*** :\nk:\tv\n" << ES_FORMAT_CHAR_NOT_FOUND;
        QTest::newRow("line without tab") << "*** S:\nk: v\n" << ES_FORMAT_CHAR_NOT_FOUND;
        QTest::newRow("text before header") << "hello\n*** S:\n" << ES_FORMAT_CHAR_NOT_FOUND;
        QTest::newRow("continuation before any key") << "*** S:\n\tv\n" << ES_FORMAT_CHAR_NOT_FOUND;
    }

    void badText()
    {
        QFETCH(QString, text); QFETCH(tag_estatus, status);
        tag_estatus got = ES_SUCCESS;
        QCOMPARE(CPLClickInfo::parseSectionFromBuffer(text, &got), nullptr);
        QCOMPARE(got, status);

        // copySectionBuffer refuses the same text and cuts nothing off a fault.
        QString buffer = text, section = QStringLiteral("stale");
        QCOMPARE(CPLClickInfo::copySectionBuffer(buffer, section), status);
        QVERIFY(section.isEmpty());
        if (status == ES_FORMAT_CHAR_NOT_FOUND)
            QCOMPARE(buffer, text);
    }

    void writeThenReadGivesSameSection_data()
    {
        QTest::addColumn<QString>("comment"); QTest::addColumn<QString>("value");
        QTest::newRow("plain") << "" << "60 sec";
        QTest::newRow("comment") << "(User Profile)" << "x";
        QTest::newRow("colon tab in value") << "" << "a:\tb";
        QTest::newRow("header-like value") << "" << "*** not a header";
        QTest::newRow("line breaks in value") << "" << "one\ntwo\n\n*** three\n";
        QTest::newRow("non-Latin text") << "Å" << "Temperatur −90 °C, 温度";
    }

    void writeThenReadGivesSameSection()
    {
        QFETCH(QString, comment); QFETCH(QString, value);
        CPLSection s(QStringLiteral("Camera System Info"), comment);
        s.setValue(QStringLiteral("first"), value);
        s.setValue(QStringLiteral("k:"), QStringLiteral("after"));
        s.setValue(QString(), QStringLiteral("empty key"));

        QString text;
        QCOMPARE(s.saveSectionData(text), ES_SUCCESS);
        QVERIFY(text.endsWith("\r\n\r\n") && !text.contains(QRegularExpression("[^\r]\n"))); // CRLF line ends only
        std::unique_ptr<CPLSection> back(CPLClickInfo::parseSectionFromBuffer(text));
        QVERIFY(back);
        QCOMPARE(*back, s);
    }
    // A profile's custom sections are cut off its text one at a time, from their header line on.
    void copySectionBufferCutsOneSection()
    {
        QString buffer = QStringLiteral("\r\n\r\n*** A:\tnote\r\nk:\t1\r\n\tmore\r\n\r\n*** B:\r\n"), text;
        QCOMPARE(CPLClickInfo::copySectionBuffer(buffer, text), ES_SUCCESS);
        QCOMPARE(text, QStringLiteral("*** A:\tnote\r\nk:\t1\r\n\tmore\r\n\r\n"));
        QCOMPARE(buffer, QStringLiteral("*** B:\r\n"));
    }

private:
    QTemporaryDir m_root;
    QString m_dir;
};

QTEST_GUILESS_MAIN(TestCPLRecords)
#include "tst_cplrecords.moc"
