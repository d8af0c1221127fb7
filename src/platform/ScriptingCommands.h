#pragma once

#include "platform/Value.h"

#include <functional>
#include <string>

namespace vardel {

// A command that another program sent to this one, with its evaluated arguments by key.
struct ScriptingCommandRequest {
    std::string name;
    Value::Dictionary arguments;
};

// Where commands from other programs arrive. They are delivered on the main run loop.
class ScriptingCommands {
public:
    virtual ~ScriptingCommands() = default;
    virtual void setHandler(std::function<void(const ScriptingCommandRequest&)>) = 0;
};

} // namespace vardel
