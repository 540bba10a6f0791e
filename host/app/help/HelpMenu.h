#pragma once

#include <QtWidgets/QMenu>

namespace tnhost {

/// The guide, and what the program is made of.
class HelpMenu : public QMenu {
    Q_OBJECT

public:
    /// The converter's program is asked for its libraries when the user wants to know.
    explicit HelpMenu(const QString &converterProgram, QWidget *parent);

    /// What the program and its libraries are, a line each. Starts the converter and waits for it,
    /// three seconds at most.
    QStringList versions() const;

private:
    void showGuide();
    void showAbout();

    const QString m_converterProgram;
};

} // namespace tnhost
