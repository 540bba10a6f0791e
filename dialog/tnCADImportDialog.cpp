#include "dialog/tnCADImportDialog.h"

#include "dialog/PanelFitter.h"
#include "dialog/PathProgress.h"
#include "filelist/tnCADImportFileModel.h"
#include "logbook/logbookPath.h"
#include "modes/tnImportMode.h"
#include "module/getService.h"
#include "platform/tnFileIOService.h"
#include "platform/tnWaitCursor.h"
#include "records/FolderSearch.h"
#include "records/tnFileTyp.h"
#include "states/tnCADImportAddFolderState.h"
#include "states/tnCADImportInitState.h"
#include "states/tnCADImportReloadState.h"
#include "states/tnCADImportRunState.h"

#include <QtCore/QItemSelection>
#include <QtCore/QMimeData>
#include <QtCore/QPointer>
#include <QtCore/QSettings>
#include <QtGui/QDropEvent>

namespace {

struct WindowSetting {
    const char *key;
    QVariant (*current)(const tnCADImportDialog &);
    void (*restore)(tnCADImportDialog &, const QVariant &);
};

QTNCollapsibleFrame *frame(const tnCADImportDialog &dialog,
                           QTNCollapsibleFrame *Ui_tnImportDialog::*member)
{
    return dialog.*member;
}

QTNCollapsibleFrame *frame(const tnCADImportDialog &dialog,
                           QTNCollapsibleFrame *tnTesselationSettings::*member)
{
    return dialog._tesselation->*member;
}

template <auto member>
constexpr WindowSetting collapseState(const char *key)
{
    return {key,
            [](const tnCADImportDialog &dialog) {
                return QVariant(frame(dialog, member)->isCollapsed());
            },
            [](tnCADImportDialog &dialog, const QVariant &value) {
                frame(dialog, member)->setCollapsed(value.toBool());
            }};
}

void restoreSplitter(tnCADImportDialog &dialog, const QVariant &value)
{
    QSplitter *const splitter = dialog._splitter;
    const QByteArray before = splitter->saveState();
    const int handleWidth = splitter->handleWidth();
    splitter->restoreState(value.toByteArray());
    // The state holds more than the position, and what is damaged now would be saved again.
    if (splitter->orientation() != Qt::Horizontal || splitter->handleWidth() != handleWidth)
        splitter->restoreState(before);
}

using Form = Ui_tnImportDialog;
using Tessellation = tnTesselationSettings;

/// In the order in which they are read and written.
constexpr WindowSetting windowSettings[] = {
    {"importDialog/geometry",
     [](const tnCADImportDialog &dialog) { return QVariant(dialog.saveGeometry()); },
     [](tnCADImportDialog &dialog, const QVariant &value) {
         dialog.restoreGeometry(value.toByteArray());
     }},
    collapseState<&Form::_general_settings>("importDialog/sharedCadOptionsCollapseState"),
    collapseState<&Form::_advanced_settings>("importDialog/importOptionsCollapseState"),
    collapseState<&Tessellation::tessellationFrame>("importDialog/tessellationCollapseState"),
    collapseState<&Tessellation::advancedFrame>("importDialog/advancedOptionsCollapseState"),
    collapseState<&Form::_file_specific_options>("importDialog/fileSpecificOptionsCollapseState"),
    collapseState<&Form::_project_settings>("importDialog/projectMergeOptionsCollapseState"),
    collapseState<&Form::_scene_settings>("importDialog/globalSceneOptionsCollapseState"),
    {"importDialog/splitterState",
     [](const tnCADImportDialog &dialog) { return QVariant(dialog._splitter->saveState()); },
     &restoreSplitter},
};

struct ItemToolTip {
    QComboBox *Form::*box;
    int item;
    const char *text;
};

constexpr ItemToolTip itemToolTips[] = {
    {&Form::m_referenceBehaviorComboBox, 0,
     QT_TRANSLATE_NOOP("tnCADImportDialog", "Imports the file, keeping all existing references.")},
    {&Form::m_referenceBehaviorComboBox, 1,
     QT_TRANSLATE_NOOP("tnCADImportDialog",
                       "Imports the file, combining all references into the project (original file "
                       "unchanged).")},
    {&Form::_globalReferenceBehavior, 0,
     QT_TRANSLATE_NOOP("tnCADImportDialog",
                       "Imports the file, but combines all references into the project, removing "
                       "the file/reference information.")},
    {&Form::_globalReferenceBehavior, 1,
     QT_TRANSLATE_NOOP("tnCADImportDialog", "Imports the file, treating it as source reference.")},
};

constexpr auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);

} // namespace

tnCADImportDialog::tnCADImportDialog(QWidget *parent)
    : QDialog(parent)
{
    createModes();
    setupUi(this);
    setItemToolTips();
    _max_procs->setValue(getService<tnFileIOService>()->getMaxParallelProcesses());
    _output_dir->setText(defaultOutputDirectory());
    readSceneImportSettings();
    readProjectMergeSettings();
    readXlatSettings();
    tnCADImportInitState(this).enter();
    fitForm();
    restoreWindowSettings();

    // Handlers are called in the order of connecting, and those of the options rely on it: what a
    // single option has to say comes before the watchers, which store all of them.
    connectWidgets();
    connectService();
    connectSearch();
    connectSettingsWatchers();
}

