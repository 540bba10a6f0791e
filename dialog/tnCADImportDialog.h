#pragma once

#include "platform/tnCADFileTypes.h"
#include "platform/tndNode.h"
#include "platform/tndXlatSettings.h"
#include "ui_tnImportDialog.h"

#include <QtCore/QList>
#include <QtCore/QStringList>
#include <QtCore/QUrl>
#include <QtCore/QVector>
#include <QtWidgets/QDialog>

#include <memory>
#include <unordered_map>
#include <vector>

class FolderSearch;
class tnCADImportFileModel;
class tnImportMode;

/// The import window and hub of the plug-in: the list of files, the options by file type, and the
/// batch that runs on them. It is shown non-modally and only hidden by closing; its window settings
/// are written when the object goes. GUI thread only.
///
/// States and modes work on the form's widgets, which are members by their object names.
class tnCADImportDialog : public QDialog, public Ui::tnImportDialog {
    Q_OBJECT

public:
    /// What prepareImport shows; any other code counts as AddFiles.
    enum Entry { AddFiles = 0, AddFolder = 1, Run = 2, Reload = 3 };

    explicit tnCADImportDialog(QWidget *parent);
    ~tnCADImportDialog() override;
    Q_DISABLE_COPY_MOVE(tnCADImportDialog)

    /// Begins with a fresh list under the target node (null: decided when the batch starts), in the
    /// look of the entry code. What the list held before is dropped.
    void prepareImport(const QStringList &files, const tndNode &node, int entry);

    /// What of the files the file service supports.
    QStringList filterFiles(const QStringList &files) const;
    /// The supported files at the urls, folders searched, on behalf of a command. Events are
    /// processed meanwhile, so the dialog may have gone afterwards. The search goes on when another
    /// import is prepared and when the dialog goes; it gives nothing when the application quits, or
    /// when the dialog is closed while this search is all that it shows as running.
    QStringList searchUrls(const QList<QUrl> &urls);
    /// Adds what of the files is supported and not yet in the list.
    void appendFiles(const QStringList &files);
    /// Searches the urls in the add folder look and adds what was found, unless the dialog was
    /// closed or another import prepared meanwhile. Comes also during another search, which then
    /// goes on when this one has ended.
    void addDroppedUrls(const QList<QUrl> &urls);
    /// Adds the parts of an assembly below its row; an unknown parent adds nothing.
    void addPartFiles(const QStringList &files, const QString &parent);

    /// The node under which the files go, null when the mode is to decide.
    tndNode targetNode() const { return m_targetNode; }

    /// Whether the file service keeps translator options of its own for the type. A type that the
    /// catalogue lacks is told on standard output.
    static bool supportsImportSettings(tnCADFileTypes::FileType type);

    void readSceneImportSettings();
    void readProjectMergeSettings();
    /// Takes the translator options of all types afresh from the file service, unwritten changes
    /// are lost.
    void readXlatSettings();
    /// Fills the widgets from the working copy of the type's options.
    void showXlatSettings(tnCADFileTypes::FileType type);
    /// What the widgets hold, on top of the working copy: fields without widget pass through.
    tndXlatSettings collectXlatSettings();
    /// Shows the option groups of the type and hides all others.
    void applyFileTypeGroups(tnCADFileTypes::FileType type);
    void applyGroupMask(unsigned int mask);
    /// Hands all options to the file service: translator options of the types in the list, number
    /// of processes, scene options, merge options.
    void writeSettingsToService();

    /// Whether the current mode's logbook has entries.
    bool hasLogbookEntries() const;
    /// Imports the source of the row's scene node again; a source row of the model.
    void reimportRow(int row);

public slots:
    void onDefaults();
    void onImport();

protected slots:
    void onTypeChanged(int typ);
    void onClose();
    void onReloadOk();
    void updateImportButton();
    void updateFileTypes();
    void onSelectOutputDirectory();
    void onAssetManager();
    void updateSettings();
    void updateImportState();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    tnCADImportFileModel *fileModel() const;
    /// The type of the current item of _cbFileType, 0 without items.
    tnCADFileTypes::FileType currentType() const;

    // Construction.
    void createModes();
    void setItemToolTips();
    void fitForm();
    void restoreWindowSettings();
    void saveWindowSettings() const;
    void connectWidgets();
    void connectService();
    void connectSearch();
    void connectSettingsWatchers();

    // Options by file type.
    void updateFixOrientation();
    void showFixOrientation();
    void onSurfacesChanged();
    void updateSurfaceOptions();

    // Searches.
    void setSearchVisible(bool visible);
    bool isSearching() const;
    void showWhatRuns();

    // The run of a batch.
    void selectMode(int index);
    void onAbort();
    bool checkOutputDirectory();
    void onStartingImport(unsigned int fileCount);
    void onImportFinished(double seconds);
    void onChildFileImportAdded(const QString &parent, const QString &child);
    void onChildFileImportFinished();
    void onImportProgressChanged();
    void showFailureSummary(int failed, double seconds);

    tnImportMode *m_currentMode = nullptr;
    std::vector<std::unique_ptr<tnImportMode>> m_modes;
    bool m_legacyLoader = false;
    bool m_fixOrientationEnabled = true;
    bool m_fixOrientationChecked = true;
    tnCADFileTypes::FileType m_currentFileType = tnCADFileTypes::Undefined;
    int m_totalFiles = 0;
    int m_finishedFiles = 0;
    int m_partImports = 0;
    int m_finishedPartImports = 0;
    tndNode m_targetNode;
    std::unordered_map<tnCADFileTypes::FileType, tndXlatSettings> m_xlatSettings;
    bool m_isRunning = false; ///< a batch that was started here and is followed
    // Running searches that belong to the present list, on the stacks of their callers.
    QVector<FolderSearch *> m_dropSearches;
    QVector<FolderSearch *> m_commandSearches;
};
