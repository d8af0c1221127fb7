#include "product/ApplicationList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace vardel {
namespace {

bool listContains(const std::vector<std::string>& list, const std::string& identifier)
{
    return std::find(list.begin(), list.end(), identifier) != list.end();
}

TEST(ApplicationListTest, BrowserListsHoldNoDuplicates)
{
    const auto& browsers = ApplicationList::webBrowsing();
    EXPECT_EQ(std::set<std::string>(browsers.begin(), browsers.end()).size(), browsers.size());
}

TEST(ApplicationListTest, EveryChromiumBrowserIsAWebBrowser)
{
    for (const auto& identifier : ApplicationList::chromeBasedBrowserBundleIDs())
        EXPECT_TRUE(listContains(ApplicationList::webBrowsing(), identifier)) << identifier;
    EXPECT_TRUE(listContains(ApplicationList::webBrowsing(), "com.apple.Safari"));
    EXPECT_TRUE(listContains(ApplicationList::webBrowsing(), "org.mozilla.firefox"));
}

// Callers decide which Chromium browsers to leave out; the list itself keeps Brave.
TEST(ApplicationListTest, ChromiumListIsUnfiltered)
{
    const auto& chromium = ApplicationList::chromeBasedBrowserBundleIDs();
    EXPECT_TRUE(listContains(chromium, "com.brave.Browser"));
    EXPECT_TRUE(listContains(chromium, "com.google.Chrome"));
    EXPECT_FALSE(listContains(chromium, "com.apple.Safari"));
}

} // namespace
} // namespace vardel
