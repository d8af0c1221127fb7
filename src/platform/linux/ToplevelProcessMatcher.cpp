#include "platform/linux/ToplevelProcessMatcher.h"

#include <algorithm>
#include <cctype>

namespace vardel::linux_desktop {

namespace {

std::string lowercase(std::string_view text)
{
    std::string lowered(text);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(),
        [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return lowered;
}

bool isWordBoundary(char character)
{
    return character == '-' || character == '_' || character == '.' || character == ' ';
}

// One is the other, or its start up to a word boundary.
bool sameOrPrefix(const std::string& left, const std::string& right)
{
    const std::string& shorter = left.size() <= right.size() ? left : right;
    const std::string& longer = left.size() <= right.size() ? right : left;
    if (shorter.empty() || !longer.starts_with(shorter))
        return false;
    return shorter.size() == longer.size() || isWordBoundary(longer[shorter.size()]);
}

bool standsForAppId(const AccessibleApplication& application, std::string_view appId)
{
    return ToplevelProcessMatcher::namesAppId(application.name, appId)
        || ToplevelProcessMatcher::namesAppId(application.executableName, appId);
}

// The pid when exactly one application passes.
template<typename Predicate>
std::optional<ProcessIdentifier> onlyOne(const std::vector<const AccessibleApplication*>& candidates, Predicate passes)
{
    std::optional<ProcessIdentifier> found;
    for (const AccessibleApplication* candidate : candidates) {
        if (!passes(*candidate))
            continue;
        if (found && *found != candidate->pid)
            return std::nullopt;
        found = candidate->pid;
    }
    return found;
}

} // namespace

bool ToplevelProcessMatcher::namesAppId(std::string_view name, std::string_view appId)
{
    if (name.empty() || appId.empty())
        return false;
    std::string lowerName = lowercase(name);
    std::string lowerAppId = lowercase(appId);
    if (sameOrPrefix(lowerName, lowerAppId))
        return true;
    auto lastDot = lowerAppId.rfind('.');
    return lastDot != std::string::npos && sameOrPrefix(lowerName, lowerAppId.substr(lastDot + 1));
}

std::optional<ProcessIdentifier> ToplevelProcessMatcher::match(
    std::string_view appId, std::string_view title, const std::vector<AccessibleApplication>& applications)
{
    std::vector<const AccessibleApplication*> titled;
    std::vector<const AccessibleApplication*> all;
    for (const AccessibleApplication& application : applications) {
        if (application.pid <= 0)
            continue;
        all.push_back(&application);
        const auto& titles = application.windowTitles;
        if (!title.empty() && std::find(titles.begin(), titles.end(), title) != titles.end())
            titled.push_back(&application);
    }
    auto byAppId = [&](const AccessibleApplication& application) { return standsForAppId(application, appId); };
    if (!titled.empty()) {
        if (auto only = onlyOne(titled, [](const AccessibleApplication&) { return true; }))
            return only;
        return onlyOne(titled, byAppId);
    }
    return onlyOne(all, byAppId);
}

} // namespace vardel::linux_desktop
