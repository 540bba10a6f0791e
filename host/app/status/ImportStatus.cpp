#include "host/app/status/ImportStatus.h"

#include "host/app/status/ImportSummary.h"
#include "host/services/FileService.h"
#include "host/services/HostIcons.h"
#include "host/services/PluginDialog.h"

#include <QtCore/QLocale>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QToolButton>

#include <algorithm>

namespace tnhost {

namespace {

constexpr int barWidth = 160;

} // namespace

ImportStatus::ImportStatus(FileService &service, QWidget *parent)
    : QWidget(parent)
    , m_service(service)
    , m_bar(new QProgressBar)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    m_text = addButton(QStringLiteral("importText"), {}, tr("Shows the import results"));
    m_text->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_text->hide();
    m_bar->setFixedWidth(barWidth);
    layout->addWidget(m_bar);
    m_show = addButton(QStringLiteral("showDialog"), tr("Show"), tr("Shows the import dialog"));
    m_abort = addButton(QStringLiteral("abortImports"), tr("Abort"), tr("Ends all imports"));
    layout->addStretch();
    connect(m_text, &QToolButton::clicked, this, &ImportStatus::resultsRequested);
    connect(m_show, &QToolButton::clicked, &PluginDialog::show);
    connect(m_abort, &QToolButton::clicked, this, &ImportStatus::abortAll);

    const ImportLog &log = service.log();
    connect(&log, &ImportLog::jobStarted, this, &ImportStatus::onJobStarted);
    connect(&log, &ImportLog::stepTaken, this, &ImportStatus::refresh);
    connect(&log, &ImportLog::fileEnded, this, &ImportStatus::refresh);
    connect(&log, &ImportLog::jobEnded, this, &ImportStatus::onJobEnded);
    showTools();
}

void ImportStatus::showSentence(const QString &sentence, FileResult::State state)
{
    if (isRunning() || sentence.isEmpty())
        return;
    m_text->setText(sentence);
    m_text->setIcon(
        HostIcons::icon(QStringLiteral("State") + QLatin1String(FileResult::word(state))));
    m_text->show();
}

QToolButton *ImportStatus::addButton(const QString &name, const QString &text, const QString &hint)
{
    auto *button = new QToolButton;
    button->setObjectName(name);
    button->setText(text);
    button->setToolTip(hint);
    button->setAutoRaise(true);
    layout()->addWidget(button);
    return button;
}

void ImportStatus::showTools()
{
    m_bar->setVisible(isRunning());
    m_abort->setVisible(isRunning());
    m_show->setVisible(isRunning() && PluginDialog::find());
}

void ImportStatus::onJobStarted(const JobResultPtr &job)
{
    if (m_running++ == 0)
        m_clock.start();
    m_jobs.push_back(job);
    m_text->setIcon({});
    m_text->show();
    m_abort->setEnabled(true);
    showTools();
    refresh();
}

void ImportStatus::onJobEnded(const JobResultPtr &job)
{
    if (std::find(m_jobs.begin(), m_jobs.end(), job) == m_jobs.end())
        return; // it had begun before
    --m_running;
    showTools();
    if (isRunning()) {
        refresh();
        return;
    }
    m_text->hide(); // a job may have had no file to tell of
    const ImportSummary summary(m_jobs, static_cast<double>(m_clock.elapsed()) / 1000.0);
    showSentence(summary.sentence(), summary.state());
    m_jobs.clear(); // who wants to keep results does so himself
}

void ImportStatus::refresh()
{
    if (!isRunning())
        return; // the job had begun before
    quint64 percentSum = 0;
    int files = 0;
    int open = 0;
    for (const JobResultPtr &job : m_jobs) {
        percentSum += job->percentSum;
        files += static_cast<int>(job->files.size());
        open += job->openFiles;
    }
    m_bar->setValue(files == 0 ? 0 : static_cast<int>(percentSum / static_cast<quint64>(files)));
    m_text->setText(tr("Importing … %1 of %2 files done")
                        .arg(QLocale().toString(files - open), QLocale().toString(files)));
}

void ImportStatus::abortAll()
{
    m_abort->setEnabled(false);
    for (const JobResultPtr &job : m_service.runningJobs())
        m_service.abortImport(job->id);
}

} // namespace tnhost
