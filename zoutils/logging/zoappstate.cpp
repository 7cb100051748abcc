#include "zoappstate_p.h"

#include "zoconstants.h"

#include <QCoreApplication>
#include <QGuiApplication>

namespace {

const QString kAppVersion = QStringLiteral("4.7.2");
const QString kAppBits = QStringLiteral("(64-bit)");

QString s_buildKind;
int s_cannotClose = 0;

bool haveGuiApplication()
{
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance()) != nullptr;
}

} // namespace

namespace ZOAppState {

QString appName()
{
    QString name = ZO_PRODUCT_ZOLVANE + QStringLiteral("® ") + kAppVersion + QLatin1Char(' ') + kAppBits;
    if (!s_buildKind.isEmpty())
        name += QLatin1Char(' ') + s_buildKind;
    return name;
}

QString buildKind()
{
    return s_buildKind;
}

void setBuildKind(const QString &kind)
{
    s_buildKind = kind;
}

void setCanClose(bool canClose)
{
    if (!canClose)
        ++s_cannotClose;
    else if (s_cannotClose > 0)
        --s_cannotClose;
}

bool canClose()
{
    return s_cannotClose < 1;
}

void setCursor(const QCursor &cursor)
{
    if (haveGuiApplication())
        QGuiApplication::setOverrideCursor(cursor);
}

QCursor *currentCursor()
{
    return haveGuiApplication() ? QGuiApplication::overrideCursor() : nullptr;
}

void restoreCursor()
{
    if (haveGuiApplication() && QGuiApplication::overrideCursor())
        QGuiApplication::restoreOverrideCursor();
}

} // namespace ZOAppState
