#pragma once

class QDialog;

namespace tnhost {

/// The import dialog of the plug-in, as the host knows it: a window of that name. No command brings
/// it up again without beginning a new list, so whoever wants to see it looks for it.
class PluginDialog {
public:
    static constexpr const char *name = "tnImportDialog";

    PluginDialog() = delete;

    /// The dialog, on show or not; null before its making and after its end.
    static QDialog *find();
    /// Brings it before the user, however it was closed, with the list that it had then. False when
    /// there is none.
    static bool show();
};

} // namespace tnhost
