#pragma once
// The values one user keeps for the labels of one label data set, and their
// block in the user's profile file.
//
// Block form (a section, see cplsection.h):
//   "*** User Label Name Set:" TAB set name
//   label ":" TAB value        one line per label of the set, in set order
//   (empty line)

#include "zoparser_export.h"
#include "zoenums.h"

#include <QString>
#include <QStringList>
#include <QVector>

class CPLLabelDataSet;
class CPLPreferenceKey;

class ZOPARSER_EXPORT CPLPreferenceKeyList
{
public:
    // `count` keys with empty names and values.
    explicit CPLPreferenceKeyList(int count = 0);
    CPLPreferenceKeyList(const CPLPreferenceKeyList &other);
    CPLPreferenceKeyList &operator=(const CPLPreferenceKeyList &other);
    ~CPLPreferenceKeyList();

    int count() const { return m_vKeys.size(); }
    // Key i, owned by the list; null when i is out of range.
    CPLPreferenceKey *operator[](int i) const;
    // The first key of that name, or null; owned by the list.
    CPLPreferenceKey *findKey(const QString &name) const;

    // Rebuilds the list from a block whose header line has been dropped:
    // one key per entry of `names`, in that order, each with the value that
    // the block gives its label (empty when the block lacks it). Lines of
    // labels not in `names` are ignored. ES_FORMAT_CHAR_NOT_FOUND for a line
    // that breaks the grammar (the list then keeps the values read so far).
    tag_estatus loadData(const QString &block, const QStringList &names);
    // Appends the block for `labelSet` to `text`: the set's label names with
    // the values of keys 0, 1, ... (empty past the end of the list).
    // ES_INVALID_POINTER for a null argument; ES_INVALID_ARGUMENT for a label
    // name that cannot be written as a key (nothing appended).
    tag_estatus saveData(CPLLabelDataSet *labelSet, QString *text) const;

private:
    QVector<CPLPreferenceKey *> m_vKeys; // owned
};
