#pragma once

#include "platform/Accessibility.h"
#include "platform/Geometry.h"
#include "platform/linux/GLibHandles.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

typedef struct _AtspiAccessible AtspiAccessible;

namespace vardel::linux_desktop {

// What applications answered during one sample, so that the logic's repeated questions about one
// element (a window's children and states, its name) cost one call each. A sample reads a snapshot:
// forget() starts the next one, and answers older than the lifetime are never given, so that a
// reader that does not start samples still sees changes.
class AtspiSampleAnswers {
public:
    using Clock = std::chrono::steady_clock;

    // Each answer is absent until asked; an answer may itself be "nothing".
    struct Answers {
        std::optional<std::vector<AXUIElement>> children;
        // AtspiStateType bits.
        std::optional<uint64_t> states;
        std::optional<std::optional<std::string>> name;
        std::optional<std::optional<std::string>> identifier;
        std::optional<std::map<std::string, std::string>> objectAttributes;
        std::optional<std::optional<Rect>> extents;
        std::optional<std::optional<AXUIElement>> parent;
        std::optional<std::optional<ProcessIdentifier>> processId;
    };

    explicit AtspiSampleAnswers(std::chrono::milliseconds lifetime);

    // The answers about the element so far in this sample.
    Answers& about(AtspiAccessible*, Clock::time_point now);
    void forget();

private:
    struct Entry {
        GObjectHandle<AtspiAccessible> accessible;
        Answers answers;
    };

    std::chrono::milliseconds lifetime_;
    std::optional<Clock::time_point> started_;
    // Each entry holds its proxy, so that no other element takes its address meanwhile.
    std::map<AtspiAccessible*, Entry> entries_;
};

} // namespace vardel::linux_desktop
