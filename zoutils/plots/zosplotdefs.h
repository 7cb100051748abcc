#pragma once
// Drawing settings shared by the XY plots.

#include <QColor>

// How a data line is drawn. The GL plot also draws EDM_STAIRCASE, a line
// value outside the menu; the painted plot draws it as plain lines.
enum EDISPLAYMODE : int {
    EDM_POINTS = 0,
    EDM_LINES = 1,
    EDM_POINTS_AND_LINES = 2,
    EDM_STAIRCASE = 3
};

// Point styles of the GL plot.
enum EPOINTSTYLE : int {
    EPS_PLUS = 0,   // horizontal and vertical stroke, point size long
    EPS_CROSS = 1,  // the diagonals of an 8-pixel square, whatever the size
    EPS_ROUND = 2,  // round point of the point size
    EPS_SQUARE = 3  // square point of the point size
};

// Grid lines of the painted plot.
enum EGRIDTYPE : int {
    EGT_NONE = 0,
    EGT_VERTICAL = 1,
    EGT_HORIZONTAL = 2,
    EGT_BOTH = 3
};

// The drawing settings of one data line. The painted plot uses the line
// colour, the line width and the display mode; the GL plot uses them all.
struct DISPLAY_SETTINGS {
    QColor lineColor = Qt::blue;
    int displayMode = EDM_LINES; // an EDISPLAYMODE value
    int pointStyle = EPS_PLUS;   // an EPOINTSTYLE value
    int pointSize = 5;           // pixels
    QColor pointColor = Qt::blue;
    bool usePointColor = false;  // otherwise points take the line colour
    // Pixels. Wider than 1 is costly: the raster engine draws such lines
    // without antialiasing about fifty times slower.
    int lineWidth = 1;
};
