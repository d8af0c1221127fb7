#pragma once

#include <string>
#include <vector>

// Well-known applications, as the product knows them.
namespace vardel::ApplicationList {

// Bundle identifiers of browsers built on Chromium.
const std::vector<std::string>& chromeBasedBrowserBundleIDs();
// Bundle identifiers of every well-known web browser, Chromium-based ones included.
const std::vector<std::string>& webBrowsing();

} // namespace vardel::ApplicationList