tnCADImportDialog::~tnCADImportDialog()
{
    for (FolderSearch *search : m_dropSearches)
        search->discard();
    saveWindowSettings();
    hide(); // fields that lose the focus still tell of their values, while there is who hears it
}

void tnCADImportDialog::setItemToolTips()
{
    for (const ItemToolTip &toolTip : itemToolTips)
        (this->*toolTip.box)->setItemData(toolTip.item, tr(toolTip.text), Qt::ToolTipRole);
}

/// What is not the form's but that of the texts, fonts and widgets that come together in it.
void tnCADImportDialog::fitForm()
{
    // The view makes its header before all other widgets, which would be the first stop of the Tab
    // key then.
    setTabOrder(tableView, tableView->horizontalHeader());

    // No text may widen the window: neither a status nor the one label that is wider than its
    // column.
    _result->setWordWrap(true);
    label_10->setWordWrap(true);

    // The last column stretches, but not below its own width, which would be a scroll bar's worth.
    tableView->horizontalHeader()->resizeSection(tnCADImportFileModel::StateColumn, 60);

    // The panel is to do without a horizontal scroll bar, and its scroll bar is frame enough. With
    // a large font the list keeps the side that it has with the usual one.
    new PanelFitter(_settings, width() - _settings->minimumWidth());
    QMargins margins = gridLayout_5->contentsMargins();
    margins.setLeft(0);
    margins.setRight(2);
    gridLayout_5->setContentsMargins(margins);
    gridLayout_3->setHorizontalSpacing(gridLayout->horizontalSpacing());
}

void tnCADImportDialog::restoreWindowSettings()
{
    const QSettings settings;
    for (const WindowSetting &setting : windowSettings) {
        const QString key = QLatin1String(setting.key);
        if (settings.contains(key))
            setting.restore(*this, settings.value(key));
    }
}

void tnCADImportDialog::saveWindowSettings() const
{
    QSettings settings;
    for (const WindowSetting &setting : windowSettings)
        settings.setValue(QLatin1String(setting.key), setting.current(*this));
}

void tnCADImportDialog::connectWidgets()
{
    connect(fileModel(), &tnCADImportFileModel::changed, this,
            &tnCADImportDialog::updateImportButton);
    connect(fileModel(), &tnCADImportFileModel::changed, this, &tnCADImportDialog::updateFileTypes);

    connect(_pbAdd, &QPushButton::clicked, tableView, &tnCADImportTableView::onAdd);
    connect(_pbRemove, &QPushButton::clicked, tableView, &tnCADImportTableView::onRemove);
    connect(_pbDefaults, &QPushButton::clicked, this, &tnCADImportDialog::onDefaults);
    connect(_pbImport, &QPushButton::clicked, this, &tnCADImportDialog::onImport);
    connect(_pbClose, &QPushButton::clicked, this, &tnCADImportDialog::onClose);
    connect(_pbReloadOk, &QPushButton::clicked, this, &tnCADImportDialog::onReloadOk);
    connect(_pbReloadCancel, &QPushButton::clicked, this, &tnCADImportDialog::onClose);
    connect(_tbOutputPath, &QPushButton::clicked, this,
            &tnCADImportDialog::onSelectOutputDirectory);
    for (const QPushButton *button : {_assetManager, _assetManager2})
        connect(button, &QPushButton::clicked, this, &tnCADImportDialog::onAssetManager);
    connect(_cbFileType, indexChanged, this, &tnCADImportDialog::onTypeChanged);
    connect(_cbMode, indexChanged, this, &tnCADImportDialog::selectMode);
    connect(_cbImportSurfaces, indexChanged, this, &tnCADImportDialog::onSurfacesChanged);
    connect(_abort, &QPushButton::clicked, this, &tnCADImportDialog::onAbort);
    connect(_materialAssignment, indexChanged, this,
            [this](int index) { _assetManager2->setVisible(index == 2); });
    connect(m_importerVersion, indexChanged, this, &tnCADImportDialog::showFixOrientation);
    for (QComboBox *box : {m_referenceBehaviorComboBox, _globalReferenceBehavior}) {
        connect(box, indexChanged, this, [box](int index) {
            box->setToolTip(box->itemData(index, Qt::ToolTipRole).toString());
        });
    }
}

void tnCADImportDialog::connectSearch()
{
    const tnFileTyp *const search = &tnFileTyp::instance();
    auto *const progress = new PathProgress(_lbDirectory);
    connect(search, &tnFileTyp::enterDirectory, progress, &PathProgress::show);
    connect(_pbAbort, &QPushButton::clicked, search, &tnFileTyp::stopSearch);
    connect(search, &tnFileTyp::startSearch, this, [this] { setSearchVisible(true); });
    connect(search, &tnFileTyp::endSearch, this, [this] { setSearchVisible(false); });
    connect(this, &QDialog::finished, this, [this] {
        // Who closes the window ends what was dropped there; a command's search only where the
        // window shows nothing else.
        for (FolderSearch *shown : m_dropSearches.isEmpty() ? m_commandSearches : m_dropSearches)
            shown->discard();
        // Else the next show() would take the window back to its first place.
        setAttribute(Qt::WA_Moved);
    });

    connect(tableView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this](const QItemSelection &selected) { _pbRemove->setEnabled(!selected.isEmpty()); });
}

