#include "cilimage.h"
#include "cplsection.h"
#include "setupmatching.h"

#include <QtTest>

#include <cmath>
#include <functional>

namespace {

const double NaN = std::nan("");

using Change = std::function<void(sIASetupInfo &)>;

QString stampAt(qint64 secondsFromNow)
{
    return QDateTime::currentDateTime().addSecs(secondsFromNow).toString("yyyyMMddhhmmss");
}

// Counts deletions, to see what the pruning search deletes.
struct CountedInfo : SIAImageInfo {
    static int deleted;
    explicit CountedInfo(qint64 ageSeconds, double exposure = 0)
    {
        setup.timeStamp = QDateTime::currentSecsSinceEpoch() - ageSeconds;
        setup.exposureTime = exposure;
    }
    ~CountedInfo() override { ++deleted; }
};
int CountedInfo::deleted = 0;

} // namespace

Q_DECLARE_METATYPE(Change)

class TestSetupMatching : public QObject
{
    Q_OBJECT
private slots:
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
        QTest::addColumn<QString>("exposureText"); QTest::addColumn<double>("wantedExposure");
        QTest::addColumn<bool>("matches");
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
        QFETCH(QString, exposureText); QFETCH(double, wantedExposure); QFETCH(bool, matches);
        sIASetupInfo wanted;
        wanted.exposureTime = wantedExposure;
        wanted.demandTemperature = " -90 ";
        CPLSection recent(stampAt(-3600)), old(stampAt(-49 * 3600)), other(stampAt(-60));
        for (CPLSection *s : {&recent, &old, &other}) {
            s->setValue("Exposure Time", exposureText);
            s->setValue("Demand Temperature", "-90");
        }
        other.setValue("Binning Factor", "2");
        QList<CPLSection *> list{&other, &old, &recent};
        QCOMPARE(getMatchingBkgImageSection(list, &wanted), matches ? &recent : nullptr);
        QVERIFY(!getMatchingBkgImageSection({&old}, &wanted));
        wanted.demandTemperature = "-80";
        QVERIFY(!getMatchingBkgImageSection(list, &wanted));
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
};

QTEST_GUILESS_MAIN(TestSetupMatching)
#include "tst_setupmatching.moc"
