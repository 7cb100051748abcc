#include "demoacquisition.h"

#include "autobkglist.h"
#include "ccdcorrections.h"
#include "cilimage.h"
#include "clickinfoconstruction.h"
#include "cplcamerainfo.h"
#include "cplclickinfo.h"
#include "cplsection.h"
#include "czoimagequeue.h"
#include "czoscsvparser.h"
#include "czoserrorhandler.h"
#include "czoslog.h"
#include "czopreference.h"
#include "generalutilities.h"
#include "setupmatching.h"
#include "siasetupinfo.h"
#include "zoconstants.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QtMath>

#include <memory>
#include <random>

namespace {

constexpr int kWidth = 512;
constexpr int kHeight = 512;
constexpr int kBiasFrames = 8;
constexpr quint16 kBiasCounts = 5000; // read bias 500 at data multiplier 10
constexpr double kReadNoise = 30.0;

QString statusText(tag_estatus status)
{
    return status == ES_SUCCESS ? QStringLiteral("ok") : QStringLiteral("status %1").arg(int(status));
}

// A bias frame: the electronic offset plus Gaussian read noise and a few hot pixels.
CILImage makeBiasFrame(std::mt19937 &rng)
{
    std::normal_distribution<double> noise(kBiasCounts, kReadNoise);
    CILImage frame(kWidth, kHeight);
    quint16 *p = frame.getPixels();
    for (int i = 0; i < kWidth * kHeight; ++i)
        p[i] = quint16(qBound(0.0, std::round(noise(rng)), 65535.0));
    for (int i = 0; i < 5; ++i)
        p[(i * 7919) % (kWidth * kHeight)] = 65535; // cosmic-ray hits, out of range
    frame.RefreshImageStats();
    return frame;
}

// The luminescent frame: a glowing spot on the bias, with the camera's bad column.
CILImage makeLuminescentFrame(std::mt19937 &rng, double brightness)
{
    std::normal_distribution<double> noise(0.0, kReadNoise);
    CILImage frame(kWidth, kHeight);
    quint16 *p = frame.getPixels();
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const double r2 = (x - 260.0) * (x - 260.0) + (y - 230.0) * (y - 230.0);
            const double signal = brightness * std::exp(-r2 / (2 * 45.0 * 45.0));
            p[y * kWidth + x] = quint16(qBound(0.0, kBiasCounts + signal + noise(rng), 65535.0));
        }
    }
    for (int y = 0; y < kHeight; ++y)
        p[y * kWidth + 311] = 65535; // bad column of the defect map
    p[200 * kWidth + 100] = 0;       // bad pixels of the defect map
    p[200 * kWidth + 101] = 65535;
    p[40 * kWidth + 300] = 65535;
    frame.RefreshImageStats();
    return frame;
}

// An earlier background's section, named by its date-time stamp.
CPLSection *backgroundSection(const QDateTime &when, const QString &exposure, int binning)
{
    auto *s = new CPLSection(when.toString(QStringLiteral("yyyyMMddHHmmss")));
    s->setValue(QStringLiteral("Date"), when.date().toString(Qt::ISODate));
    s->setValue(QStringLiteral("Time"), when.time().toString(Qt::ISODate));
    s->setValue(ZO_KEY_EXPOSURE_TIME, exposure);
    s->setIntValue(ZO_KEY_BINNING_FACTOR, binning);
    s->setValue(ZO_KEY_DEMAND_TEMPERATURE, QStringLiteral("-90"));
    return s;
}

} // namespace

DemoAcquisition::DemoAcquisition(const QString &outputFolder)
    : m_strOutput(outputFolder)
{
}

