#include "diagnostics/AccessibilityTreeFormatter.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"
#include "diagnostics/ElementPathFollower.h"
#include "product/TextHelpers.h"

#include <algorithm>
#include <optional>
#include <set>
#include <vector>

namespace vardel {

namespace {

constexpr const char* helpAttribute = "AXHelp";
constexpr const char* selectedAttribute = "AXSelected";
constexpr const char* pathAttribute = "AXPath";

struct Entry {
    std::string key;
    std::string value;
};

using Entries = std::vector<Entry>;

void addEntry(Entries& entries, std::string key, std::optional<std::string> value)
{
    if (value && !value->empty())
        entries.push_back({ std::move(key), std::move(*value) });
}

std::optional<std::string> text(std::string_view attribute, const AXUIElement& element)
{
    return UIElementUtilities::stringValueOfAttribute(attribute, element);
}

std::optional<std::string> classList(const AXUIElement& element)
{
    auto value = UIElementUtilities::valueOfAttribute(AX::domClassList, element);
    auto classes = value ? value->asTextList() : std::nullopt;
    if (!classes)
        return std::nullopt;
    std::string joined;
    for (const std::string& name : *classes)
        joined += (joined.empty() ? "" : ", ") + name;
    return joined;
}

std::optional<std::string> selectedFlag(const AXUIElement& element)
{
    auto value = UIElementUtilities::valueOfAttribute(selectedAttribute, element);
    return value && value->asBoolean() == true ? std::optional<std::string>("true") : std::nullopt;
}

// Any value type may stand in the path attribute; it is shown as the generic description shows it.
std::optional<std::string> pathDescription(const AXUIElement& element)
{
    return UIElementUtilities::descriptionOfValue(UIElementUtilities::valueOfAttribute(pathAttribute, element), false);
}

Entries elementEntries(const AXUIElement& element)
{
    Entries entries;
    auto role = text(AX::role, element);
    addEntry(entries, "role", role);
    addEntry(entries, "subrole", text(AX::subrole, element));
    if (role == AX::windowRole)
        addEntry(entries, "document", text(AX::document, element));
    addEntry(entries, "title", text(AX::title, element));
    addEntry(entries, "help", text(helpAttribute, element));
    addEntry(entries, "label", text(AX::description, element));
    addEntry(entries, "value", text(AX::value, element));
    addEntry(entries, "url", ElementHelpers::urlStringOfElement(element));
    addEntry(entries, "identifier", text(AX::identifier, element));
    addEntry(entries, "domIdentifier", text(AX::domIdentifier, element));
    addEntry(entries, "domClassList", classList(element));
    addEntry(entries, "selected", selectedFlag(element));
    addEntry(entries, "path", pathDescription(element));
    return entries;
}

// Keys are compared without regard to case; an attribute is known by its name without "AX".
std::string attributeKey(std::string_view name)
{
    return TextHelpers::lowercased(TextHelpers::removingPrefixIfPresent(name, "AX"));
}

void addFurtherAttributes(Entries& entries, const AXUIElement& element)
{
    std::set<std::string, std::less<>> taken;
    for (const Entry& entry : entries)
        taken.insert(TextHelpers::lowercased(entry.key));
    auto names = UIElementUtilities::attributeNamesOfUIElement(element).value_or(std::vector<std::string> {});
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
        std::string key = attributeKey(name);
        if (taken.contains(key))
            continue;
        auto value = text(name, element);
        if (value && !value->empty()) {
            entries.push_back({ name, std::move(*value) });
            taken.insert(std::move(key));
        }
    }
}

// Texts from other applications may break lines; every element must stay on one line.
std::string onOneLine(std::string_view value)
{
    std::string escaped;
    escaped.reserve(value.size());
    for (char character : value) {
        switch (character) {
        case '\n':
            escaped += "\\n";
            break;
        case '\r':
            escaped += "\\r";
            break;
        case '\t':
            escaped += "\\t";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

std::string joined(const Entries& entries)
{
    std::string line;
    for (const Entry& entry : entries) {
        if (!line.empty())
            line += ' ';
        line += entry.key + "='" + onOneLine(entry.value) + "'";
    }
    return line;
}

// The lines below the root of a tree text built with that many levels, each prefixed with its
// parent's prefix and its own index. A child beyond the bound, or one that is its own ancestor (a
// cycle), shows as its prefix alone. The ancestors given are those of the root, when it is not the
// top of the tree.
void appendChildren(std::string& text, const AXUIElement& root, int levels, const std::string& rootPrefix,
    const ElementPath& rootAncestors, ElementTreeWalker& walker)
{
    ElementPathFollower follower;
    std::vector<std::string> prefixes;
    walker.walk(root, levels + 1, [&](const AXUIElement& element, int depth) {
        const ElementPath& path = follower.visit(element, depth);
        prefixes.resize(static_cast<size_t>(depth));
        if (depth == 0) {
            prefixes.push_back(rootPrefix);
            return TreeWalkDecision::continueWalk;
        }
        prefixes.push_back(prefixes.back() + "|\t(" + std::to_string(path.back().childIndex) + ") ");
        text += '\n';
        text += prefixes.back();
        if (depth > levels || follower.revisitsAncestor(rootAncestors))
            return TreeWalkDecision::skipChildren;
        text += AccessibilityTreeFormatter::elementLine(element);
        return TreeWalkDecision::continueWalk;
    });
    if (walker.cutShort())
        text += '\n' + AccessibilityTreeFormatter::cutShortLine(walker);
}

} // namespace

std::string AccessibilityTreeFormatter::elementLine(const AXUIElement& element)
{
    return joined(elementEntries(element));
}

std::string AccessibilityTreeFormatter::searchLine(const AXUIElement& element)
{
    Entries entries = elementEntries(element);
    addFurtherAttributes(entries, element);
    return joined(entries);
}

std::string AccessibilityTreeFormatter::treeText(const AXUIElement& element, int levels, ElementTreeWalker& walker)
{
    if (levels < 0)
        return {};
    std::string text = elementLine(element);
    appendChildren(text, element, levels, "", {}, walker);
    return text;
}

std::string AccessibilityTreeFormatter::matchText(const ElementPath& path, int levels, ElementTreeWalker& walker)
{
    std::string text;
    std::string indent;
    for (const ElementPathStep& step : path) {
        if (!text.empty()) {
            text += '\n';
            indent += "|\t";
        }
        text += indent + "(" + std::to_string(step.childIndex) + ") " + searchLine(step.element);
    }
    if (path.empty())
        return text;
    text += " <--- matched element";
    if (levels >= 0)
        appendChildren(text, path.back().element, levels, indent, ElementPath(path.begin(), path.end() - 1), walker);
    return text;
}

std::string AccessibilityTreeFormatter::cutShortLine(const ElementTreeWalker& walker)
{
    return "[cut short: the dump reads no more than " + std::to_string(walker.visits()) + " elements]";
}

} // namespace vardel
