#pragma once

#include "platform/PropertyListFiles.h"
#include "platform/scripted/DesktopWorld.h"

namespace vardel::scripted {

// The scenario's virtual property-list files; no other file exists.
class ScriptedPropertyListFiles final : public PropertyListFiles {
public:
    explicit ScriptedPropertyListFiles(const DesktopWorld& world)
        : world_(world)
    {
    }

    std::optional<Value> read(const std::string& path) override
    {
        auto found = world_.propertyLists.find(path);
        if (found == world_.propertyLists.end())
            return std::nullopt;
        return found->second;
    }

private:
    const DesktopWorld& world_;
};

} // namespace vardel::scripted
