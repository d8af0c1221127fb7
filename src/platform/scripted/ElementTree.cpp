#include "platform/scripted/ElementTree.h"

#include "platform/scripted/ScriptedElementReference.h"

#include <algorithm>

namespace vardel::scripted {

std::shared_ptr<ElementTree> ElementTree::create(ProcessIdentifier pid, const ElementTreeDescription* description)
{
    std::shared_ptr<ElementTree> tree(new ElementTree(pid));
    if (!description) {
        tree->elements_.push_back(std::make_unique<ScriptedElement>());
        return tree;
    }
    tree->elements_.reserve(description->elements.size());
    for (const auto& element : description->elements)
        tree->elements_.push_back(std::make_unique<ScriptedElement>(element));
    for (size_t index = 0; index < description->elements.size(); ++index) {
        for (size_t child : description->elements[index].children)
            tree->elements_[index]->addChild(*tree->elements_[child]);
    }
    tree->addImpliedAttributes(*description);
    return tree;
}

// Implied attributes follow the element's own, in the order AXParent, AXChildren, AXWindows; one the
// scenario gives stays as given.
void ElementTree::addImpliedAttributes(const ElementTreeDescription& description)
{
    auto references = [this](const std::vector<ScriptedElement*>& elements) {
        Value::List list;
        for (ScriptedElement* element : elements)
            list.push_back(reference(*element));
        return list;
    };
    for (size_t index = 0; index < elements_.size(); ++index) {
        ScriptedElement& element = *elements_[index];
        if (element.parent() && !element.attribute("AXParent"))
            element.setAttribute("AXParent", reference(*element.parent()));
        if (description.elements[index].listsChildren && !element.attribute("AXChildren"))
            element.setAttribute("AXChildren", references(element.children()));
    }
    ScriptedElement& application = root();
    if (!application.attribute("AXWindows")) {
        std::vector<ScriptedElement*> windows;
        std::copy_if(application.children().begin(), application.children().end(), std::back_inserter(windows),
            [](ScriptedElement* child) { return child->role() == "AXWindow"; });
        application.setAttribute("AXWindows", references(windows));
    }
}

ScriptedElement* ElementTree::find(std::string_view id)
{
    auto found
        = std::find_if(elements_.begin(), elements_.end(), [&](const auto& element) { return element->id() == id; });
    return found == elements_.end() ? nullptr : found->get();
}

AXUIElement ElementTree::reference(ScriptedElement& element)
{
    return AXUIElement(std::make_shared<const ScriptedElementReference>(weak_from_this(), element, pid_));
}

ScriptedElement* ElementTree::elementAt(Point point)
{
    // Depth first from the topmost child down, each element tested after everything above it.
    struct Visit {
        ScriptedElement* element;
        size_t childrenLeft;
    };
    std::vector<Visit> pending { { &root(), root().children().size() } };
    while (!pending.empty()) {
        Visit& visit = pending.back();
        if (visit.childrenLeft > 0) {
            ScriptedElement* child = visit.element->children()[--visit.childrenLeft];
            pending.push_back({ child, child->children().size() });
            continue;
        }
        ScriptedElement* element = visit.element;
        pending.pop_back();
        if (auto frame = element->frame(); frame && frame->contains(point))
            return element;
    }
    return nullptr;
}

void ElementTree::resolveReferences(const std::function<Value(const Value&)>& resolve)
{
    for (auto& element : elements_)
        element->transformValues(resolve);
}

} // namespace vardel::scripted
