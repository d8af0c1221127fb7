#pragma once

#include "platform/AXUIElement.h"
#include "platform/Accessibility.h"
#include "platform/Geometry.h"
#include "platform/scripted/Scenario.h"
#include "platform/scripted/ScriptedElement.h"

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace vardel::scripted {

// The live element tree of a running application. References to its elements hold it weakly: once
// the application terminates or its interface is replaced, the tree is dropped and they go invalid.
class ElementTree final : public std::enable_shared_from_this<ElementTree> {
public:
    // Without a description, the tree is a root without attributes.
    static std::shared_ptr<ElementTree> create(ProcessIdentifier, const ElementTreeDescription*);

    ProcessIdentifier pid() const { return pid_; }
    ScriptedElement& root() { return *elements_.front(); }
    ScriptedElement* find(std::string_view id);
    AXUIElement reference(ScriptedElement&);

    // The deepest element whose frame contains the point, later siblings lying above earlier ones.
    ScriptedElement* elementAt(Point);

    // Replaces the scenario's {"ref"} placeholders once every element they may name exists.
    void resolveReferences(const std::function<Value(const Value&)>& resolve);

private:
    explicit ElementTree(ProcessIdentifier pid)
        : pid_(pid)
    {
    }

    void addImpliedAttributes(const ElementTreeDescription&);

    ProcessIdentifier pid_;
    // Flat, so that dropping a deep tree does not recurse.
    std::vector<std::unique_ptr<ScriptedElement>> elements_;
};

} // namespace vardel::scripted
