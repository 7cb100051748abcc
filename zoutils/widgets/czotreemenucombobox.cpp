#include "czotreemenucombobox.h"

#include "czosavefile.h"
#include "czoslog.h"
#include "zopath.h"

#include <QCursor>
#include <QFile>
#include <QMenu>
#include <QMouseEvent>
#include <QStandardItemModel>
#include <QVector>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>

namespace {
const QString kCategoryElement = QStringLiteral("Category");
const QString kProbeElement = QStringLiteral("PROBE");
const QString kRootText = QStringLiteral("ROOT");
const QString kNameAttribute = QStringLiteral("Name");
const QString kTreeTitle = QStringLiteral("Fluorescent Probes");
const QString kFileName = QStringLiteral("ProbesTree.xml");

const QString kAlphabetical = QStringLiteral("Alphabetical");
const QString kALFood = QStringLiteral("ALFood");
const QString kALFree = QStringLiteral("ALFree");
const QString kRecentlyUsed = QStringLiteral("Recently Used");
const QString kUnknown = QStringLiteral("Unknown");
const QString kQdotInfo = QStringLiteral("Qdot info");
const QString kInputExEm = QStringLiteral("Input Ex/Em");
const QString kKRV2 = QStringLiteral("KRV-2");

const QString kMenuStyleSheet = QStringLiteral(
    "QMenu {background-color: white; /* sets background of the menu */ border: 1px solid black; } "
    "QMenu::item {/* sets background of menu item. set this to something non-transparent  if you want menu "
    "color and menu item color to be different */ background-color: transparent; }QMenu::item:!selected "
    "{color: black;background-color: white } QMenu::item:selected {color: white; /* when user selects item "
    "using mouse or keyboard */ background-color: #3299FF; }");

// The probe name travels in the action's data; its text escapes "&" so no
// name turns into a shortcut.
QString probeOf(const QAction *action)
{
    return action->data().toString();
}

bool isRecentlyUsedBranch(const QString &text)
{
    return text.contains(kRecentlyUsed);
}
} // namespace

CZOTreeMenuComboBox::CZOTreeMenuComboBox(PROBETREEDISPLAYTYPE displayType, QWidget *parent)
    : QComboBox(parent)
{
    m_strFilePath = probeFilePath();
    installDefaultProbeFile(m_strFilePath);

    m_pTreeModel = new QStandardItemModel(this);
    m_pDisplayModel = createTreeModelFromFile(m_strFilePath);
    m_pDisplayModel->setParent(this);

    QStringList recent;
    if (QStandardItem *root = m_pTreeModel->item(0))
        obtainChildrenOfBranch(m_pTreeModel, root->index(), kRecentlyUsed, recent);
    recent.removeDuplicates();
    m_lstRecentlyUsed = recent.mid(0, maxRecentlyUsed());

    customizeTreeModel(displayType);
    setToolTip(kTreeTitle);
    setMouseTracking(true);
    rebuildMenus();
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &CZOTreeMenuComboBox::checkSelectedonMenu);
}

CZOTreeMenuComboBox::~CZOTreeMenuComboBox() = default;

QString CZOTreeMenuComboBox::builtInProbeFile()
{
    return QStringLiteral(":/zoutils/") + kFileName;
}

QString CZOTreeMenuComboBox::probeFilePath()
{
    const QString folder = getZOPath(ZO_PATH_PROBES);
    return folder.isEmpty() ? builtInProbeFile() : folder + kFileName;
}

bool CZOTreeMenuComboBox::installDefaultProbeFile(const QString &path)
{
    if (QFile::exists(path))
        return true;
    QFile builtIn(builtInProbeFile());
    return builtIn.open(QIODevice::ReadOnly) && CZOSaveFile::save(path, builtIn.readAll());
}

