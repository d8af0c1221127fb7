#pragma once

#include "platform/Value.h"
#include "product/DatabaseResult.h"
#include "product/SqliteConnection.h"
#include "product/TaskActivity.h"
#include "product/TaskActivityDescriptor.h"

#include <vector>

namespace vardel {

// The changes one mutation makes. Only Database::mutateOrPresentError hands one out, so every change
// runs inside a transaction that is committed or rolled back as a whole.
class DatabaseTransaction {
public:
    // Stores the entry. With preventTooShortDurations, an entry shorter than
    // TaskActivityDescriptor::minimumDurationSeconds is refused; an entry that ends before it starts
    // is always refused.
    DatabaseResult<TaskActivity> createTaskActivity(const TaskActivityDescriptor&, bool preventTooShortDurations);

    // Replaces what the entry records, under the same rules as creating it; an entry that does not
    // exist is an error.
    DatabaseResult<TaskActivity> updateTaskActivity(
        const TaskActivity& entry, const TaskActivityDescriptor&, bool preventTooShortDurations);

    // The entries created or changed so far, in order; others see them only once the transaction
    // commits.
    const std::vector<TaskActivity>& savedEntries() const { return savedEntries_; }

private:
    friend class Database;
    DatabaseTransaction(SqliteConnection&, Date now);

    SqliteConnection& connection_;
    Date now_;
    std::vector<TaskActivity> savedEntries_;
};

} // namespace vardel
