#include "platform/linux/AtspiApplicationDirectory.h"

#include "platform/linux/ApplicationIdentity.h"
#include "platform/linux/AtspiCalls.h"

#include <algorithm>
#include <atspi/atspi.h>
#include <filesystem>

namespace vardel::linux_desktop {

namespace {

constexpr std::chrono::milliseconds guardTimeout { 2000 };

std::vector<AXUIElement> registeredApplications(AtspiCalls& calls)
{
    GObjectHandle<AtspiAccessible> desktop(atspi_get_desktop(0));
    return calls.children(desktop.get());
}

std::optional<std::string> activeWindowTitle(AtspiCalls& calls, AtspiAccessible* application)
{
    for (const AXUIElement& window : calls.windowsOf(application)) {
        AtspiAccessible* accessible = AtspiElement::accessibleOf(window);
        if (calls.hasState(accessible, ATSPI_STATE_ACTIVE))
            return calls.name(accessible).value_or("");
    }
    return std::nullopt;
}

} // namespace

std::unique_ptr<AtspiApplicationDirectory> AtspiApplicationDirectory::connect()
{
    atspi_init();
    if (!atspi_get_a11y_bus())
        return nullptr;
    return std::unique_ptr<AtspiApplicationDirectory>(new AtspiApplicationDirectory());
}

AtspiApplicationDirectory::AtspiApplicationDirectory()
    : guard_(guardTimeout)
{
}

std::vector<AccessibleApplication> AtspiApplicationDirectory::applications()
{
    AtspiCalls calls(guard_);
    std::vector<AccessibleApplication> found;
    for (const AXUIElement& element : registeredApplications(calls)) {
        AtspiAccessible* application = AtspiElement::accessibleOf(element);
        auto pid = calls.processId(application);
        if (!pid)
            continue;
        AccessibleApplication entry;
        entry.pid = *pid;
        entry.name = calls.name(application).value_or("");
        if (auto executable = ApplicationIdentity::executableOf(*pid))
            entry.executableName = std::filesystem::path(*executable).filename().string();
        for (const AXUIElement& window : calls.windowsOf(application)) {
            if (auto title = calls.name(AtspiElement::accessibleOf(window)); title && !title->empty())
                entry.windowTitles.push_back(std::move(*title));
        }
        found.push_back(std::move(entry));
    }
    return found;
}

std::optional<ActiveAccessibleWindow> AtspiApplicationDirectory::activeWindow()
{
    AtspiCalls calls(guard_);
    std::vector<AXUIElement> applications = registeredApplications(calls);
    std::vector<std::pair<AtspiAccessible*, ProcessIdentifier>> withPids;
    for (const AXUIElement& element : applications) {
        AtspiAccessible* application = AtspiElement::accessibleOf(element);
        if (auto pid = calls.processId(application))
            withPids.emplace_back(application, *pid);
    }
    // The application that had the active window most likely still has it.
    std::stable_partition(
        withPids.begin(), withPids.end(), [this](const auto& entry) { return entry.second == lastActive_; });
    for (const auto& [application, pid] : withPids) {
        if (auto title = activeWindowTitle(calls, application)) {
            lastActive_ = pid;
            return ActiveAccessibleWindow { pid, std::move(*title), calls.name(application).value_or("") };
        }
    }
    return std::nullopt;
}

} // namespace vardel::linux_desktop