QStandardItemModel *CZOTreeMenuComboBox::createTreeModelFromFile(QString path)
{
    m_lstProbeNames.clear();
    m_setProbeNames.clear();
    m_nLoadedProbes = 0;
    m_bTreeComplete = false;

    m_pTreeModel->clear();
    auto *treeRoot = new QStandardItem(kRootText);
    m_pTreeModel->appendRow(treeRoot);
    auto *display = new QStandardItemModel;
    auto *displayRoot = new QStandardItem(kRootText);
    display->appendRow(displayRoot);

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        ZOS_LOG(QStringLiteral("Imaging Probe Tree (%1) Load Failed: %2.").arg(path, file.errorString()),
                ZOS_LOG_ERROR);
        return display;
    }

    QXmlStreamReader first(&file);
    readTreeItems(&first, treeRoot);
    m_bTreeComplete = !first.hasError();
    if (first.hasError()) {
        ZOS_LOG(QStringLiteral("Probe Tree (%1) is not intact at line %2: %3.")
                    .arg(path, QString::number(first.lineNumber()), first.errorString()),
                ZOS_LOG_WARNING);
    }
    file.seek(0);
    QXmlStreamReader second(&file);
    readTreeItems(&second, displayRoot);

    m_nLoadedProbes = m_lstProbeNames.size();
    if (m_nLoadedProbes < expectedMinimumProbes()) {
        // The two blanks before the last number are deliberate.
        ZOS_LOG(QStringLiteral("Probe Tree (%1) Load Failed: Expect to load %2 items, loaded  %3 items.")
                    .arg(path, QString::number(expectedMinimumProbes()), QString::number(m_nLoadedProbes)),
                ZOS_LOG_ERROR);
    }
    return display;
}

void CZOTreeMenuComboBox::readTreeItems(QXmlStreamReader *reader, QStandardItem *parent)
{
    if (!reader || !parent)
        return;
    QStandardItem *current = parent;
    // One entry per open "Category": whether it opened an item. A category
    // with a blank name, or one past the depth limit, opens none, so its end
    // must not close the item around it.
    QVector<bool> opened;
    int depth = 0;
    bool flattened = false;
    while (!reader->atEnd()) {
        reader->readNext();
        if (reader->isStartElement()) {
            if (reader->name() == kCategoryElement) {
                const QString name = reader->attributes().value(kNameAttribute).toString();
                const bool open = !name.trimmed().isEmpty() && depth < maxCategoryDepth();
                flattened = flattened || (!name.trimmed().isEmpty() && !open);
                if (open) {
                    auto *item = new QStandardItem(name);
                    current->appendRow(item);
                    current = item;
                    ++depth;
                }
                opened.append(open);
            } else if (reader->name() == kProbeElement) {
                const QString name = reader->attributes().value(kNameAttribute).toString();
                if (!name.trimmed().isEmpty()) {
                    current->appendRow(new QStandardItem(name));
                    addProbeName(name);
                }
            }
        } else if (reader->isEndElement() && reader->name() == kCategoryElement && !opened.isEmpty()) {
            if (opened.takeLast() && current != parent) {
                current = current->parent();
                --depth;
            }
        }
    }
    if (flattened && !reader->hasError()) {
        // The tree no longer matches the file: keep it from being written back.
        reader->raiseError(QStringLiteral("categories nested deeper than %1 levels were flattened")
                               .arg(maxCategoryDepth()));
    }
}

void CZOTreeMenuComboBox::addProbeName(const QString &name)
{
    if (m_setProbeNames.contains(name))
        return;
    m_setProbeNames.insert(name);
    m_lstProbeNames.append(name);
}

QStandardItem *CZOTreeMenuComboBox::displayRoot() const
{
    return m_pDisplayModel ? m_pDisplayModel->item(0) : nullptr;
}

void CZOTreeMenuComboBox::customizeTreeModel(PROBETREEDISPLAYTYPE displayType)
{
    QStandardItem *root = displayRoot();
    if (!root)
        return;
    switch (displayType) {
    case PROBETREE_SPECTRAL:
    case PROBETREE_SPECTRAL_ALT:
        root->appendRow(new QStandardItem(kQdotInfo));
        root->appendRow(new QStandardItem(kInputExEm));
        break;
    case PROBETREE_AUTOFLUORESCENCE:
    case PROBETREE_AUTOFLUORESCENCE_ALT:
        addProbeName(kKRV2);
        addProbeName(kUnknown);
        root->appendRow(new QStandardItem(kUnknown));
        root->appendRow(new QStandardItem(kALFood));
        root->appendRow(new QStandardItem(kALFree));
        break;
    default:
        break;
    }
}

