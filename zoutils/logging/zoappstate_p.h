#pragma once
// Application state that the message boxes of this layer need and that the
// utility class (CZOUtilityFns, further up) presents to the application: the
// application's name, the close guard and the override cursor. Kept here so
// that no include of the log reaches up. GUI thread only, unsynchronised.

#include <QString>

class QCursor;

namespace ZOAppState {

// "Zolvane® 4.7.2 (64-bit)", followed by a blank and the build kind when one is set.
QString appName();
QString buildKind();
void setBuildKind(const QString &kind);

// setCanClose(false) starts a period in which the application must not close,
// setCanClose(true) ends one; the count never drops below 0, so periods nest.
void setCanClose(bool canClose);
bool canClose();

// The application's override-cursor stack; without a GUI application these
// do nothing and currentCursor() is null.
void setCursor(const QCursor &cursor);
QCursor *currentCursor();
void restoreCursor(); // pops one; harmless on an empty stack

} // namespace ZOAppState
