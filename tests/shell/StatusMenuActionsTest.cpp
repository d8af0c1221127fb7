#include "shell/StatusMenuActions.h"

#include "shell/StatusMenuResource.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace vardel {
namespace {

void collectActions(const std::vector<MenuItem>& items, std::set<std::string>& actions)
{
    for (const MenuItem& item : items) {
        actions.insert(item.action);
        collectActions(item.submenu, actions);
    }
}

// A misspelt name on either side would leave an entry that does nothing, or a row that is never used.
TEST(StatusMenuActions, EveryEntryOfTheShippedMenuHasItsRowAndEveryRowItsEntry)
{
    std::set<std::string> entries;
    collectActions(StatusMenuResource::load().items, entries);
    auto names = StatusMenuActions::actionNames();
    std::set<std::string> rows(names.begin(), names.end());
    EXPECT_EQ(rows.size(), names.size()) << "an action has two rows";
    EXPECT_EQ(entries, rows);
}

} // namespace
} // namespace vardel