void CZOTreeMenuComboBox::createTreeModelMenus(QMenu *menu, const QAbstractItemModel *model,
                                               const QModelIndex &parent)
{
    if (!menu || !model)
        return;
    const int rows = model->rowCount(parent);
    for (int row = 0; row < rows; ++row) {
        const QModelIndex index = model->index(row, 0, parent);
        const QString text = index.data().toString();
        const bool recent = isRecentlyUsedBranch(text);
        if (model->hasChildren(index) || recent) {
            if (recent && !m_bShowRecentlyUsed)
                continue;
            auto *submenu = new QMenu(QString(text).replace(QLatin1Char('&'), QStringLiteral("&&")), menu);
            menu->addMenu(submenu);
            createTreeModelMenus(submenu, model, index);
            submenu->setEnabled(!submenu->isEmpty());
            if (!m_bAllowMultiSelect) {
                connect(submenu, &QMenu::triggered, this, &CZOTreeMenuComboBox::changeCombboxSelection);
                submenu->setStyleSheet(kMenuStyleSheet);
            }
        } else {
            auto *action = new QAction(QString(text).replace(QLatin1Char('&'), QStringLiteral("&&")), menu);
            action->setData(text);
            action->setCheckable(true);
            menu->addAction(action);
        }
    }
}

void CZOTreeMenuComboBox::rebuildMenus()
{
    // The old menu may be the one whose signal led here; it goes later.
    if (m_pMenu) {
        m_pMenu->hide();
        m_pMenu->deleteLater();
    }
    m_pMenu = new QMenu(kTreeTitle, this);
    if (QStandardItem *root = displayRoot())
        createTreeModelMenus(m_pMenu, m_pDisplayModel, root->index());
    if (!m_bAllowMultiSelect) {
        // The root holds probes of its own ("Unknown", ...), so it reports too.
        connect(m_pMenu, &QMenu::triggered, this, &CZOTreeMenuComboBox::changeCombboxSelection);
        m_pMenu->setStyleSheet(kMenuStyleSheet);
    }
    checkSelectedonMenu();
}

void CZOTreeMenuComboBox::obtainChilrentActionsOfRootMenu(QList<QAction *> *actions, QMenu *menu)
{
    if (!actions || !menu)
        return;
    const QList<QAction *> own = menu->actions();
    for (QAction *action : own) {
        if (QMenu *submenu = action->menu())
            obtainChilrentActionsOfRootMenu(actions, submenu);
        else if (!action->isSeparator())
            actions->append(action);
    }
}

bool CZOTreeMenuComboBox::addNewCategoryStdItemFromStringList(QStandardItem *parent, QString text)
{
    if (!parent || text.trimmed().isEmpty() || m_lstProbeNames.isEmpty())
        return false;
    QStringList names = m_lstProbeNames;
    std::sort(names.begin(), names.end(),
              [](const QString &a, const QString &b) { return QString::compare(a, b, Qt::CaseInsensitive) < 0; });
    auto *category = new QStandardItem(text);
    QStandardItem *group = nullptr;
    for (const QString &name : qAsConst(names)) {
        const QString initial = name.trimmed().left(1).toUpper();
        if (!group || group->text() != initial) {
            group = new QStandardItem(initial);
            category->appendRow(group);
        }
        group->appendRow(new QStandardItem(name));
    }
    parent->appendRow(category);
    if (parent->model() == m_pDisplayModel)
        rebuildMenus();
    return true;
}

bool CZOTreeMenuComboBox::obtainChildrenOfBranch(const QAbstractItemModel *model, const QModelIndex &parent,
                                                 QString text, QStringList &names)
{
    if (!model)
        return false;
    const int rows = model->rowCount(parent);
    for (int row = 0; row < rows; ++row) {
        const QModelIndex index = model->index(row, 0, parent);
        if (index.data().toString().contains(text)) {
            const int children = model->rowCount(index);
            for (int child = 0; child < children; ++child)
                names.append(model->index(child, 0, index).data().toString());
            return true;
        }
        if (obtainChildrenOfBranch(model, index, text, names))
            return true;
    }
    return false;
}

bool CZOTreeMenuComboBox::saveRecentUsedProbes(QStringList used)
{
    if (used.isEmpty())
        return false;
    for (const QString &name : qAsConst(used)) {
        if (!name.isEmpty() && !name.isNull() && m_setProbeNames.contains(name))
            m_lstRecentlyUsed.prepend(name);
    }
    m_lstRecentlyUsed.removeDuplicates(); // keeps the first, newest, copy
    m_lstRecentlyUsed = m_lstRecentlyUsed.mid(0, maxRecentlyUsed());
    refreshRecentlyUsedBranch();

    if (!m_bTreeComplete) {
        ZOS_LOG(QStringLiteral("Unable to add probes in use to recently used list. %1 : %2.")
                    .arg(m_strFilePath, tr("the file was not read completely and is left as it is")),
                ZOS_LOG_ERROR);
        return false;
    }
    // The old file stays whole until the new one is complete.
    // The writer writes token by token: gather them, then replace the file in one save.
    QByteArray document;
    QXmlStreamWriter writer(&document);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    // The children of the "ROOT" item, not the item itself, become the document.
    if (QStandardItem *root = m_pTreeModel->item(0))
        writeBranchAndChildren(&writer, m_pTreeModel, root->index());
    writer.writeEndDocument();
    QString error;
    if (!CZOSaveFile::save(m_strFilePath, document, &error)) {
        ZOS_LOG(QStringLiteral("Unable to add probes in use to recently used list. %1 : %2.").arg(m_strFilePath, error),
                ZOS_LOG_ERROR);
        return false;
    }
    return true;
}

