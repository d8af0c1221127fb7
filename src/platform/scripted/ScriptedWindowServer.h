#pragma once

#include "platform/WindowServer.h"
#include "platform/scripted/DesktopWorld.h"
#include "platform/scripted/TraceWriter.h"

namespace vardel::scripted {

// The scenario's screens and window list. Without the screen-capture permission the window list
// carries no window names, as on the platform.
class ScriptedWindowServer final : public WindowServer {
public:
    ScriptedWindowServer(const DesktopWorld& world, TraceWriter& trace)
        : world_(world)
        , trace_(trace)
    {
    }

    std::vector<Rect> screenFrames() override { return world_.screens; }
    Value::List onScreenWindowList() override;
    bool preflightScreenCaptureAccess() override { return world_.screenCaptureAccess; }
    // The request is traced; the answer is the scenario's permission.
    bool requestScreenCaptureAccess() override;

private:
    const DesktopWorld& world_;
    TraceWriter& trace_;
};

} // namespace vardel::scripted
