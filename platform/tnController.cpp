#include "platform/tnController.h"

#include "platform/tnModuleBase.h"

#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

#include <algorithm>
#include <unordered_map>

namespace {

struct Registers {
    std::unordered_map<std::string, tnController::Callback> callbacks;
    std::vector<tnModuleBase *> modules;
    QPointer<QWidget> mainWindow;
    bool noGUI = false;
    bool hideGUI = false;
};

// Never destroyed: modules in static storage withdraw their commands after main() has ended.
Registers &registers()
{
    static auto *const all = new Registers;
    return *all;
}

} // namespace

void tnController::addCB(const std::string &name, Callback callback)
{
    registers().callbacks[name] = callback;
}

void tnController::subCB(const std::string &name)
{
    registers().callbacks.erase(name);
}

bool tnController::callCB(const std::string &name, tnMessage &message)
{
    const auto &callbacks = registers().callbacks;
    const auto found = callbacks.find(name);
    if (found == callbacks.end())
        return false;
    // A copy, since the command may register or withdraw others.
    const Callback callback = found->second;
    callback(message);
    return true;
}

QWidget *tnController::getMainWindow()
{
    return registers().mainWindow;
}

void tnController::setMainWindow(QWidget *window)
{
    registers().mainWindow = window;
}

bool tnController::isNoGUI()
{
    return registers().noGUI;
}

void tnController::setNoGUI(bool noGUI)
{
    registers().noGUI = noGUI;
}

bool tnController::isHideGUI()
{
    return registers().hideGUI;
}

void tnController::setHideGUI(bool hideGUI)
{
    registers().hideGUI = hideGUI;
}

int tnController::broadcast(tnMessage &message)
{
    const std::vector<tnModuleBase *> receivers = registers().modules;
    for (tnModuleBase *module : receivers) {
        // A module that has gone meanwhile is passed over.
        const auto &alive = registers().modules;
        if (std::find(alive.begin(), alive.end(), module) == alive.end())
            continue;
        if (const int answer = module->message(message))
            return answer;
    }
    return 0;
}

const std::vector<tnModuleBase *> &tnController::modules()
{
    return registers().modules;
}

void tnController::addModule(tnModuleBase *module)
{
    registers().modules.push_back(module);
}

void tnController::removeModule(tnModuleBase *module)
{
    auto &modules = registers().modules;
    modules.erase(std::remove(modules.begin(), modules.end(), module), modules.end());
}