void CZOTreeMenuComboBox::writeBranchAndChildren(QXmlStreamWriter *writer, const QAbstractItemModel *model,
                                                 const QModelIndex &index)
{
    const int rows = model->rowCount(index);
    const int columns = model->columnCount(index);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const QModelIndex child = model->index(row, column, index);
            const QString text = child.data().toString();
            if (text.trimmed().isEmpty())
                continue;
            const bool recent = isRecentlyUsedBranch(text);
            // Deliberate and kept for the files already out there: an item
            // with one child is written as a probe and its child is dropped.
            if (model->rowCount(child) <= 1 && !recent) {
                writer->writeStartElement(kProbeElement);
                writer->writeAttribute(kNameAttribute, text);
                writer->writeEndElement();
                continue;
            }
            writer->writeStartElement(kCategoryElement);
            writer->writeAttribute(kNameAttribute, text);
            if (recent)
                writeBranchChildrenToXMLFile(writer, m_lstRecentlyUsed);
            else
                writeBranchAndChildren(writer, model, child);
            writer->writeEndElement();
        }
    }
}

void CZOTreeMenuComboBox::writeBranchChildrenToXMLFile(QXmlStreamWriter *writer, QStringList names)
{
    for (const QString &name : qAsConst(names)) {
        writer->writeStartElement(kProbeElement);
        writer->writeAttribute(kNameAttribute, name);
        writer->writeEndElement();
    }
}

void CZOTreeMenuComboBox::refreshRecentlyUsedBranch()
{
    QStandardItem *root = displayRoot();
    if (!root)
        return;
    const QModelIndexList found = m_pDisplayModel->match(root->index(), Qt::DisplayRole, kRecentlyUsed, 1,
                                                         Qt::MatchContains | Qt::MatchRecursive);
    if (found.isEmpty())
        return;
    QStandardItem *branch = m_pDisplayModel->itemFromIndex(found.first());
    branch->removeRows(0, branch->rowCount());
    for (const QString &name : qAsConst(m_lstRecentlyUsed))
        branch->appendRow(new QStandardItem(name));
    rebuildMenus();
}

void CZOTreeMenuComboBox::setAllowSelectMultiMenuItem(bool allow)
{
    m_bAllowMultiSelect = allow;
    rebuildMenus();
}

void CZOTreeMenuComboBox::setShowRecentlyUsedProbeList(bool show)
{
    m_bShowRecentlyUsed = show;
    rebuildMenus();
}

void CZOTreeMenuComboBox::showPopup()
{
    m_pMenu->popup(QCursor::pos());
}

void CZOTreeMenuComboBox::mouseMoveEvent(QMouseEvent *event)
{
    // Long probe names do not fit the box: the tool tip gives the whole name.
    setToolTip(currentText().isEmpty() ? kTreeTitle : currentText());
    QComboBox::mouseMoveEvent(event);
}

void CZOTreeMenuComboBox::changeCombboxSelection(QAction *senderAction)
{
    if (!senderAction || senderAction->menu())
        return;
    // A menu also reports the actions of its submenus; the action's own menu
    // has reported it already.
    const auto *reporter = qobject_cast<const QMenu *>(sender());
    if (reporter && senderAction->parent() != reporter)
        return;
    const QString probe = probeOf(senderAction);
    const int existing = findText(probe, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (existing >= 0) {
        setCurrentIndex(existing);
    } else {
        insertItem(0, probe);
        setCurrentIndex(0);
    }
    // The probe may sit in several categories ("Recently Used" and its own):
    // check it everywhere, whether or not the current index moved.
    checkSelectedonMenu();
}

void CZOTreeMenuComboBox::checkSelectedonMenu()
{
    if (!m_pMenu)
        return;
    const QString current = currentText();
    QList<QAction *> actions;
    obtainChilrentActionsOfRootMenu(&actions, m_pMenu);
    for (QAction *action : qAsConst(actions))
        action->setChecked(!current.isEmpty() && probeOf(action) == current);
}
