#pragma once

namespace vardel {

// What the recording service asks of the application that shows its state.
class InfoLoggerPresenter {
public:
    virtual ~InfoLoggerPresenter() = default;

    // The recording service's appearsActive changed: the status item's look should follow.
    virtual void updateStatusItemTransparency() = 0;
};

} // namespace vardel
