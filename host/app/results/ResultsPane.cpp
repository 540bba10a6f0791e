#include "host/app/results/ResultsPane.h"

#include "host/app/results/ResultsText.h"
#include "host/import/ImportLog.h"
#include "host/scene/Scene.h"
#include "host/services/HostIcons.h"
#include "platform/tnLog.h"

#include <QtCore/QDir>
#include <QtCore/QSaveFile>
#include <QtCore/QSettings>
#include <QtCore/QSortFilterProxyModel>
#include <QtGui/QClipboard>
#include <QtGui/QDesktopServices>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace tnhost {

namespace {

const QString folderKey = QStringLiteral("results/lastFolder");

class ResultsOrder : public QSortFilterProxyModel {
public:
    explicit ResultsOrder(ResultsModel *model)
        : QSortFilterProxyModel(model)
    {
        setSourceModel(model);
    }

protected:
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override
    {
        const auto *model = static_cast<const ResultsModel *>(sourceModel());
        const auto column = static_cast<std::size_t>(left.column());
        return ResultColumns::all()[column].isLess(model->row(left), model->row(right));
    }
};

void setUpColumns(QTreeView &view)
{
    QHeaderView &header = *view.header();
    header.setSectionsMovable(false);
    header.setStretchLastSection(true);
    int column = 0;
    for (const ResultColumn &each : ResultColumns::all()) {
        header.resizeSection(column, each.width * view.fontMetrics().averageCharWidth());
        header.setSectionHidden(column, each.width == 0);
        ++column;
    }
}

} // namespace

ResultsPane::ResultsPane(const ImportLog &log, const Scene &scene, QWidget *parent)
    : QWidget(parent)
    , m_scene(scene)
    , m_model(new ResultsModel(log, this))
    , m_order(new ResultsOrder(m_model))
    , m_view(new QTreeView)
{
    m_view->setModel(m_order);
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setAlternatingRowColors(true);
    m_view->setUniformRowHeights(true);
    m_view->setTextElideMode(Qt::ElideMiddle);
    m_view->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_view->setExpandsOnDoubleClick(false);
    m_view->sortByColumn(-1, Qt::AscendingOrder); // as they came
    m_view->setSortingEnabled(true);
    setUpColumns(*m_view);

    auto *tools = new QToolBar;
    tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    tools->setIconSize(QSize(16, 16));
    m_again = addTool(QStringLiteral("importAgain"), QStringLiteral("FileReload"),
                      tr("&Import Again"), &ResultsPane::importAgain);
    m_again->setToolTip(tr("Imports again what is selected and did not succeed, or all that did "
                           "not"));
    m_copy = addTool(QStringLiteral("copyResults"), {}, tr("&Copy"), &ResultsPane::copy);
    m_copy->setShortcut(QKeySequence::Copy);
    m_copy->setShortcutContext(Qt::WidgetShortcut); // in the log the keys are about its text
    m_save = addTool(QStringLiteral("saveResults"), {}, tr("&Save as CSV…"), &ResultsPane::saveAs);
    tools->addActions(m_view->actions());

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->setSpacing(0);
    layout->addWidget(tools);
    layout->addWidget(m_view);

    connect(m_view, &QTreeView::doubleClicked, this, &ResultsPane::showRow);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ResultsPane::updateActions);
    for (const auto signal : {&ImportLog::jobStarted, &ImportLog::jobEnded})
        connect(&log, signal, this, &ResultsPane::updateActions);
    connect(m_order, &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex &above, int first) {
                if (!above.isValid())
                    m_view->scrollTo(m_order->index(first, 0), QTreeView::PositionAtTop);
            });
    updateActions();
}

bool ResultsPane::save(const QString &path, QString *error) const
{
    QSaveFile file(path);
    const QByteArray text = ResultsText::csv(*m_model).toUtf8();
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit())
        return true;
    *error = tr("The file %1 cannot be written: %2.")
                 .arg(QDir::toNativeSeparators(path), file.errorString());
    return false;
}

QByteArray ResultsPane::headerState() const
{
    return m_view->header()->saveState();
}

void ResultsPane::restoreHeader(const QByteArray &state)
{
    m_view->header()->restoreState(state);
    int column = 0;
    for (const ResultColumn &each : ResultColumns::all())
        m_view->setColumnHidden(column++, each.width == 0);
}

QAction *ResultsPane::addTool(const QString &name, const QString &icon, const QString &text,
                              void (ResultsPane::*slot)())
{
    auto *action = new QAction(HostIcons::icon(icon), text, this);
    action->setObjectName(name);
    connect(action, &QAction::triggered, this, slot);
    m_view->addAction(action);
    return action;
}

QModelIndexList ResultsPane::selectedRows() const
{
    QModelIndexList shown = m_view->selectionModel()->selectedRows();
    const auto place = [](const QModelIndex &index) {
        const QModelIndex file = index.parent();
        return file.isValid() ? std::make_pair(file.row(), index.row())
                              : std::make_pair(index.row(), -1);
    };
    std::sort(shown.begin(), shown.end(),
              [&](const QModelIndex &a, const QModelIndex &b) { return place(a) < place(b); });
    QModelIndexList rows;
    for (const QModelIndex &index : shown)
        rows << m_order->mapToSource(index);
    return rows;
}

QModelIndexList ResultsPane::wantedAgain() const
{
    const QModelIndexList selected = m_model->unsuccessful(selectedRows());
    return selected.isEmpty() ? m_model->unsuccessful(m_model->files()) : selected;
}

void ResultsPane::importAgain()
{
    QStringList files;
    QMultiHash<QString, tndNode> places;
    for (const QModelIndex &index : wantedAgain()) {
        const FileResult &file = m_model->row(index).result;
        files << file.path;
        if (m_scene.contains(file.node))
            places.insert(file.path, file.node);
    }
    emit importRequested(files, places);
}

void ResultsPane::copy()
{
    QApplication::clipboard()->setText(ResultsText::tabbed(*m_model, selectedRows()));
}

void ResultsPane::saveAs()
{
    const QString proposed = QDir(QSettings().value(folderKey).toString())
                                 .filePath(QStringLiteral("import-results.csv"));
    const QString path = QFileDialog::getSaveFileName(this, tr("Save Import Results"), proposed,
                                                      tr("Comma-separated values (*.csv)"));
    if (path.isEmpty())
        return;
    QSettings().setValue(folderKey, QFileInfo(path).absolutePath());
    QString error;
    if (save(path, &error))
        return;
    tnLog::error("%s", qUtf8Printable(error));
    QMessageBox::warning(this, tr("Save Import Results"), error);
}

void ResultsPane::showRow(const QModelIndex &shown)
{
    const ResultRow row = m_model->row(m_order->mapToSource(shown));
    if (m_scene.contains(row.node())) {
        emit nodeRequested(row.node());
        return;
    }
    const QString file = row.result.output.isEmpty() ? row.result.path : row.result.output;
    const QString folder = QFileInfo(file).absolutePath();
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder)))
        tnLog::warning("The folder %s cannot be shown.", qUtf8Printable(folder));
}

void ResultsPane::updateActions()
{
    m_again->setEnabled(!wantedAgain().isEmpty());
    m_copy->setEnabled(m_view->selectionModel()->hasSelection());
    m_save->setEnabled(m_model->rowCount() > 0);
}

} // namespace tnhost
