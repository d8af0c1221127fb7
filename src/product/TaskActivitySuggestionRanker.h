#pragma once

#include "product/Database.h"
#include "product/TaskActivityDescriptor.h"

#include <optional>
#include <string>

namespace vardel {

// Proposes values for a time entry that is about to be created, from the entries already stored.
class TaskActivitySuggestionRanker {
public:
    explicit TaskActivitySuggestionRanker(Database& database)
        : database_(database)
    {
    }

    // The project of the latest entry with the same title: recurring meetings and tasks keep their
    // title, so that entry shows where the user files this work now. Nothing when there is no such
    // entry, when it has no project, or when the database cannot be read (logged).
    std::optional<std::string> suggestProjectBasedOnProvenanceMetadata(const TaskActivityDescriptor&) const;

private:
    Database& database_;
};

} // namespace vardel
