#include "autobkglist.h"

#include "czosavefile.h"
#include "czoslog.h"

#include <QFile>
#include <QTextStream>

namespace {

QString cell(const QStringList &column, int row)
{
    return row < column.size() ? column.at(row) : QString();
}

void readLine(const QString &line, QList<SAutoBkgListInfo> &records)
{
    if (line.isEmpty())
        return;
    const QStringList fields = line.split(QLatin1Char(','), Qt::KeepEmptyParts);
    if (fields.size() != 6)
        return;
    bool firstIsInteger = false;
    bool thirdIsInteger = false;
    fields.at(0).toInt(&firstIsInteger, 10);
    fields.at(2).toInt(&thirdIsInteger, 10);
    if (!firstIsInteger || !thirdIsInteger || fields.at(4).isEmpty())
        return;
    records.append(SAutoBkgListInfo(fields.at(0), fields.at(1), fields.at(2), fields.at(4)));
}

} // namespace

tag_estatus saveInfoToAutoBkgList(const _tagAutoBkgListFileParam *table, const QString &separator, const QString &path)
{
    if (!table)
        return ES_INVALID_POINTER;
    // Silent by design, also when the save fails: the old list then stays whole.
    CZOSaveFile file(path);
    if (!file.open(QIODevice::Text))
        return ES_SUCCESS;

    QTextStream out(file.device());
    out << '#' << table->title << '\n';
    out << "#Binning Key\n";
    out << table->header1 << '\n' << table->header2 << '\n' << table->header3 << '\n' << table->header4 << '\n';
    for (int row = 0; row < table->rowCount; ++row) {
        out << cell(table->column1, row) << separator << cell(table->column2, row) << separator
            << cell(table->column3, row) << separator << cell(table->column4, row) << separator
            << cell(table->column5, row) << separator << cell(table->column6, row) << '\n';
    }
    out.flush();
    file.commit();
    return ES_SUCCESS;
}

tag_estatus readInfoFromAutoBkgList(const QString &path, QList<SAutoBkgListInfo> &records)
{
    QFile file(path);
    // Binary mode: text mode would drop lone "\r" line ends and join the lines.
    if (!file.open(QIODevice::ReadOnly)) {
        ZOS_LOG(QStringLiteral("\n Error opening Auto background configuration file."), ZOS_LOG_ERROR);
        return ES_READ_FAILED;
    }
    QTextStream in(&file);
    QString line;
    // readLine() splits at "\n" and drops a "\r" before it; a lone "\r" is
    // split here. The pieces between are empty lines, which are skipped.
    while (in.readLineInto(&line)) {
        if (line.contains(QLatin1Char('\r'))) {
            const QStringList pieces = line.split(QLatin1Char('\r'));
            for (const QString &piece : pieces)
                readLine(piece, records);
        } else {
            readLine(line, records);
        }
    }
    file.close();
    return ES_SUCCESS;
}
