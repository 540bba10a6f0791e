#include "host/headless/DialogDriver.h"

#include "host/services/PluginDialog.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

namespace tnhost {

namespace {

constexpr const char *modeBox = "_cbMode";
constexpr const char *outputField = "_output_dir";
constexpr const char *processesBox = "_max_procs";
constexpr const char *importButton = "_pbImport";
constexpr const char *closeButton = "_pbClose";

} // namespace

template <typename Widget>
Widget *DialogDriver::widget(const char *name) const
{
    return m_dialog->findChild<Widget *>(QLatin1String(name));
}

bool DialogDriver::find(QString *problem)
{
    m_dialog = PluginDialog::find();
    if (!m_dialog) {
        *problem = QStringLiteral("the plug-in has no dialog of the name %1")
                       .arg(QLatin1String(PluginDialog::name));
        return false;
    }
    const auto *mode = widget<QComboBox>(modeBox);
    const std::pair<const char *, bool> needed[] = {
        {modeBox, mode && mode->count() > static_cast<int>(BatchOptions::Mode::Convert)},
        {outputField, widget<QLineEdit>(outputField) != nullptr},
        {processesBox, widget<QSpinBox>(processesBox) != nullptr},
        {importButton, widget<QPushButton>(importButton) != nullptr},
        {closeButton, widget<QPushButton>(closeButton) != nullptr},
    };
    for (const auto &[name, isThere] : needed) {
        if (isThere)
            continue;
        *problem = QStringLiteral("the plug-in's dialog has no usable %1").arg(QLatin1String(name));
        return false;
    }
    return true;
}

bool DialogDriver::isVisible() const
{
    return m_dialog->isVisible();
}

QString DialogDriver::apply(const BatchOptions &options)
{
    widget<QComboBox>(modeBox)->setCurrentIndex(static_cast<int>(options.mode));
    if (!options.outputDirectory.isEmpty())
        widget<QLineEdit>(outputField)->setText(options.outputDirectory);
    // The dialog starts with the number that the service has, as far as its field goes.
    const int processes = widget<QSpinBox>(processesBox)->value();
    if (options.maxProcesses >= 0 && processes != options.maxProcesses)
        return QStringLiteral("The dialog takes %1 for the number of processes.").arg(processes);
    return {};
}

QString DialogDriver::outputDirectory() const
{
    return widget<QLineEdit>(outputField)->text();
}

bool DialogDriver::canImport() const
{
    return widget<QPushButton>(importButton)->isEnabled();
}

void DialogDriver::pressImport()
{
    widget<QPushButton>(importButton)->click();
}

void DialogDriver::pressClose()
{
    widget<QPushButton>(closeButton)->click();
}

} // namespace tnhost
