#pragma once

#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>

#include <functional>

// Answers the application's modal dialogs, one step per dialog seen, and records each: "file <folder> <filters>",
// "box <title>|<text>" or "dialog <title>". A dialog beyond the steps is recorded as "unexpected" and closed, so a
// test fails instead of hanging. Each showing of a dialog takes one step, however slowly it closes. A dialog that is
// shown first and then run is not modal: `find` finds it.
class Answerer : public QObject
{
public:
    using Step = std::function<void(QWidget *)>;
    explicit Answerer(QList<Step> steps, std::function<QWidget *()> find = &QApplication::activeModalWidget)
        : m_steps(std::move(steps)), m_find(std::move(find))
    {
        connect(&m_timer, &QTimer::timeout, this, &Answerer::poll);
        m_timer.start(20);
    }
    QStringList seen;

private:
    void poll()
    {
        QWidget *w = m_find();
        if (!w || !w->isVisible() || m_busy || w == m_answered)
            return;
        if (auto *d = qobject_cast<QFileDialog *>(w))
            seen << "file " + d->directory().absolutePath() + ' ' + d->nameFilters().join('|');
        else if (auto *box = qobject_cast<QMessageBox *>(w))
            seen << "box " + box->windowTitle() + '|' + box->text();
        else
            seen << "dialog " + w->windowTitle();
        if (m_steps.isEmpty()) {
            seen.last().prepend("unexpected ");
            return static_cast<QDialog *>(w)->reject();
        }
        // From an event of its own: the step may open a nested modal dialog.
        m_busy = true;
        m_answered = w;
        w->installEventFilter(this);
        QTimer::singleShot(0, w, [this, w, step = m_steps.takeFirst()] { m_busy = false, step(w); });
    }
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == m_answered && event->type() == QEvent::Hide)
            m_answered = nullptr;
        return false;
    }
    QList<Step> m_steps;
    std::function<QWidget *()> m_find;
    QPointer<QWidget> m_answered;
    QTimer m_timer;
    bool m_busy = false;
};
