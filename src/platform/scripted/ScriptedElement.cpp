#include "platform/scripted/ScriptedElement.h"

#include <algorithm>

namespace vardel::scripted {

namespace {

const Value* valueOf(const AttributeValue* attribute)
{
    return attribute ? std::get_if<Value>(attribute) : nullptr;
}

} // namespace

ScriptedElement::ScriptedElement(const ElementDescription& description)
    : id_(description.id)
    , attributes_(description.attributes)
    , actions_(description.actions)
    , settable_(description.settable)
{
}

void ScriptedElement::addChild(ScriptedElement& child)
{
    child.parent_ = this;
    children_.push_back(&child);
}

const AttributeValue* ScriptedElement::attribute(std::string_view name) const
{
    auto found = std::find_if(
        attributes_.begin(), attributes_.end(), [&](const auto& attribute) { return attribute.first == name; });
    return found == attributes_.end() ? nullptr : &found->second;
}

void ScriptedElement::setAttribute(std::string_view name, AttributeValue value)
{
    auto found = std::find_if(
        attributes_.begin(), attributes_.end(), [&](const auto& attribute) { return attribute.first == name; });
    if (found != attributes_.end())
        found->second = std::move(value);
    else
        attributes_.emplace_back(std::string(name), std::move(value));
}

void ScriptedElement::removeAttribute(std::string_view name)
{
    std::erase_if(attributes_, [&](const auto& attribute) { return attribute.first == name; });
}

std::vector<std::string> ScriptedElement::attributeNames() const
{
    std::vector<std::string> names;
    names.reserve(attributes_.size());
    for (const auto& [name, value] : attributes_)
        names.push_back(name);
    return names;
}

void ScriptedElement::transformValues(const std::function<Value(const Value&)>& transform)
{
    for (auto& [name, attribute] : attributes_) {
        if (const Value* value = std::get_if<Value>(&attribute))
            attribute = transform(*value);
    }
}

const std::string* ScriptedElement::actionDescription(std::string_view action) const
{
    auto found
        = std::find_if(actions_.begin(), actions_.end(), [&](const auto& entry) { return entry.first == action; });
    return found == actions_.end() ? nullptr : &found->second;
}

bool ScriptedElement::isSettable(std::string_view attribute) const
{
    return std::find(settable_.begin(), settable_.end(), attribute) != settable_.end();
}

std::optional<Rect> ScriptedElement::frame() const
{
    const Value* position = valueOf(attribute("AXPosition"));
    const Value* size = valueOf(attribute("AXSize"));
    if (!position || !size || !position->asPoint() || !size->asSize())
        return std::nullopt;
    return Rect { *position->asPoint(), *size->asSize() };
}

std::optional<std::string> ScriptedElement::role() const
{
    const Value* role = valueOf(attribute("AXRole"));
    return role && role->asText() ? std::optional(*role->asText()) : std::nullopt;
}

} // namespace vardel::scripted
