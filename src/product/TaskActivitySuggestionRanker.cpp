#include "product/TaskActivitySuggestionRanker.h"

#include "platform/Platform.h"

namespace vardel {

std::optional<std::string> TaskActivitySuggestionRanker::suggestProjectBasedOnProvenanceMetadata(
    const TaskActivityDescriptor& descriptor) const
{
    auto latest = database_.mostRecentEntry(descriptor.title);
    if (!latest.ok()) {
        // A suggestion is a convenience: without it the editor simply opens with no project.
        platform().log().warning("[TaskActivitySuggestionRanker] " + latest.error().message);
        return std::nullopt;
    }
    if (!latest.value())
        return std::nullopt;
    return latest.value()->descriptor.project;
}

} // namespace vardel
