#pragma once

#include "platform/AXUIElement.h"

#include <optional>
#include <string>

namespace vardel::scripted {

// The system-wide element: on the scripted desktop it only carries the global messaging time-out.
class SystemWideElement final : public AXUIElementImpl {
public:
    bool isEqual(const AXUIElementImpl& other) const override
    {
        return dynamic_cast<const SystemWideElement*>(&other) != nullptr;
    }
    std::optional<std::string> traceName() const override { return std::nullopt; }
};

} // namespace vardel::scripted
