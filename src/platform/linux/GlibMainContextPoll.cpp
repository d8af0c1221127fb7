#include "platform/linux/GlibMainContextPoll.h"

namespace vardel::linux_desktop {

GlibMainContextPoll::GlibMainContextPoll(PollRunLoop& runLoop)
    : runLoop_(runLoop)
    , context_(g_main_context_default())
    , owned_(g_main_context_acquire(context_))
{
    // Another thread owning the default context would serve it itself; then there is nothing to add.
    if (owned_)
        runLoop_.setParticipant(this);
}

GlibMainContextPoll::~GlibMainContextPoll()
{
    if (!owned_)
        return;
    runLoop_.setParticipant(nullptr);
    g_main_context_release(context_);
}

int GlibMainContextPoll::prepare(std::vector<pollfd>& descriptors)
{
    gint timeout = -1;
    bool readyNow = g_main_context_prepare(context_, &priority_);
    glibDescriptors_.resize(std::max<size_t>(glibDescriptors_.size(), 8));
    gint needed = 0;
    while ((needed = g_main_context_query(
                context_, priority_, &timeout, glibDescriptors_.data(), static_cast<gint>(glibDescriptors_.size())))
        > static_cast<gint>(glibDescriptors_.size()))
        glibDescriptors_.resize(static_cast<size_t>(needed));
    glibDescriptors_.resize(static_cast<size_t>(needed));
    for (const GPollFD& descriptor : glibDescriptors_)
        descriptors.push_back({ descriptor.fd, static_cast<short>(descriptor.events), 0 });
    return readyNow ? 0 : timeout;
}

void GlibMainContextPoll::dispatch(std::span<const pollfd> descriptors)
{
    for (size_t index = 0; index < glibDescriptors_.size() && index < descriptors.size(); ++index)
        glibDescriptors_[index].revents = static_cast<gushort>(descriptors[index].revents);
    if (g_main_context_check(context_, priority_, glibDescriptors_.data(), static_cast<gint>(glibDescriptors_.size())))
        g_main_context_dispatch(context_);
}

} // namespace vardel::linux_desktop
