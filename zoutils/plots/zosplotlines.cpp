#include "zosplotlines.h"

ZOSPlotLineView SZOSPlotLineData::view() const
{
    ZOSPlotLineView v;
    v.x = x.constData();
    v.y = y.constData();
    v.count = nPoints;
    v.xErrors = nXErrors > 0 ? xErrors.constData() : nullptr;
    v.xErrorCount = nXErrors;
    v.yErrors = nYErrors > 0 ? yErrors.constData() : nullptr;
    v.yErrorCount = nYErrors;
    return v;
}

void SZOSPlotLineData::setPoints(const QVector<double> &xValues, const QVector<double> &yValues,
                                 const QVector<double> &xErrorValues, const QVector<double> &yErrorValues)
{
    nPoints = xValues.size();
    x = xValues;
    y = yValues;
    xErrors = xErrorValues.mid(0, nPoints);
    nXErrors = xErrors.size();
    yErrors = yErrorValues.mid(0, nPoints);
    nYErrors = yErrors.size();
    refresh();
}

void SZOSPlotLineData::refresh()
{
    extent = zosLineExtent(view());
    sortedAndFinite = zosIsSortedAndFinite(x.constData(), y.constData(), nPoints);
}
