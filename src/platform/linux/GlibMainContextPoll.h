#pragma once

#include "platform/linux/PollRunLoop.h"

#include <glib.h>
#include <vector>

namespace vardel::linux_desktop {

// Serves GLib's default main context from the tracker's run loop: libatspi's events, GDBus's
// replies and signals and the exported menu are handled as soon as they arrive, with no second
// event loop and no polling timer. Holds the context for the thread while it exists.
class GlibMainContextPoll final : public PollRunLoop::Participant {
public:
    explicit GlibMainContextPoll(PollRunLoop& runLoop);
    ~GlibMainContextPoll() override;
    GlibMainContextPoll(const GlibMainContextPoll&) = delete;
    GlibMainContextPoll& operator=(const GlibMainContextPoll&) = delete;

    int prepare(std::vector<pollfd>& descriptors) override;
    void dispatch(std::span<const pollfd> descriptors) override;

private:
    PollRunLoop& runLoop_;
    GMainContext* context_;
    bool owned_;
    gint priority_ = 0;
    std::vector<GPollFD> glibDescriptors_;
};

} // namespace vardel::linux_desktop
