#include "cplclickinfo.h"
#include "cplsection.h"

#include <QtTest>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

Q_DECLARE_METATYPE(tag_estatus)

namespace QTest {
template<> char *toString(const tag_estatus &status) { return qstrdup(QByteArray::number(int(status))); }
} // namespace QTest

class TestCPLSection : public QObject
{
    Q_OBJECT

private slots:
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
        if (boolOk)
            QCOMPARE(b, boolValue);

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
        if (std::isnan(value)) {
            QVERIFY(std::isnan(read));
        } else {
            QCOMPARE(std::memcmp(&read, &value, sizeof value), 0); // bit-exact, sign of zero included
        }
    }

    void writesKeepOrderAndReplaceInPlace()
    {
        CPLSection s(QStringLiteral("S"));
        s.setValue(QStringLiteral("b"), QStringLiteral("1"));
        s.setValue(QStringLiteral("a"), QStringLiteral("2"));
        s.setValue(QStringLiteral("c"), QStringLiteral("3"));
        s.setValue(QStringLiteral("a"), QStringLiteral("22"));
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

        QVERIFY(s.removeKey(QStringLiteral("b")));
        QVERIFY(!s.removeKey(QStringLiteral("b")));
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
        QTest::addColumn<QString>("text"); QTest::addColumn<QString>("name"); QTest::addColumn<QString>("comment");
        QTest::addColumn<QStringList>("keys"); QTest::addColumn<QStringList>("values");

        const QStringList keys{"Exposure Time", "Path"};
        const QStringList values{"60 sec", "C:\\data: one"};
        QTest::newRow("CRLF") << "*** Camera:\r\nExposure Time:\t60 sec\r\nPath:\tC:\\data: one\r\n\r\n"
                              << "Camera" << "" << keys << values;
        QTest::newRow("CR alone") << "*** Camera:\rExposure Time:\t60 sec\rPath:\tC:\\data: one\r\r"
                                  << "Camera" << "" << keys << values;
        QTest::newRow("no final line end") << "*** Camera:\nExposure Time:\t60 sec\nPath:\tC:\\data: one"
                                           << "Camera" << "" << keys << values;
        QTest::newRow("header comment") << "*** User Input:\t(User Profile)\r\nUser ID:\tAB\r\n"
                                        << "User Input" << "(User Profile)" << QStringList{"User ID"}
                                        << QStringList{"AB"};
        QTest::newRow("colons in name and key") << "*** a:b::\nk:1::\t:v\n"
                                                << "a:b:" << "" << QStringList{"k:1:"} << QStringList{":v"};
        QTest::newRow("empty value without tab") << "*** S:\nkey:\nother:\t\n"
                                                 << "S" << "" << QStringList{"key", "other"} << QStringList{"", ""};
        QTest::newRow("first duplicate wins") << "*** S:\nk:\t1\nk:\t2\n\tmore\nj:\t3\n"
                                              << "S" << "" << QStringList{"k", "j"} << QStringList{"1", "3"};
        QTest::newRow("keys almost headers") << "*** S:\n** k:\tv\nx** j:\tw\n*** T:\n"
                                             << "S" << "" << QStringList{"** k", "x** j"} << QStringList{"v", "w"};
        QTest::newRow("continuation lines") << "*** S:\nk:\tone\r\n\ttwo\r\n\t\r\n\tfour\nj:\tx\n"
                                            << "S" << "" << QStringList{"k", "j"}
                                            << QStringList{"one\ntwo\n\nfour", "x"};
    }

    void parse()
    {
        QFETCH(QString, text); QFETCH(QString, name); QFETCH(QString, comment); QFETCH(QStringList, keys);
        QFETCH(QStringList, values);

        tag_estatus status = ES_UNKNOWN_ERROR;
        std::unique_ptr<CPLSection> s(CPLClickInfo::parseSectionFromBuffer(text, &status));
        QCOMPARE(status, ES_SUCCESS);
        QVERIFY(s);
        QCOMPARE(s->name(), name);
        QCOMPARE(s->comment(), comment);
        QCOMPARE(s->keys(), keys);
        for (int i = 0; i < keys.size(); ++i)
            QCOMPARE(s->value(keys.at(i)), values.at(i));
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
        QString buffer = text;
        QString section = QStringLiteral("stale");
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
        QVERIFY(text.endsWith(QStringLiteral("\r\n\r\n")));
        QVERIFY(!text.contains(QRegularExpression(QStringLiteral("[^\r]\n"))));
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
};

QTEST_GUILESS_MAIN(TestCPLSection)
#include "tst_cplsection.moc"
