// The run of a batch: from the check of the output directory to the summary at its end.

#include "dialog/tnCADImportDialog.h"

#include "filelist/tnCADImportFileModel.h"
#include "modes/tnConvertMode.h"
#include "modes/tnImportMode.h"
#include "modes/tnLoadMode.h"
#include "module/getPulse.h"
#include "module/getService.h"
#include "platform/tnFile.h"
#include "platform/tnFileIOService.h"
#include "platform/tnLog.h"
#include "platform/tnPulseInterface.h"
#include "states/tnCADImportRunState.h"

#include <QtCore/QSettings>

/// In the order of the entries of _cbMode.
void tnCADImportDialog::createModes()
{
    m_modes.push_back(std::make_unique<tnLoadMode>(this));
    m_modes.push_back(std::make_unique<tnImportMode>(this));
    m_modes.push_back(std::make_unique<tnConvertMode>(this));
}

/// The events of all jobs count: the dialog doesn't ask who has started one.
void tnCADImportDialog::connectService()
{
    auto *service = getService<tnFileIOService>();
    connect(service, &tnFileIOService::startingImport, this,
            [this](quint64, unsigned int fileCount) { onStartingImport(fileCount); });
    connect(service, &tnFileIOService::importFinished, this,
            [this](quint64, double seconds) { onImportFinished(seconds); });
    connect(service, &tnFileIOService::childFileImportAdded, this,
            [this](quint64, const QString &parent, const QString &child) {
                onChildFileImportAdded(parent, child);
            });
    connect(service, &tnFileIOService::childFileImportFinished, this,
            [this] { onChildFileImportFinished(); });
    connect(service, &tnFileIOService::importProgressChanged, this,
            [this] { onImportProgressChanged(); });
}

void tnCADImportDialog::selectMode(int index)
{
    if (m_currentMode)
        m_currentMode->deactivate();
    m_currentMode = m_modes[static_cast<std::size_t>(index)].get();
    m_currentMode->activate();
}

void tnCADImportDialog::onImport()
{
    if (!checkOutputDirectory())
        return;
    _abort->setEnabled(true);
    tnCADImportRunState(this).enter();
    m_isRunning = true;
    // What the user sees first is imported first.
    m_currentMode->start(fileModel()->importableFiles(tableView->sortedRows()));
}

void tnCADImportDialog::reimportRow(int row)
{
    tnCADImportRunState(this).enter();
    const tndNode node = fileModel()->nodeOfRow(row);
    _abort->setEnabled(true);
    m_isRunning = true;
    m_currentMode->reimport(node);
}

/// The batch ends as any other does, by onImportFinished.
void tnCADImportDialog::onAbort()
{
    _abort->setEnabled(false);
    getService<tnFileIOService>()->abortImport(m_currentMode->jobId());
}

bool tnCADImportDialog::checkOutputDirectory()
{
    const std::string path = _output_dir->text().toStdString();
    tnFile::createPath(path);
    const bool writable = tnFile::checkWrite(path, false, false);
    if (!writable) {
        _output_dir->setFocus();
        tnLog::error("tCAD: output path '%s' is not writable!", path.c_str());
    }
    return writable;
}

bool tnCADImportDialog::hasLogbookEntries() const
{
    // Nothing keeps a host from showing the dialog before it has prepared an import.
    return m_currentMode && m_currentMode->hasLogbookEntries();
}

/// An aborted file holds the button back until it is taken from the list: the user is to decide
/// about it first.
void tnCADImportDialog::updateImportButton()
{
    const tnCADImportFileModel *model = fileModel();
    const int waiting = model->countFilesInState(ImportState::Pending, true)
        + model->countFilesInState(ImportState::Failed, true);
    _pbImport->setEnabled(waiting > 0 && model->countFilesInState(ImportState::Aborted, true) == 0);
}

void tnCADImportDialog::updateImportState()
{
    QString text = tr("Importing %1 file(s) ... %2 left.")
                       .arg(m_totalFiles)
                       .arg(m_totalFiles - m_finishedFiles);
    if (m_partImports > 0)
        text += tr(" %3 part import(s) running ... %4 left.")
                    .arg(m_partImports)
                    .arg(m_partImports - m_finishedPartImports);
    _result->setText(text);
    getPulse()->notifyActivity();
}

void tnCADImportDialog::onStartingImport(unsigned int fileCount)
{
    m_totalFiles = static_cast<int>(fileCount);
    m_finishedFiles = 0;
    m_partImports = 0;
    m_finishedPartImports = 0;
    updateImportState();
}

void tnCADImportDialog::onChildFileImportAdded(const QString &parent, const QString &child)
{
    addPartFiles({child}, parent);
    ++m_partImports;
    updateImportState();
}

void tnCADImportDialog::onChildFileImportFinished()
{
    ++m_finishedPartImports;
    updateImportState();
}

void tnCADImportDialog::onImportProgressChanged()
{
    ++m_finishedFiles;
    updateImportState();
}

void tnCADImportDialog::onImportFinished(double seconds)
{
    m_isRunning = false;
    showWhatRuns();
    tnCADImportFileModel *model = fileModel();
    model->promoteCompletedParents();
    updateImportButton();

    const int files = model->fileNames(true).size();
    const int succeeded = model->countFilesInState(ImportState::Succeeded, true);
    if (files != succeeded) {
        showFailureSummary(files - succeeded, seconds);
        return;
    }
    // What is being dropped or chosen, the user expects in this list. What a command searches for
    // begins a list of its own, whether the window is open or not.
    const bool isDone = m_dropSearches.isEmpty() && !tableView->isChoosing();
    if (isDone && QSettings().value(QStringLiteral("importDialog/closeOnSuccess"), true).toBool()) {
        m_commandSearches.clear();
        model->clear();
        _abort->setEnabled(true);
        reject();
    }
}

void tnCADImportDialog::showFailureSummary(int failed, double seconds)
{
    _result->setText(tr("%1 import(s) unsuccessful, duration ").arg(failed)
                     + tr("%1 seconds").arg(seconds));
}
