#include "platform/linux/WaylandToplevels.h"

#include <algorithm>

namespace vardel::linux_desktop {

void WaylandToplevels::add(uint32_t id)
{
    entries_[id].pending.id = id;
}

void WaylandToplevels::setTitle(uint32_t id, std::string title)
{
    if (auto entry = entries_.find(id); entry != entries_.end())
        entry->second.pending.title = std::move(title);
}

void WaylandToplevels::setAppId(uint32_t id, std::string appId)
{
    if (auto entry = entries_.find(id); entry != entries_.end())
        entry->second.pending.appId = std::move(appId);
}

void WaylandToplevels::setStates(uint32_t id, std::span<const uint32_t> states)
{
    auto entry = entries_.find(id);
    if (entry == entries_.end())
        return;
    auto has = [&](uint32_t state) { return std::find(states.begin(), states.end(), state) != states.end(); };
    WaylandToplevel& pending = entry->second.pending;
    pending.activated = has(activatedState);
    pending.fullScreen = has(fullScreenState);
    pending.minimized = has(minimizedState);
}

void WaylandToplevels::enterOutput(uint32_t id, uint32_t output)
{
    auto entry = entries_.find(id);
    if (entry == entries_.end())
        return;
    auto& outputs = entry->second.pending.outputs;
    if (std::find(outputs.begin(), outputs.end(), output) == outputs.end())
        outputs.push_back(output);
}

void WaylandToplevels::leaveOutput(uint32_t id, uint32_t output)
{
    if (auto entry = entries_.find(id); entry != entries_.end())
        std::erase(entry->second.pending.outputs, output);
}

void WaylandToplevels::done(uint32_t id)
{
    auto found = entries_.find(id);
    if (found == entries_.end())
        return;
    Entry& entry = found->second;
    bool wasActivated = entry.current && entry.current->activated;
    if (entry.pending.activated && !wasActivated)
        entry.activation = ++activations_;
    entry.current = entry.pending;
}

void WaylandToplevels::close(uint32_t id)
{
    entries_.erase(id);
}

void WaylandToplevels::clear()
{
    entries_.clear();
}

std::optional<WaylandToplevel> WaylandToplevels::active() const
{
    const Entry* latest = nullptr;
    for (const auto& [id, entry] : entries_) {
        if (entry.current && entry.current->activated && (!latest || entry.activation > latest->activation))
            latest = &entry;
    }
    return latest ? latest->current : std::nullopt;
}

std::vector<WaylandToplevel> WaylandToplevels::frontToBack() const
{
    std::vector<const Entry*> complete;
    for (const auto& [id, entry] : entries_) {
        if (entry.current)
            complete.push_back(&entry);
    }
    std::sort(complete.begin(), complete.end(), [](const Entry* left, const Entry* right) {
        if (left->activation != right->activation)
            return left->activation > right->activation;
        return left->current->id > right->current->id;
    });
    std::vector<WaylandToplevel> toplevels;
    toplevels.reserve(complete.size());
    for (const Entry* entry : complete)
        toplevels.push_back(*entry->current);
    return toplevels;
}

} // namespace vardel::linux_desktop
