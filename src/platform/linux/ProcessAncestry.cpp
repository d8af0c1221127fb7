#include "platform/linux/ProcessAncestry.h"

#include <charconv>
#include <fstream>
#include <iterator>
#include <set>

namespace vardel::linux_desktop {

namespace {

constexpr ProcessIdentifier firstProcess = 1;

} // namespace

ProcessAncestry::ProcessAncestry(std::filesystem::path procFolder)
    : procFolder_(std::move(procFolder))
{
}

std::optional<ProcessIdentifier> ProcessAncestry::parentInStat(std::string_view stat)
{
    size_t nameEnd = stat.rfind(')');
    if (nameEnd == std::string_view::npos)
        return std::nullopt;
    // ") S 1234 ..." : the state, then the parent.
    std::string_view rest = stat.substr(nameEnd + 1);
    size_t stateStart = rest.find_first_not_of(' ');
    if (stateStart == std::string_view::npos)
        return std::nullopt;
    size_t parentStart = rest.find(' ', stateStart);
    if (parentStart == std::string_view::npos)
        return std::nullopt;
    rest.remove_prefix(parentStart + 1);
    ProcessIdentifier parent = 0;
    auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), parent);
    if (error != std::errc() || parent <= 0)
        return std::nullopt;
    return parent;
}

std::optional<ProcessIdentifier> ProcessAncestry::parentOf(ProcessIdentifier pid) const
{
    std::ifstream file(procFolder_ / std::to_string(pid) / "stat");
    if (!file)
        return std::nullopt;
    std::string stat((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    return parentInStat(stat);
}

std::vector<ProcessIdentifier> ProcessAncestry::lineOf(ProcessIdentifier pid, size_t maximumDepth) const
{
    std::vector<ProcessIdentifier> line;
    std::set<ProcessIdentifier> seen;
    std::optional<ProcessIdentifier> next = pid;
    while (next && *next > firstProcess && line.size() < maximumDepth && seen.insert(*next).second) {
        line.push_back(*next);
        next = parentOf(*next);
    }
    return line;
}

} // namespace vardel::linux_desktop
