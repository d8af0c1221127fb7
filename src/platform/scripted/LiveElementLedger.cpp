#include "platform/scripted/LiveElementLedger.h"

#include <nlohmann/json.hpp>

namespace vardel::scripted {

namespace {

std::string quoted(const std::string& text)
{
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace

void LiveElementLedger::addProcess(ProcessIdentifier pid, const JsonPath& where)
{
    requireUnusedPid(pid, where);
    processes_.insert(pid);
}

void LiveElementLedger::addApplication(const ApplicationDescription& application, const JsonPath& where)
{
    requireUnusedPid(application.pid, where);
    applicationRunning_[application.pid] = application.running;
    if (application.running)
        addElements(application.pid, application.ui);
}

void LiveElementLedger::launch(const ApplicationDescription& application, const JsonPath& where)
{
    // An installed application that is not running may start under its own pid.
    auto installed = applicationRunning_.find(application.pid);
    if (installed == applicationRunning_.end() || installed->second)
        requireUnusedPid(application.pid, where);
    applicationRunning_[application.pid] = true;
    addElements(application.pid, application.ui);
}

void LiveElementLedger::terminate(ProcessIdentifier pid, const JsonPath& where)
{
    requireRunning(pid, where);
    applicationRunning_[pid] = false;
    removeElements(pid);
}

void LiveElementLedger::replaceInterface(const InterfaceReplacement& replacement, const JsonPath& where)
{
    requireRunning(replacement.pid, where);
    removeElements(replacement.pid);
    addElements(replacement.pid, replacement.ui);
}

void LiveElementLedger::requireElement(const std::string& id, const JsonPath& where) const
{
    if (!liveElements_.contains(id))
        where.fail("no element has the id " + quoted(id) + " at this point");
}

void LiveElementLedger::requireReferences(const std::vector<ElementReferenceUse>& references) const
{
    for (const auto& reference : references)
        requireElement(reference.id, reference.path);
}

void LiveElementLedger::requireUnusedPid(ProcessIdentifier pid, const JsonPath& where) const
{
    if (applicationRunning_.contains(pid) || processes_.contains(pid))
        where.fail("pid " + std::to_string(pid) + " is already in use");
}

void LiveElementLedger::requireRunning(ProcessIdentifier pid, const JsonPath& where) const
{
    auto application = applicationRunning_.find(pid);
    if (application == applicationRunning_.end() || !application->second)
        where.fail("no running application has pid " + std::to_string(pid));
}

void LiveElementLedger::addElements(ProcessIdentifier pid, const ApplicationInterface& ui)
{
    if (!ui.tree)
        return;
    for (const auto& element : ui.tree->elements) {
        if (!element.id)
            continue;
        if (!liveElements_.emplace(*element.id, pid).second)
            element.path.member("id").fail("the element id " + quoted(*element.id) + " is already in use");
    }
}

void LiveElementLedger::removeElements(ProcessIdentifier pid)
{
    std::erase_if(liveElements_, [pid](const auto& entry) { return entry.second == pid; });
}

} // namespace vardel::scripted
