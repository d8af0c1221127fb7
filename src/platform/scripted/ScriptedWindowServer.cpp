#include "platform/scripted/ScriptedWindowServer.h"

namespace vardel::scripted {

Value::List ScriptedWindowServer::onScreenWindowList()
{
    if (world_.screenCaptureAccess)
        return world_.windowList;
    Value::List windows;
    for (const Value& window : world_.windowList) {
        Value::Dictionary entry = *window.asDictionary();
        entry.erase(WindowInfoKey::name);
        windows.push_back(std::move(entry));
    }
    return windows;
}

bool ScriptedWindowServer::requestScreenCaptureAccess()
{
    trace_.write("screenCaptureRequest", nlohmann::ordered_json::object());
    return world_.screenCaptureAccess;
}

} // namespace vardel::scripted
