#pragma once

#include <QtCore/QPointer>

class tnCADImportDialog;

/// The one import dialog of the process: makes it on first need and ends it in time. GUI thread
/// only.
///
/// No widget can outlive the application, and the window settings that are written when the dialog
/// ends need libraries that are still alive. So it goes with the first of these:
/// - the host's main window, whose child it is;
/// - the application, when main() returns and the module, in static storage, is still there;
/// - the process, when exit() is called and leaves the application standing;
/// - the module, by end().
class DialogHolder {
public:
    DialogHolder() = delete;

    /// The dialog, null before its making and after its end. Any event may end it.
    static tnCADImportDialog *dialog();
    /// Whether there is what a dialog needs: a QApplication and the host's file service. What is
    /// missing goes into the log.
    static bool canMake();
    /// The dialog, made as a child of the main window if there is none yet. Null when canMake()
    /// says no, also where the dialog was made in better times.
    static tnCADImportDialog *ensure();
    /// Deletes the dialog, if there is one.
    static void end();

private:
    static QPointer<tnCADImportDialog> s_dialog;
};
