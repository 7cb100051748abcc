#pragma once
// A named set of user label names ("Zolvane Universal": "User", "Group",
// ...), one of the label sets offered for new images.
//
// Block form (a section, see cplsection.h; the values are empty):
//   "*** User Label Name Set:" TAB set name
//   label ":" TAB              one line per label, in order
//   (empty line)

#include "zoparser_export.h"
#include "zoenums.h"

#include <QString>
#include <QStringList>

class ZOPARSER_EXPORT CPLLabelDataSet
{
public:
    explicit CPLLabelDataSet(const QString &name = QString(), const QStringList &labels = QStringList());

    QString name() const { return m_strName; }
    void setName(const QString &name) { m_strName = name; }
    int getLabelCount() const { return m_lLabels.size(); }
    // Copies the label names, in order, to `labels`; ES_INVALID_POINTER for null.
    tag_estatus getLabelData(QStringList *labels) const;
    void setLabelData(const QStringList &labels) { m_lLabels = labels; }

    // Reads a block that starts with its "*** User Label Name Set" header;
    // the name is the header's comment, the labels the keys in order
    // (duplicates kept once). On failure the set is unchanged:
    // ES_HEADER_NOT_FOUND when the block does not start with that header,
    // ES_FORMAT_CHAR_NOT_FOUND for a line that breaks the grammar.
    tag_estatus loadData(const QString &block);
    // Appends the block to `text`; ES_INVALID_ARGUMENT (nothing appended)
    // for a name or label that cannot be written.
    tag_estatus saveData(QString &text) const;

private:
    QString m_strName;
    QStringList m_lLabels;
};
