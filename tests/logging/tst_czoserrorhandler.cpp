#include "answerer.h"
#include "czoserrorhandler.h"
#include "czoutilityfns.h"

#include <QAbstractButton>
#include <QMainWindow>
#include <QPushButton>

#include <functional>

namespace {

// What a box looked like while it was open.
struct Seen {
    bool shown = false;
    QString text;
    QString title;
    QWidget *parent = nullptr;
    bool canClose = true;
    Qt::CursorShape cursor = Qt::BitmapCursor;
    QStringList buttons;
    bool stillOpenAfterEscape = false;
};

// A step that records what the box looked like while it was open, then lets `answer` close it.
Answerer::Step noting(Seen *seen, std::function<void(QMessageBox *)> answer)
{
    return [seen, answer](QWidget *w) {
        auto *box = static_cast<QMessageBox *>(w);
        seen->shown = true;
        seen->text = box->text();
        seen->title = box->windowTitle();
        seen->parent = box->parentWidget();
        seen->canClose = CZOUtilityFns::canClose();
        if (QCursor *c = QGuiApplication::overrideCursor())
            seen->cursor = c->shape();
        for (QAbstractButton *b : box->buttons())
            seen->buttons << b->text().remove(QLatin1Char('&'));
        answer(box);
    };
}

QAbstractButton *buttonWithText(QMessageBox *box, const QString &text)
{
    for (QAbstractButton *b : box->buttons())
        if (b->text().remove(QLatin1Char('&')) == text)
            return b;
    return nullptr;
}

} // namespace

