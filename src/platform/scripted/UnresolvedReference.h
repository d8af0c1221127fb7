#pragma once

#include "platform/AXUIElement.h"

#include <optional>
#include <string>

namespace vardel::scripted {

// A {"ref": id} as read from the scenario, before the element it names exists. Building an element
// tree replaces it by a reference to the live element.
class UnresolvedReference final : public AXUIElementImpl {
public:
    explicit UnresolvedReference(std::string id)
        : id_(std::move(id))
    {
    }

    const std::string& id() const { return id_; }

    bool isEqual(const AXUIElementImpl& other) const override;
    std::optional<std::string> traceName() const override { return id_; }

private:
    std::string id_;
};

} // namespace vardel::scripted
