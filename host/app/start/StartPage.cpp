#include "host/app/start/StartPage.h"

#include "host/app/start/ImportCommands.h"
#include "host/app/start/RecentFiles.h"
#include "host/import/InputCheck.h"
#include "host/services/HostIcons.h"
#include "host/services/InstalledFiles.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QVBoxLayout>

namespace tnhost {

namespace {

constexpr int mostLinks = 5;
constexpr double titleScale = 1.6;

QString typeNames()
{
    QStringList names;
    for (const tnCADFileTypes::FileTypeFacts &facts : tnCADFileTypes::fileTypeFacts) {
        if (InputCheck::isConvertible(facts.type))
            names << QLatin1String(facts.name);
    }
    return names.join(QLatin1String(", "));
}

QLabel *addText(QVBoxLayout *layout, const QString &text, double scale = 1.0)
{
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * scale);
    label->setFont(font);
    layout->addWidget(label);
    return label;
}

QPushButton *addButton(QVBoxLayout *layout, const QString &icon, const QString &text)
{
    auto *button = new QPushButton(HostIcons::icon(icon), text);
    layout->addWidget(button, 0, Qt::AlignHCenter);
    return button;
}

} // namespace

StartPage::StartPage(ImportCommands &commands, const RecentFiles &recent, QWidget *parent)
    : QScrollArea(parent)
    , m_commands(commands)
    , m_recent(recent)
    , m_links(new QVBoxLayout)
{
    auto *content = new QWidget;
    setWidget(content);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    auto *layout = new QVBoxLayout(content);
    layout->addStretch(1);
    addText(layout, tr("Drop CAD files or folders here"), titleScale);
    addText(layout, typeNames());
    layout->addSpacing(fontMetrics().height());
    addButtons(layout);
    layout->addSpacing(fontMetrics().height());
    layout->addLayout(m_links);
    layout->addStretch(1);
    connect(&recent, &RecentFiles::changed, this, &StartPage::showRecent);
    showRecent();
}

void StartPage::addButtons(QVBoxLayout *layout)
{
    const QPushButton *files = addButton(layout, QStringLiteral("FileOpen"), tr("Import CAD…"));
    const QPushButton *folder =
        addButton(layout, QStringLiteral("FolderOpen"), tr("Import Folder…"));
    connect(files, &QPushButton::clicked, &m_commands, &ImportCommands::chooseFiles);
    connect(folder, &QPushButton::clicked, &m_commands,
            [this] { m_commands.chooseFolder(window()); });
    const QString sample = InstalledFiles::sample();
    if (sample.isEmpty())
        return;
    QPushButton *open = addButton(layout, QStringLiteral("Application"), tr("Open a Sample"));
    open->setObjectName(QStringLiteral("openSample"));
    connect(open, &QPushButton::clicked, &m_commands,
            [this, sample] { m_commands.importUrls({QUrl::fromLocalFile(sample)}); });
}

void StartPage::showRecent()
{
    while (QLayoutItem *old = m_links->takeAt(0)) {
        if (old->widget())
            old->widget()->deleteLater(); // may be the one that was clicked
        delete old;
    }
    for (const QString &path : m_recent.paths()) {
        if (!QFileInfo::exists(path) || m_links->count() > mostLinks)
            continue;
        if (m_links->isEmpty())
            addText(m_links, tr("Recent files"));
        auto *link = new QToolButton;
        link->setAutoRaise(true);
        link->setText(QFileInfo(path).fileName().replace(QLatin1Char('&'), QLatin1String("&&")));
        link->setToolTip(QDir::toNativeSeparators(path));
        connect(link, &QToolButton::clicked, &m_commands,
                [this, path] { m_commands.importUrls({QUrl::fromLocalFile(path)}); });
        m_links->addWidget(link, 0, Qt::AlignHCenter);
    }
}

} // namespace tnhost
