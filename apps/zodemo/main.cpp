// zodemo: the host application of the utility library. It drives the library
// the way the imaging application does; with --headless it runs without
// waiting for a person and reports what it did.

#include "czosutilitylibrary.h"
#include "generalutilities.h"
#include "zoconstants.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(ZO_PRODUCT_NORBECK_INSTRUMENTS);
    QCoreApplication::setApplicationName(ZO_PRODUCT_ZOLVANE);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Demonstrates the zoutils library."));
    parser.addHelpOption();
    QCommandLineOption headless(QStringLiteral("headless"), QStringLiteral("Run without waiting for a person."));
    parser.addOption(headless);
    parser.process(app);

    QTextStream out(stdout);
    out << "zodemo: library marker fnZOSUtilityLibrary() = " << fnZOSUtilityLibrary() << "\n";
    out << "  time stamp           " << getCurrentDateAndTimeAsString() << "\n";
    out << "  doubleToString       0.01 -> " << doubleToString(0.01, 2, 2)
        << ", 12345 -> " << doubleToString(12345.0, 2, 2) << "\n";
    out << "  wavelength 532 nm    #" << QString::number(convertWaveLengthToRGB(532.0), 16) << "\n";
    out << "  line (0,0)-(3,-1)    " << getIntermediatePoints(0, 0, 3, -1).size() << " pixels\n";
    QString path = QStringLiteral("/data/imaging/2026/november/experiment-42/mouse-7/ClickInfo.txt");
    shortenFolderNameForDisplay(path);
    out << "  shortened path       " << path << "\n";
    out << "  MD5 of \"\"            " << getMD5String(QString()) << "\n";
    out.flush();
    return 0;
}