/// The working copy of the options follows the screen at any time.
void tnCADImportDialog::connectSettingsWatchers()
{
    for (const auto *box : findChildren<QCheckBox *>())
        connect(box, &QCheckBox::toggled, this, &tnCADImportDialog::updateSettings);
    for (const auto *box : findChildren<QDoubleSpinBox *>()) {
        connect(box, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                &tnCADImportDialog::updateSettings);
    }
    for (const auto *box : findChildren<QComboBox *>())
        connect(box, indexChanged, this, &tnCADImportDialog::updateSettings);
}

tnCADImportFileModel *tnCADImportDialog::fileModel() const
{
    return tableView->fileModel();
}

void tnCADImportDialog::prepareImport(const QStringList &files, const tndNode &node, int entry)
{
    // What was dropped belongs to the list that ends here. Searches of commands go on unseen, for
    // their files begin a list of their own.
    for (FolderSearch *search : m_dropSearches)
        search->discard();
    m_dropSearches.clear();
    m_commandSearches.clear();
    m_isRunning = false;

    fileModel()->clear();
    int mode = _cbMode->currentIndex();
    switch (entry) {
    case AddFolder:
        tnCADImportAddFolderState(this).enter();
        break;
    case Run:
        tnCADImportRunState(this).enter();
        break;
    case Reload: {
        tnCADImportReloadState(this, files.size() >= 2).enter();
        // Files that are in the scene are always replaced there.
        const QSignalBlocker quietMode(_cbMode);
        const QSignalBlocker quietBehavior(_globalReferenceBehavior);
        _cbMode->setCurrentIndex(0);
        _globalReferenceBehavior->setCurrentIndex(1);
        mode = 0;
        break;
    }
    default:
        tnCADImportAddFilesState(this).enter();
    }
    selectMode(mode);
    readXlatSettings();
    const tnCADFileTypes::FileType type = currentType();
    showXlatSettings(type);
    applyFileTypeGroups(type);
    appendFiles(files);
    m_targetNode = node;
}

QStringList tnCADImportDialog::filterFiles(const QStringList &files) const
{
    return tnFileTyp::instance().supportedFiles(files);
}

// Events are processed during a search: afterwards the list may have been begun afresh, so that the
// search is no longer among those that belong to it, and the dialog may have gone.

QStringList tnCADImportDialog::searchUrls(const QList<QUrl> &urls)
{
    const QPointer<tnCADImportDialog> self(this);
    FolderSearch search;
    m_commandSearches.push_back(&search);
    const QStringList files = search.run(urls);
    if (self && m_commandSearches.removeOne(&search))
        setSearchVisible(isSearching());
    return files;
}

void tnCADImportDialog::appendFiles(const QStringList &files)
{
    fileModel()->addFiles(filterFiles(files));
}

void tnCADImportDialog::addDroppedUrls(const QList<QUrl> &urls)
{
    if (urls.isEmpty())
        return;
    const QPointer<tnCADImportDialog> self(this);
    tnCADImportAddFolderState(this).enter();
    const tnWaitCursor waitCursor;
    FolderSearch search;
    m_dropSearches.push_back(&search);
    const QStringList files = search.run(urls);
    if (!self || !m_dropSearches.removeOne(&search))
        return;
    showWhatRuns();
    fileModel()->addFiles(files);
}

void tnCADImportDialog::setSearchVisible(bool visible)
{
    _lbDirectory->setVisible(visible);
    _pbAbort->setVisible(visible);
}

bool tnCADImportDialog::isSearching() const
{
    return !m_dropSearches.isEmpty() || !m_commandSearches.isEmpty();
}

/// The look at the end of a drop's search or of a batch: that of what is still going on.
void tnCADImportDialog::showWhatRuns()
{
    if (!m_dropSearches.isEmpty()) {
        tnCADImportAddFolderState(this).enter();
    } else if (m_isRunning) {
        // A second start would send what is waiting in the running batch once more.
        tnCADImportRunState(this).enter();
        updateImportState();
    } else {
        tnCADImportAddFilesState(this).enter();
    }
    setSearchVisible(isSearching());
}

void tnCADImportDialog::addPartFiles(const QStringList &files, const QString &parent)
{
    fileModel()->addChildFiles(filterFiles(files), parent);
}

void tnCADImportDialog::onClose()
{
    fileModel()->clear();
    _abort->setEnabled(true);
    reject();
}

void tnCADImportDialog::onReloadOk()
{
    writeSettingsToService();
    fileModel()->clear();
    accept();
}

void tnCADImportDialog::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void tnCADImportDialog::dropEvent(QDropEvent *event)
{
    if (!event->mimeData()->hasUrls())
        return;
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty())
        return;
    addDroppedUrls(urls);
    event->acceptProposedAction();
}
