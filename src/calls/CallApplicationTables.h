#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

// Which applications make calls, under which service name, and which hold audio without calling.
namespace vardel::CallApplicationTables {

// Bundle-identifier fragments and their service names, in matching order.
using KnownCallApplications = std::vector<std::pair<std::string, std::string>>;

const KnownCallApplications& builtInKnownCallApplications();
// Rows "fragment:Service" add to or rename the built-in ones; other entries are ignored.
KnownCallApplications withExtraRows(KnownCallApplications table, const std::vector<std::string>& extraRows);

// Recorders, players, audio tools, games and system services.
const std::set<std::string, std::less<>>& callTrackingExcludedApplications();

} // namespace vardel::CallApplicationTables
