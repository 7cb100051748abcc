#include "czoslog.h"

#include <QtTest>

// On a display with an OpenGL driver the session header names the driver.
class TestCZOSLogGL : public QObject
{
    Q_OBJECT
private slots:
    void headerNamesTheDriver()
    {
        if (QGuiApplication::platformName() != QLatin1String("xcb"))
            QSKIP("needs an X display (run under xvfb-run)");
        QStandardPaths::setTestModeEnabled(true);
        QTemporaryDir dir;
        qputenv("ZO_DATA_ROOT", dir.path().toLocal8Bit() + '/');

        for (int session = 0; session < 2; ++session) {
            QCOMPARE(beginLog(QStringLiteral("GL")), 1);
            getLogObject()->log(QStringLiteral("session %1").arg(session), QString(), 1, QString(), 1, true);
            closeLog();
        }
        QFile f(dir.filePath(QStringLiteral("zoactivity.log")));
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = f.readAll().split('\n');
        const QRegularExpression gl(QStringLiteral("^OpenGL Vendor: (.+), Driver: (.+), Version: (\\d.+)\r$"));
        QVERIFY(lines.size() > 9);
        QVERIFY2(gl.match(QString::fromLatin1(lines.at(2))).hasMatch(), lines.at(2).constData());
        QCOMPARE(lines.at(9), lines.at(2)); // the second session names the same driver
    }
};

QTEST_MAIN(TestCZOSLogGL)
#include "tst_czosloggl.moc"
