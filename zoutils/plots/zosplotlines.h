#pragma once
// The data of one named plot line and the bookkeeping of a plot's lines by
// name, shared by both plot widgets.

#include "zoutils_export.h"
#include "zosplotdefs.h"
#include "zosplotscale.h"

#include <QHash>
#include <QString>
#include <QVector>

// Points of one line. Error values are half-widths; point i has an error bar
// on an axis only when i is below that axis' error count.
struct ZOUTILS_EXPORT SZOSPlotLineData {
    int nPoints = 0;
    QVector<double> x;
    QVector<double> y;
    int nXErrors = 0;
    QVector<double> xErrors; // empty when the line has none
    int nYErrors = 0;
    QVector<double> yErrors;
    DISPLAY_SETTINGS settings;
    ZOSPlotExtent extent;         // cached with the data; finite points only
    bool sortedAndFinite = false; // cached with the data, for the curve reduction

    ZOSPlotLineView view() const;
    // Copies the points; error arrays longer than the points are cut to the
    // point count. Refreshes the cache.
    void setPoints(const QVector<double> &xValues, const QVector<double> &yValues,
                   const QVector<double> &xErrorValues, const QVector<double> &yErrorValues);
    // Recomputes the cached extent and order after the points changed.
    void refresh();
};

// Operations on a plot's lines, a hash that owns its records.
namespace ZOSPlotLines {

// Puts `line` under `name`. A line it replaces is deleted; the new line takes
// `settings` when given, else the replaced line's settings, else the plot's
// current display mode.
template <typename Line>
void insert(QHash<QString, Line *> &lines, const QString &name, Line *line, const DISPLAY_SETTINGS *settings,
            int currentMode)
{
    Line *old = lines.value(name);
    if (settings)
        line->settings = *settings;
    else if (old)
        line->settings = old->settings;
    else
        line->settings.displayMode = currentMode;
    delete old;
    lines.insert(name, line);
}

template <typename Line>
bool remove(QHash<QString, Line *> &lines, const QString &name)
{
    Line *line = lines.take(name);
    delete line;
    return line != nullptr;
}

// Empties the X (or Y) errors of a line; false for an unknown name.
template <typename Line>
bool clearErrors(QHash<QString, Line *> &lines, const QString &name, bool xAxis)
{
    Line *line = lines.value(name);
    if (!line)
        return false;
    (xAxis ? line->xErrors : line->yErrors).clear();
    (xAxis ? line->nXErrors : line->nYErrors) = 0;
    line->refresh();
    return true;
}

template <typename Line>
bool getSettings(const QHash<QString, Line *> &lines, const QString &name, DISPLAY_SETTINGS &settings)
{
    const Line *line = lines.value(name);
    if (line)
        settings = line->settings;
    return line != nullptr;
}

template <typename Line>
bool setSettings(QHash<QString, Line *> &lines, const QString &name, const DISPLAY_SETTINGS &settings)
{
    Line *line = lines.value(name);
    if (line)
        line->settings = settings;
    return line != nullptr;
}

template <typename Line>
void deleteAll(QHash<QString, Line *> &lines)
{
    qDeleteAll(lines);
    lines.clear();
}

} // namespace ZOSPlotLines
