#include "host/app/help/HelpMenu.h"

#include "host/services/InstalledFiles.h"

#include <QtCore/QProcess>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QTextBrowser>

namespace tnhost {

namespace {

constexpr int converterPatience = 3000; // ms
constexpr QSize guideSize(900, 700);

} // namespace

HelpMenu::HelpMenu(const QString &converterProgram, QWidget *parent)
    : QMenu(tr("&Help"), parent)
    , m_converterProgram(converterProgram)
{
    QAction *guide =
        addAction(tr("User &Guide"), this, &HelpMenu::showGuide, QKeySequence::HelpContents);
    guide->setEnabled(!InstalledFiles::guide().isEmpty());
    addSeparator();
    addAction(tr("&About tnhost"), this, &HelpMenu::showAbout);
}

QStringList HelpMenu::versions() const
{
    QStringList lines{QStringLiteral("tnhost " TN_VERSION),
                      QStringLiteral("Qt %1").arg(QLatin1String(qVersion()))};
    QProcess converter;
    converter.start(m_converterProgram, {QStringLiteral("--libraries")});
    if (!converter.waitForFinished(converterPatience) || converter.exitCode() != 0)
        return lines << tr("The converter does not answer: %1").arg(m_converterProgram);
    const QString answer = QString::fromUtf8(converter.readAllStandardOutput());
    return lines << answer.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void HelpMenu::showGuide()
{
    auto *guide = new QTextBrowser(parentWidget());
    guide->setWindowFlag(Qt::Window);
    guide->setAttribute(Qt::WA_DeleteOnClose);
    guide->setWindowTitle(tr("User Guide"));
    guide->setOpenExternalLinks(true);
    guide->resize(guideSize);
    guide->setSource(QUrl::fromLocalFile(InstalledFiles::guide()));
    guide->show();
}

void HelpMenu::showAbout()
{
    auto *box = new QMessageBox(
        QMessageBox::Information, tr("About tnhost"),
        tr("Imports CAD and scene files into a scene, with the help of its plug-in."),
        QMessageBox::Close, parentWidget());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box->setInformativeText(versions().join(QLatin1Char('\n')));
    box->open();
}

} // namespace tnhost
