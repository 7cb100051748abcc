#pragma once
// A combo box for choosing a fluorescent probe from a categorised tree. Its
// popup is a cascading menu built from "ProbesTree.xml" in the probes folder
// (getZOPath tag 2); the file also keeps a "Recently Used" category, rewritten
// by saveRecentUsedProbes(). The combo's own items are the probes chosen so
// far, newest on top. GUI thread only.
//
// The file: nested "Category" elements with a "Name" attribute, holding
// further categories and "PROBE" elements, each with a "Name" attribute.

#include "zoutils_export.h"

#include <QComboBox>
#include <QList>
#include <QModelIndex>
#include <QSet>
#include <QString>
#include <QStringList>

class QAbstractItemModel;
class QAction;
class QMenu;
class QMouseEvent;
class QStandardItem;
class QStandardItemModel;
class QXmlStreamReader;
class QXmlStreamWriter;

// The extra items that the menu offers beside the probes of the file.
enum PROBETREEDISPLAYTYPE : int {
    PROBETREE_PROBES = 0,              // the probes of the file only
    PROBETREE_SPECTRAL = 1,            // + "Qdot info" and "Input Ex/Em"
    PROBETREE_SPECTRAL_ALT = 2,        // the same items as 1
    PROBETREE_AUTOFLUORESCENCE = 3,    // + "Unknown", "ALFood" and "ALFree"; "KRV-2" and "Unknown" count as probes
    PROBETREE_AUTOFLUORESCENCE_ALT = 4 // the same items as 3
};

class ZOUTILS_EXPORT CZOTreeMenuComboBox : public QComboBox
{
    Q_OBJECT
public:
    // Loads the probe file (first copying the built-in one there when it is
    // missing), adds the items of `displayType` and builds the menus. A file
    // that cannot be read, or holds fewer than 98 probes, is logged as an error
    // and whatever could be read is offered.
    explicit CZOTreeMenuComboBox(PROBETREEDISPLAYTYPE displayType = PROBETREE_PROBES, QWidget *parent = nullptr);
    ~CZOTreeMenuComboBox() override;

    // Reads `path` into the tree kept for writing back (below its "ROOT"
    // item) and, a second time, into a new model that is returned for display;
    // the caller owns it. Never null: a file that cannot be opened gives a
    // model holding only "ROOT". Resets the probe names and the loaded count.
    QStandardItemModel *createTreeModelFromFile(QString path);
    // Reads categories and probes below `parent` until the end of the
    // document or the first syntax error. Categories or probes with a blank
    // name are skipped; categories nested deeper than maxCategoryDepth() are
    // flattened into the deepest one allowed.
    void readTreeItems(QXmlStreamReader *reader, QStandardItem *parent);
    // Appends the items of `displayType` to the display tree's "ROOT".
    void customizeTreeModel(PROBETREEDISPLAYTYPE displayType);
    // Fills `menu` with one checkable action per leaf and one submenu per
    // branch below `parent`.
    void createTreeModelMenus(QMenu *menu, const QAbstractItemModel *model, const QModelIndex &parent);
    // Adds a category titled `text` below `parent` that lists every probe
    // name from A to Z, grouped by initial. False, adding nothing, when
    // `parent` is null, `text` is blank or there are no probe names. The
    // menus are rebuilt when `parent` belongs to the display tree.
    bool addNewCategoryStdItemFromStringList(QStandardItem *parent, QString text);
    // Puts the known probes of `used` at the front of the recently used list
    // (the last given ends first; no duplicates; at most 10) and rewrites the
    // probe file. False for an empty list, an unwritable file, or a file that
    // was not read completely (rewriting it would lose what could not be read).
    bool saveRecentUsedProbes(QStringList used);
    // Appends every probe action of `menu` and its submenus to `actions`
    // (the submenus' own actions are not included).
    void obtainChilrentActionsOfRootMenu(QList<QAction *> *actions, QMenu *menu);

    // With multiple selection the actions check and uncheck independently and
    // do not change the combo. Both setters rebuild the menus.
    void setAllowSelectMultiMenuItem(bool allow);
    void setShowRecentlyUsedProbeList(bool show);
    bool allowSelectMultiMenuItem() const { return m_bAllowMultiSelect; }
    bool showRecentlyUsedProbeList() const { return m_bShowRecentlyUsed; }

    // Shows the probe menu at the cursor instead of the list.
    void showPopup() override;

    // The probe menu. Owned by the combo; replaced whenever the menus are
    // rebuilt (the old one is deleted later), so do not keep the pointer.
    QMenu *menu() const { return m_pMenu; }
    QStringList probeNames() const { return m_lstProbeNames; }
    QStringList recentlyUsedProbes() const { return m_lstRecentlyUsed; } // newest first
    int loadedProbeCount() const { return m_nLoadedProbes; }
    QString filePath() const { return m_strFilePath; }
    // The tree as read, written back by saveRecentUsedProbes(); owned by the combo.
    QStandardItemModel *treeModel() const { return m_pTreeModel; }
    // The tree the menus show: the file plus the display type's items; owned by the combo.
    QStandardItemModel *displayModel() const { return m_pDisplayModel; }

    static int expectedMinimumProbes() { return 98; }
    static int maxRecentlyUsed() { return 10; }
    static int maxCategoryDepth() { return 32; }
    // The probe list that ships with the library (a Qt resource path).
    static QString builtInProbeFile();
    // getZOPath tag 2 + "ProbesTree.xml"; the built-in file when that folder
    // cannot be made.
    static QString probeFilePath();
    // Copies the built-in file to `path` (writable) unless a file is there.
    // True when a file is there afterwards.
    static bool installDefaultProbeFile(const QString &path);

public slots:
    // Checks the chosen action alone and makes its probe the combo's current
    // item, inserting it on top when new.
    void changeCombboxSelection(QAction *senderAction);
    // Checks the actions of the combo's current probe, unchecks all others.
    void checkSelectedonMenu();

protected:
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    bool obtainChildrenOfBranch(const QAbstractItemModel *model, const QModelIndex &parent, QString text,
                                QStringList &names);
    void writeBranchAndChildren(QXmlStreamWriter *writer, const QAbstractItemModel *model, const QModelIndex &index);
    void writeBranchChildrenToXMLFile(QXmlStreamWriter *writer, QStringList names);
    void addProbeName(const QString &name);
    void rebuildMenus();
    void refreshRecentlyUsedBranch();
    QStandardItem *displayRoot() const;

    QStringList m_lstProbeNames;      // every probe of the file once, in file order
    QSet<QString> m_setProbeNames;    // the same names, for lookups
    QStringList m_lstRecentlyUsed;    // newest first, at most maxRecentlyUsed()
    QStandardItemModel *m_pTreeModel = nullptr;
    QStandardItemModel *m_pDisplayModel = nullptr;
    QMenu *m_pMenu = nullptr;
    QString m_strFilePath;
    int m_nLoadedProbes = 0;
    bool m_bTreeComplete = false; // the last load read the whole file unchanged
    bool m_bAllowMultiSelect = false;
    bool m_bShowRecentlyUsed = true;
};