class TestCZOSErrorHandler : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void cleanup()
    {
        QVERIFY(CZOUtilityFns::canClose());
        while (QGuiApplication::overrideCursor())
            QGuiApplication::restoreOverrideCursor();
    }

    void errorMessageShowsTextDetailAndGuards()
    {
        QMainWindow hidden; // not shown: still the parent of an error message
        QWidget other;
        other.show();
        CZOUtilityFns::setCursor(ECURSOR_WAIT);
        CZOUtilityFns::setCanClose(false); // a period already running must survive the box

        Seen seen;
        Answerer answerer({noting(&seen, [](QMessageBox *box) { box->button(QMessageBox::Ok)->click(); })});
        CZOSErrorHandler::errorMessage(nullptr, ES_OPEN_FAILED, QStringLiteral("/data/mouse 7/ClickInfo.txt"));

        QVERIFY(seen.shown);
        QCOMPARE(seen.text, QStringLiteral(" Unable to open file. /data/mouse 7/ClickInfo.txt"));
        QCOMPARE(seen.title, CZOUtilityFns::getAppName());
        QCOMPARE(seen.parent, &hidden);
        QCOMPARE(seen.buttons, QStringList{"OK"});
        QVERIFY(!seen.canClose);
        QCOMPARE(seen.cursor, Qt::ArrowCursor);
        // Afterwards: the busy cursor is back and only the outer period remains.
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        QVERIFY(!CZOUtilityFns::canClose());
        CZOUtilityFns::setCanClose(true);
        CZOUtilityFns::restoreCursor();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void boxThatMayNotRejectIgnoresEscapeAndClose()
    {
        QMainWindow hidden; // the box's own search wants a visible main window
        CZOSMessageBox box(QMessageBox::Question, QStringLiteral("t"), QStringLiteral("Keep going?"),
                           QMessageBox::Ok | QMessageBox::Cancel, nullptr, Qt::Dialog, false);
        QVERIFY(!box.mayReject());
        Seen seen;
        Answerer answerer({noting(&seen, [&seen](QMessageBox *b) {
            QTest::keyClick(b, Qt::Key_Escape);
            b->close();
            b->reject();
            QCoreApplication::processEvents();
            seen.stillOpenAfterEscape = b->isVisible();
            b->button(QMessageBox::Ok)->click();
        })});
        QCOMPARE(box.exec(), int(QMessageBox::Ok));
        QCOMPARE(seen.parent, nullptr);
        QVERIFY(seen.stillOpenAfterEscape);
        QVERIFY(!seen.canClose);
    }

    void shortcuts_data()
    {
        QTest::addColumn<QString>("which"); QTest::addColumn<QString>("press"); QTest::addColumn<int>("result");
        QTest::addColumn<bool>("visibleParentOnly");

        QTest::newRow("error returns the code") << "error" << "Retry" << int(QMessageBox::Retry) << false;
        QTest::newRow("question returns the code") << "question" << "enter" << int(QMessageBox::Yes) << false;
        QTest::newRow("warning returns the code") << "warning" << "No" << int(QMessageBox::No) << false;
        QTest::newRow("information with texts returns the index") << "informationTexts" << "Later" << 1 << true;
        QTest::newRow("question with texts: escape button") << "questionTexts" << "escape" << 2 << true;
        QTest::newRow("warning with texts: default button") << "warningTexts" << "enter" << 0 << false;
        QTest::newRow("status question: Enter takes Yes") << "status" << "enter" << int(QMessageBox::Yes) << false;
        QTest::newRow("status question: Escape takes Cancel") << "status" << "escape" << int(QMessageBox::Cancel) << false;
    }

    void shortcuts()
    {
        QFETCH(QString, which); QFETCH(QString, press); QFETCH(int, result); QFETCH(bool, visibleParentOnly);

        QMainWindow hidden;
        const QString title = QStringLiteral("Shortcut");
        const QString text = QStringLiteral("Proceed?");
        const int yes = QMessageBox::Yes | QMessageBox::Default;
        const int no = QMessageBox::No | QMessageBox::Escape;
        const int abort = QMessageBox::Abort | QMessageBox::Escape;
        const QString a = QStringLiteral("Now"), b = QStringLiteral("Later"), c = QStringLiteral("Never");

        Seen seen;
        Answerer answerer({noting(&seen, [press](QMessageBox *box) {
            if (press == QLatin1String("enter"))
                QTest::keyClick(box, Qt::Key_Return);
            else if (press == QLatin1String("escape"))
                QTest::keyClick(box, Qt::Key_Escape);
            else
                buttonWithText(box, press)->click();
        })});
        const QHash<QString, std::function<int()>> show{
            {"error", [&] { return CZOSMessageBox::error(nullptr, title, text, QMessageBox::Retry, abort); }},
            {"question", [&] { return CZOSMessageBox::question(nullptr, title, text, yes, no); }},
            {"warning", [&] { return CZOSMessageBox::warning(nullptr, title, text, yes, no); }},
            {"informationTexts", [&] { return CZOSMessageBox::information(nullptr, title, text, a, b, c, 0, 2); }},
            {"questionTexts", [&] { return CZOSMessageBox::question(nullptr, title, text, a, b, c, 0, 2); }},
            {"warningTexts", [&] { return CZOSMessageBox::warning(nullptr, title, text, a, b, c, 0, 2); }},
            {"status", [] { return CZOSErrorHandler::question(nullptr, ES_DATASET_EXISTS, QString()); }},
        };
        const int got = show.value(which)();
        QCOMPARE(got, result);
        QVERIFY(seen.shown);
        if (which == QLatin1String("status")) {
            QCOMPARE(seen.text, CZOSErrorHandler::statusText(ES_DATASET_EXISTS));
            QCOMPARE(seen.buttons.size(), 3);
        } else {
            QCOMPARE(seen.title, title);
        }
        QVERIFY(!seen.canClose);
        QCOMPARE(seen.cursor, Qt::ArrowCursor);
        QCOMPARE(seen.parent, visibleParentOnly ? nullptr : static_cast<QWidget *>(&hidden));
        QVERIFY(!QGuiApplication::overrideCursor());
    }
};

QTEST_MAIN(TestCZOSErrorHandler)
#include "tst_czoserrorhandler.moc"