DemoResult DemoAcquisition::run(const std::function<void(int, const QString &)> &progress)
{
    DemoResult result;
    std::mt19937 rng(20261122);
    auto say = [&result](const QString &line) {
        result.report << line;
        ZOS_LOG(line, ZOS_LOG_INFORMATION);
    };
    auto fail = [&result](const QString &what, tag_estatus status) {
        result.ok = false;
        result.report << QStringLiteral("FAILED: %1 (%2)").arg(what, statusText(status));
        ZOS_LOG(what + CZOSErrorHandler::statusText(status), ZOS_LOG_ERROR);
    };

    // 1. The set-up of the acquisition and the camera configuration it runs on.
    progress(0, QStringLiteral("Reading the camera configuration"));
    const QString cameraPath = m_strOutput + QStringLiteral("/CameraInfo.txt");
    QFile::remove(cameraPath);
    QFile::copy(QStringLiteral(":/zodemo/CameraInfo.txt"), cameraPath);
    QFile::setPermissions(cameraPath, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    CPLCameraInfo camera;
    tag_estatus st = camera.loadCameraInfo(cameraPath);
    if (st != ES_SUCCESS || !camera.getCameraSystemInfoSection()) {
        fail(QStringLiteral("camera configuration"), st);
        return result;
    }
    result.files << cameraPath;
    sIASetupInfo setup;
    setup.exposureTime = 60.0;
    setup.binningFactor = 4;
    setup.demandTemperature = QStringLiteral("-90");
    setup.lumFStop = QStringLiteral("1");
    setup.fov = 12.5;
    say(QStringLiteral("set-up: luminescent, 60 s, binning 4, f/1, field of view 12.5 cm, CCD at -90 C"));

    // 2. Is there a background to reuse? Earlier backgrounds, oldest first.
    progress(1, QStringLiteral("Looking for a matching background"));
    const QDateTime now = QDateTime::currentDateTime();
    QList<CPLSection *> backgrounds{backgroundSection(now.addDays(-3), QStringLiteral("60 sec"), 4),
                                    backgroundSection(now.addSecs(-2 * 3600), QStringLiteral("60 sec"), 4),
                                    backgroundSection(now.addSecs(-3600), QStringLiteral("60 sec"), 8),
                                    backgroundSection(now.addSecs(-1800), QStringLiteral("30 sec"), 4)};
    CPLClickInfo bkgInfo;
    for (CPLSection *s : backgrounds)
        bkgInfo.addSection(new CPLSection(*s));
    const QString bkgPath = m_strOutput + QLatin1Char('/') + ZO_FILE_BKGINFO_TXT;
    if (bkgInfo.saveFile(bkgPath) == ES_SUCCESS)
        result.files << bkgPath;
    CPLSection *match = getMatchingBkgImageSection(backgrounds, &setup);
    say(match ? QStringLiteral("background: reuse %1 (2 hours old; the 3-day-old one is too old, the others differ)")
                    .arg(match->name())
              : QStringLiteral("background: none matches, a new one is needed"));
    const bool darkNeeded = ZOA_CheckIfDarkBkgNeeded(1, setup.binningFactor, float(setup.exposureTime / 600.0));
    say(QStringLiteral("dark background needed for this exposure: %1").arg(darkNeeded ? "yes" : "no"));
    qDeleteAll(backgrounds);

    // 3. Read noise: accumulate the in-range pixels of the bias frames.
    progress(2, QStringLiteral("Accumulating bias frames"));
    CILImage sum(kWidth, kHeight), count(kWidth, kHeight), mask(kWidth, kHeight);
    QVector<CILImage> biasFrames;
    const float lower = 300.0f * 10, upper = 800.0f * 10;
    for (int i = 0; i < kBiasFrames; ++i) {
        biasFrames.append(makeBiasFrame(rng));
        createReadSigmaImage(&biasFrames.last(), &sum, nullptr, &count, &mask, lower, upper, i);
    }
    // The caller turns the accumulation into a noise figure: the spread of the
    // frames around the accumulated mean.
    double sq = 0.0;
    qint64 n = 0;
    for (int y = 0; y < kHeight; y += 4) {
        for (int x = 0; x < kWidth; x += 4) {
            const int i = y * kWidth + x;
            const quint16 c = count.getPixels()[i];
            if (c < 2)
                continue;
            const double mean = double(sum.getPixels()[i]) / c;
            for (const CILImage &f : qAsConst(biasFrames)) {
                const double v = f.getPixels()[i];
                if (v > lower && v < upper) {
                    sq += (v - mean) * (v - mean);
                    ++n;
                }
            }
        }
    }
    const double readNoise = n > 0 ? std::sqrt(sq / n) : 0.0;
    say(QStringLiteral("read noise: %1 raw counts from %2 bias frames (mask keeps %3 of %4 pixels in the last frame)")
            .arg(readNoise, 0, 'f', 1)
            .arg(kBiasFrames)
            .arg(qint64(mask.getMean() * kWidth * kHeight + 0.5))
            .arg(kWidth * kHeight));

    // 4. Read bias of the click: measured from a clean bias frame.
    progress(3, QStringLiteral("Measuring the read bias"));
    CPLClickInfo clickInfo;
    st = createNewClickInfo(&clickInfo, QStringLiteral("DEM"), false);
    if (st != ES_SUCCESS) {
        fail(QStringLiteral("click info"), st);
        return result;
    }
    result.clickNumber = clickInfo.getClickNumber();
    addCameraInfoSection(&camera, &clickInfo);
    auto *readBias = new CPLSection(ZO_IMAGE_READBIAS_IMAGE);
    readBias->setValue(ZO_KEY_DATA_MULTIPLIER, QStringLiteral("10"));
    clickInfo.addSection(readBias);
    CILImage cleanBias(kWidth, kHeight);
    cleanBias.fill(kBiasCounts);
    float bias = 0.0f;
    st = measureReadBias(clickInfo, &cleanBias, &bias);
    if (st == ES_SUCCESS)
        say(QStringLiteral("read bias: %1 counts").arg(double(bias), 0, 'f', 1));
    else
        fail(QStringLiteral("read bias"), st);
    float hotBias = 0.0f;
    const tag_estatus hotStatus = measureReadBias(clickInfo, &biasFrames.first(), &hotBias);
    say(QStringLiteral("read bias of a frame with cosmic-ray hits: refused (%1, logged as an error), as the limits are exclusive")
            .arg(statusText(hotStatus)));

    // 5. The luminescent image: flat-field coefficients and defect repair.
    progress(4, QStringLiteral("Correcting the luminescent image"));
    st = addTiffImageSection(&clickInfo, IT_LUMINESCENT, QStringLiteral("demo"), &setup, true);
    if (st != ES_SUCCESS)
        fail(QStringLiteral("image section"), st);
    float coefs[16] = {};
    int coefCount = 0;
    st = getFlatFieldCoefficients(clickInfo, coefs, 16, coefCount, false, IT_LUMINESCENT);
    if (st == ES_SUCCESS) {
        QStringList values;
        for (int i = 0; i < coefCount && i < 16; ++i)
            values << QString::number(double(coefs[i]));
        say(QStringLiteral("flat field: %1 coefficients (%2)").arg(coefCount).arg(values.join(QStringLiteral(", "))));
    } else {
        fail(QStringLiteral("flat-field coefficients"), st);
    }
    CILImage luminescent = makeLuminescentFrame(rng, 20000.0);
    const double maxBefore = luminescent.getMaximum();
    st = fixCCDDefects(camera.getCameraSystemInfoSection(), &luminescent);
    if (st == ES_SUCCESS)
        say(QStringLiteral("defects: column 311 and 3 pixels repaired, maximum %1 -> %2")
                .arg(maxBefore)
                .arg(luminescent.getMaximum()));
    else
        fail(QStringLiteral("defect repair"), st);
    updateDarkChargeImageSection(clickInfo, IT_LUMINESCENT, &bias);

    // 6. The click info and the image beside it.
    progress(5, QStringLiteral("Saving the click info"));
    const QString clickFolder = m_strOutput + QLatin1Char('/') + result.clickNumber;
    st = saveNewClickInfo(clickFolder, &clickInfo);
    if (st == ES_SUCCESS) {
        result.files << clickFolder + QLatin1Char('/') + ZO_FILE_CLICKINFO_TXT;
        const QString tif = clickFolder + QLatin1Char('/') + tiffFileNameForImageType(IT_LUMINESCENT);
        if (luminescent.saveTiff(tif) == ES_SUCCESS)
            result.files << tif;
        say(QStringLiteral("click info: %1 saved with %2 sections").arg(result.clickNumber).arg(clickInfo.sectionCount()));
    } else {
        fail(QStringLiteral("saving the click info"), st);
    }

    // 7. A short kinetic series kept in the image queue: 6 frames, room for 4.
    progress(6, QStringLiteral("Queueing kinetic frames"));
    const QString queueWork = m_strOutput + QStringLiteral("/kinetic.queue");
    const QString queueKept = m_strOutput + QStringLiteral("/ImageQueue.zoq");
    {
        CZOImageQueue queue(queueWork, 4, kWidth, kHeight, ZOS_DT_UINT16);
        QVector<quint16> expectedFirstPixel;
        for (int i = 0; i < 6; ++i) {
            CILImage frame = makeLuminescentFrame(rng, 20000.0 * (1.0 - 0.1 * i));
            frame.getPixels()[0] = quint16(i + 1); // tag each frame
            queue.addFrame(reinterpret_cast<const char *>(frame.getPixels()));
        }
        queue.finalizeImageQueue(1, 6);
        QFile::remove(queueKept);
        if (QFile::copy(queueWork, queueKept))
            result.files << queueKept;
        // The queue deletes its own file; read back from a second queue on the kept copy's twin.
        CZOImageQueue reader;
        QStringList tags;
        if (reader.initFromFile(queueWork, ZOS_DT_UINT16)) {
            QVector<quint16> buffer(kWidth * kHeight);
            for (quint64 i = 0; i < quint64(reader.getNumberOfFrames()); ++i) {
                if (reader.getFrameAt(i, reinterpret_cast<char *>(buffer.data())))
                    tags << QString::number(buffer[0]);
            }
        }
        say(QStringLiteral("image queue: 6 frames added to a ring of 4; read back oldest first: frames %1")
                .arg(tags.join(QStringLiteral(", "))));
    }

    // 8. The auto-background list and the acquisition record.
    progress(7, QStringLiteral("Updating the lists"));
    _tagAutoBkgListFileParam table;
    table.title = QStringLiteral(" Auto background list");
    table.header1 = QStringLiteral("#Binning,Exposure,Shelf,Filter,Folder,Comment");
    table.header2 = QStringLiteral("#Written by zodemo");
    table.header3 = QStringLiteral("#");
    table.header4 = QStringLiteral("#");
    table.column1 = QStringList{QStringLiteral("4"), QStringLiteral("8")};
    table.column2 = QStringList{QStringLiteral("60 sec"), QStringLiteral("30 sec")};
    table.column3 = QStringList{QStringLiteral("3"), QStringLiteral("3")};
    table.column4 = QStringList{QStringLiteral("Open"), QStringLiteral("Open")};
    table.column5 = QStringList{clickFolder, QString()};
    table.column6 = QStringList{QStringLiteral("demo"), QStringLiteral("not read back: no folder")};
    table.rowCount = 2;
    const QString autoBkg = m_strOutput + QStringLiteral("/AutoBkgList.txt");
    saveInfoToAutoBkgList(&table, QStringLiteral(","), autoBkg);
    QList<SAutoBkgListInfo> rows;
    if (readInfoFromAutoBkgList(autoBkg, rows) == ES_SUCCESS)
        result.files << autoBkg;
    say(QStringLiteral("auto-background list: 2 rows written, %1 read back").arg(rows.size()));

    const QString csvPath = m_strOutput + QStringLiteral("/acquisitions.csv");
    {
        CZOSCSVParser csv(csvPath, QStringList{QStringLiteral("Click Number"), QStringLiteral("User"),
                                               QStringLiteral("Read Bias"), QStringLiteral("Read Noise")});
        st = csv.addRow(QStringList{result.clickNumber, CZOPreference::getActiveUserName(),
                                    QString::number(double(bias), 'f', 1), QString::number(readNoise, 'f', 2)});
        if (st == ES_SUCCESS) {
            result.files << csvPath;
            say(QStringLiteral("acquisition record: %1 rows in acquisitions.csv").arg(csv.getNumRows() - 1));
        } else {
            fail(QStringLiteral("acquisition record"), st);
        }
    }

    // What the plots show: a row through the spot, and the grey-level histogram.
    const int row = 230;
    for (int x = 0; x < kWidth; ++x) {
        const double v = luminescent.getPixels()[row * kWidth + x];
        result.profileX << x;
        result.profileY << v - kBiasCounts;
        result.profileErr << std::sqrt(qMax(1.0, v - kBiasCounts) + kReadNoise * kReadNoise);
    }
    QVector<double> histogram(65536, 0.0);
    for (int i = 0; i < kWidth * kHeight; ++i)
        histogram[luminescent.getPixels()[i]] += 1.0;
    for (int v = int(luminescent.getMinimum()); v <= int(luminescent.getMaximum()); ++v) {
        result.histogramX << v;
        result.histogramY << histogram[v];
    }
    return result;
}
