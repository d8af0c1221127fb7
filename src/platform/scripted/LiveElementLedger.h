#pragma once

#include "platform/Accessibility.h"
#include "platform/JsonPath.h"
#include "platform/scripted/Scenario.h"

#include <functional>
#include <map>
#include <set>
#include <string>

namespace vardel::scripted {

// While a scenario is read, follows which applications run and which element ids exist at each point
// of the timeline, so that a timeline that names a missing element or process fails when the file is
// loaded rather than halfway through a run.
class LiveElementLedger {
public:
    void addProcess(ProcessIdentifier, const JsonPath& where);
    void addApplication(const ApplicationDescription&, const JsonPath& where);

    void launch(const ApplicationDescription&, const JsonPath& where);
    void terminate(ProcessIdentifier, const JsonPath& where);
    void replaceInterface(const InterfaceReplacement&, const JsonPath& where);

    void requireElement(const std::string& id, const JsonPath& where) const;
    void requireReferences(const std::vector<ElementReferenceUse>&) const;

private:
    void requireUnusedPid(ProcessIdentifier, const JsonPath& where) const;
    void requireRunning(ProcessIdentifier, const JsonPath& where) const;
    void addElements(ProcessIdentifier, const ApplicationInterface&);
    void removeElements(ProcessIdentifier);

    std::map<ProcessIdentifier, bool> applicationRunning_;
    std::set<ProcessIdentifier> processes_;
    // Element id → pid of the application whose tree holds it.
    std::map<std::string, ProcessIdentifier, std::less<>> liveElements_;
};

} // namespace vardel::scripted
