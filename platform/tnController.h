#pragma once

#include "platform/tnPlatformExport.h"

#include <string>
#include <vector>

class QWidget;
class tnMessage;
class tnModuleBase;

/// The host's switchboard: named commands, the modules, the main window. GUI thread only. Its
/// registers outlive every object in static storage, so a module may still take its leave at
/// process exit.
class TNPLATFORM_EXPORT tnController {
public:
    using Callback = void (*)(tnMessage &);

    tnController() = delete;

    /// Registers a command; a second callback of one name replaces the first.
    static void addCB(const std::string &name, Callback callback);
    /// Withdraws a command; an unknown name does nothing.
    static void subCB(const std::string &name);
    /// Runs the command in place. Gives false when nobody has registered it.
    static bool callCB(const std::string &name, tnMessage &message);

    /// The main window, or null: without a GUI, before it is made and after it has gone.
    static QWidget *getMainWindow();
    static void setMainWindow(QWidget *window);

    /// The process runs without any user interface.
    static bool isNoGUI();
    static void setNoGUI(bool noGUI);
    /// The user interface exists, but shall stay out of sight.
    static bool isHideGUI();
    static void setHideGUI(bool hideGUI);

    /// Sends the message to the modules, in the order of their construction, until one gives
    /// something else than 0.
    static int broadcast(tnMessage &message);
    static const std::vector<tnModuleBase *> &modules();

private:
    friend class tnModuleBase;
    static void addModule(tnModuleBase *module);
    static void removeModule(tnModuleBase *module);
};
