#pragma once
// One simulated acquisition through the library, the way the imaging
// application drives it: set-up, background matching, read bias and read
// noise from bias frames, flat-field coefficients, defect repair, the click
// info, the frames kept in an image queue. No widgets here; the window shows
// what this produces.

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

struct DemoResult {
    QStringList report;          // one line per decision, for the console
    QStringList files;           // every file written, absolute paths
    QVector<double> profileX;    // a row through the corrected image
    QVector<double> profileY;
    QVector<double> profileErr;  // shot noise of each profile point
    QVector<double> histogramX;  // counts per grey level of the corrected image
    QVector<double> histogramY;
    QString clickNumber;
    bool ok = true;
};

// `progress(step, text)` is called before each of the steps (0 to stepCount()-1).
class DemoAcquisition
{
public:
    explicit DemoAcquisition(const QString &outputFolder);
    static int stepCount() { return 8; }
    DemoResult run(const std::function<void(int, const QString &)> &progress);

private:
    QString m_strOutput;
};
