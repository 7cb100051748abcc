#include "clickinfoconstruction.h"
#include "cplcamerainfo.h"
#include "cplclickinfo.h"
#include "cplsection.h"
#include "cplsequenceinfo.h"
#include "czopreference.h"
#include "siasetupinfo.h"
#include "testfiles.h"

#include <QtTest>

class TestClickInfoConstruction : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { useDataRoot(m_dir.path()), CZOPreference::setAppVersion(QStringLiteral("4.7.2.1234")); }

    void clickAndSequenceNumbers()
    {
        CPLClickInfo complete;
        QCOMPARE(int(createNewClickInfo(&complete, "JD20260101120000", true)), 0);
        QCOMPARE(complete.getClickNumber(), QString("JD20260101120000"));
        QCOMPARE(complete.getSection("ClickNumber")->value("Zolvane Version"), QString("4.7.2.1234"));
        QCOMPARE(complete.getSection("ClickNumber")->value("Complete ClickNumber"), QString("1"));
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

private:
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestClickInfoConstruction)
#include "tst_clickinfoconstruction.moc"
