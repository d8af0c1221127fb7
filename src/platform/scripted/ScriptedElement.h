#pragma once

#include "platform/Geometry.h"
#include "platform/scripted/Scenario.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vardel::scripted {

// One element of an application's live tree: its attributes in file order (implied ones included),
// actions and settable attributes. Owned by its ElementTree.
class ScriptedElement {
public:
    // An element without attributes, actions or children.
    ScriptedElement() = default;
    explicit ScriptedElement(const ElementDescription&);

    const std::optional<std::string>& id() const { return id_; }
    ScriptedElement* parent() const { return parent_; }
    const std::vector<ScriptedElement*>& children() const { return children_; }
    void addChild(ScriptedElement&);

    // Null when the element lacks the attribute.
    const AttributeValue* attribute(std::string_view name) const;
    // Replaces the value in its place, or adds the attribute last.
    void setAttribute(std::string_view name, AttributeValue);
    void removeAttribute(std::string_view name);
    std::vector<std::string> attributeNames() const;
    // Rewrites every attribute value that is not an error code.
    void transformValues(const std::function<Value(const Value&)>&);

    const std::vector<std::pair<std::string, std::string>>& actions() const { return actions_; }
    const std::string* actionDescription(std::string_view action) const;
    bool isSettable(std::string_view attribute) const;

    // The rectangle of AXPosition and AXSize, when the element has both.
    std::optional<Rect> frame() const;
    // The text of AXRole, when it is text.
    std::optional<std::string> role() const;

private:
    std::optional<std::string> id_;
    std::vector<std::pair<std::string, AttributeValue>> attributes_;
    std::vector<std::pair<std::string, std::string>> actions_;
    std::vector<std::string> settable_;
    ScriptedElement* parent_ = nullptr;
    std::vector<ScriptedElement*> children_;
};

} // namespace vardel::scripted
