#pragma once

#include "host/headless/BatchOptions.h"

#include <QtCore/QString>

class QDialog;
class QPushButton;

namespace tnhost {

/// The import dialog's widgets, by the names that they have in its form: does with them what a user
/// would do. The host knows no more of the dialog than a user knows.
class DialogDriver {
public:
    /// Looks for the dialog among the windows, shown or not. Gives false, with a sentence in
    /// problem, when there is none or when it lacks a widget.
    bool find(QString *problem);

    // From here on only after find() has given true, and while the dialog lives.

    bool isVisible() const;
    /// Sets the widgets; gives what the dialog made of an option that it does not take, else an
    /// empty text.
    QString apply(const BatchOptions &options);
    QString outputDirectory() const;
    bool canImport() const;
    void pressImport();
    void pressClose();

private:
    template <typename Widget>
    Widget *widget(const char *name) const;

    QDialog *m_dialog = nullptr;
};

} // namespace tnhost
