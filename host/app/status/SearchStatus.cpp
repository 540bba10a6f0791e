#include "host/app/status/SearchStatus.h"

#include "host/app/start/ImportCommands.h"

#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QToolButton>

namespace tnhost {

namespace {

constexpr int mostCharacters = 50;

} // namespace

SearchStatus::SearchStatus(ImportCommands &commands, QWidget *parent)
    : QWidget(parent)
    , m_text(new QLabel)
{
    auto *stop = new QToolButton;
    stop->setObjectName(QStringLiteral("stopSearch"));
    stop->setText(tr("Abort"));
    stop->setToolTip(tr("Ends the search; what was found is imported"));
    stop->setAutoRaise(true);
    m_text->setTextFormat(Qt::PlainText);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_text);
    layout->addWidget(stop);
    hide();
    connect(stop, &QToolButton::clicked, &commands, &ImportCommands::stopSearch);
    connect(&commands, &ImportCommands::searchEntered, this, &SearchStatus::showFolder);
    connect(&commands, &ImportCommands::searchEnded, this, &QWidget::hide);
}

void SearchStatus::showFolder(const QString &folder)
{
    const int width = mostCharacters * fontMetrics().averageCharWidth();
    m_text->setText(
        tr("Searching %1").arg(fontMetrics().elidedText(folder, Qt::ElideMiddle, width)));
    m_text->setToolTip(folder);
    show();
}

} // namespace tnhost
