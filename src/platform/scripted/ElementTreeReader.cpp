#include "platform/scripted/ElementTreeReader.h"

#include "platform/scripted/ScenarioValueDecoder.h"

namespace vardel::scripted {

namespace {

bool isAttributeName(const std::string& key)
{
    return key.starts_with("AX");
}

} // namespace

ElementTreeDescription ElementTreeReader::read(const JsonCursor& root)
{
    struct Pending {
        JsonCursor cursor;
        std::optional<size_t> parent;
        size_t depth;
    };

    ElementTreeDescription tree;
    std::vector<Pending> pending { { root, std::nullopt, 1 } };
    while (!pending.empty()) {
        Pending next = std::move(pending.back());
        pending.pop_back();
        if (next.depth > maximumDepth)
            root.fail("elements nested deeper than " + std::to_string(maximumDepth) + " levels");

        size_t index = tree.elements.size();
        tree.elements.push_back(readElement(next.cursor, tree.references));
        tree.elements.back().parent = next.parent;
        if (next.parent)
            tree.elements[*next.parent].children.push_back(index);

        // Pushed last to first, so that children are taken in order and the tree stays in pre-order.
        if (auto children = next.cursor.nonNullMember("children")) {
            children->requireArray();
            for (size_t child = children->json().size(); child-- > 0;)
                pending.push_back(
                    { JsonCursor(children->json()[child], children->path().index(child)), index, next.depth + 1 });
        }
    }
    return tree;
}

ElementDescription ElementTreeReader::readElement(
    const JsonCursor& cursor, std::vector<ElementReferenceUse>& references)
{
    cursor.requireObject();
    ElementDescription element(cursor.path());
    cursor.forEachMember([&](const std::string& key, const JsonCursor& value) {
        if (value.isNull())
            return;
        if (isAttributeName(key))
            element.attributes.emplace_back(key, ScenarioValueDecoder::attribute(value, references));
        else
            readReservedKey(key, value, element);
    });
    return element;
}

void ElementTreeReader::readReservedKey(const std::string& key, const JsonCursor& value, ElementDescription& element)
{
    if (key == "id") {
        element.id = value.text();
    } else if (key == "children") {
        value.requireArray();
        element.listsChildren = true;
    } else if (key == "actions") {
        value.forEachMember([&](const std::string& action, const JsonCursor& description) {
            element.actions.emplace_back(action, description.text());
        });
    } else if (key == "settable") {
        value.forEachItem([&](const JsonCursor& attribute) { element.settable.push_back(attribute.text()); });
    } else {
        value.fail("unknown key (attributes begin with \"AX\"; other keys are id, children, actions, settable)");
    }
}

} // namespace vardel::scripted
