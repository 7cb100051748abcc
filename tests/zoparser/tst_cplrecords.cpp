#include "cplcamerainfo.h"
#include "cplclickinfo.h"
#include "cpllabeldataset.h"
#include "cplpreferencekey.h"
#include "cplpreferencekeylist.h"
#include "cplsection.h"
#include "cplsequenceinfo.h"
#include "cplsettingsfilewrapper.h"
#include "siasetupinfo.h"

#include <QDateTime>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include "testfiles.h"

#include <QtTest>

Q_DECLARE_METATYPE(tag_estatus)

namespace QTest {
template<> char *toString(const tag_estatus &status) { return qstrdup(QByteArray::number(int(status))); }
} // namespace QTest

namespace {

bool sameSections(const CPLSectionList &a, const CPLSectionList &b)
{
    if (a.sectionCount() != b.sectionCount())
        return false;
    for (int i = 0; i < a.sectionCount(); ++i)
        if (*a.sections().at(i) != *b.sections().at(i))
            return false;
    return true;
}

} // namespace

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
        const QList<QPair<tag_eimagetype, int>> kinds{{IT_LUMINESCENT, 20}, {IT_PHOTOGRAPH, 15}, {IT_XRAY, 16}};
        for (const auto &kind : kinds) {
            CPLSection written(QStringLiteral("image")), defaults(QStringLiteral("image")), again(QStringLiteral("image"));
            QCOMPARE(s.writeToSection(&written, kind.first), ES_SUCCESS);
            sIASetupInfo().writeToSection(&defaults, kind.first);
            QCOMPARE(written.count(), kind.second);
            QCOMPARE(written.keys(), defaults.keys());
            for (const QString &key : written.keys())
                QVERIFY2(written.value(key) != defaults.value(key), qPrintable(key));
            QString text;
            written.saveSectionData(text);
            std::unique_ptr<CPLSection> back(CPLClickInfo::parseSectionFromBuffer(text));
            sIASetupInfo r;
            QCOMPARE(r.readFromSection(*back, kind.first), ES_SUCCESS);
            r.writeToSection(&again, kind.first);
            QCOMPARE(again, written);
            // A key that does not parse is reported; the others are still read.
            back->setValue(QStringLiteral("Field of View"), QStringLiteral("wide"));
            sIASetupInfo bad;
            QCOMPARE(bad.readFromSection(*back, kind.first), ES_INVALID_DATA_TYPE);
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
        for (char &c : garbage)
            c = char(QRandomGenerator::global()->bounded(256));
        QTest::newRow("binary") << "click" << garbage << ES_FORMAT_CHAR_NOT_FOUND << 0;
        QTest::newRow("50 MB of garbage") << "settings" << a + QByteArray(50 << 20, 'x') << ES_FORMAT_CHAR_NOT_FOUND << 1;
        QTest::newRow("sequence short of click numbers")
            << "sequence" << QByteArray("*** Sequence:\nClickNumbers in Sequence:\t2\nClickNumber 1:\tA\n")
            << ES_CORRUPT_FILE << -1;
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

private:
    QTemporaryDir m_root;
    QString m_dir;
};

QTEST_GUILESS_MAIN(TestCPLRecords)
#include "tst_cplrecords.moc"
