#pragma once

#include "platform/AXUIElement.h"
#include "platform/Accessibility.h"

#include <memory>
#include <optional>
#include <string>

namespace vardel::scripted {

class ElementTree;
class ScriptedElement;

// A reference to an element of the scripted desktop. Like the platform's references it outlives
// its element: once the element's tree is gone, calls on it fail as on an invalid element.
class ScriptedElementReference final : public AXUIElementImpl {
public:
    ScriptedElementReference(std::weak_ptr<ElementTree>, ScriptedElement&, ProcessIdentifier);

    bool isEqual(const AXUIElementImpl& other) const override;
    std::optional<std::string> traceName() const override { return id_; }

    ProcessIdentifier pid() const { return pid_; }
    // Null once the element's application terminated or its interface was replaced.
    std::shared_ptr<ElementTree> tree() const { return tree_.lock(); }
    // Only while tree() is held.
    ScriptedElement& element() const { return *element_; }

    // A time-out set on a reference applies to that reference only, not to others equal to it.
    std::optional<double> messagingTimeout() const { return messagingTimeout_; }
    void setMessagingTimeout(std::optional<double> seconds) const { messagingTimeout_ = seconds; }

private:
    std::weak_ptr<ElementTree> tree_;
    ScriptedElement* element_;
    ProcessIdentifier pid_;
    std::optional<std::string> id_;
    // References are shared as const, like the platform's; the time-out is the one setting they carry.
    mutable std::optional<double> messagingTimeout_;
};

} // namespace vardel::scripted
