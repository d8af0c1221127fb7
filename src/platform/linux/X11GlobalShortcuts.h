#pragma once

#include "platform/GlobalShortcuts.h"
#include "platform/Log.h"
#include "platform/linux/PollRunLoop.h"

#include <memory>
#include <set>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace vardel::linux_desktop {

// Global shortcuts as key grabs on the X11 root window, on a connection of their own so that its
// descriptor tells of key presses and nothing else. Each shortcut is grabbed for every keycode of
// its key, also with Caps Lock and Num Lock on. A grab another client holds (BadAccess) is logged
// once per shortcut. Also tells which modifier keys are held (for the status menu).
class X11GlobalShortcuts final : public GlobalShortcuts {
public:
    // Without a display (nullptr for $DISPLAY) nothing is grabbed and no modifier is held.
    X11GlobalShortcuts(PollRunLoop&, Log&, const char* display = nullptr);
    ~X11GlobalShortcuts() override;
    X11GlobalShortcuts(const X11GlobalShortcuts&) = delete;
    X11GlobalShortcuts& operator=(const X11GlobalShortcuts&) = delete;

    void listen(std::vector<KeyShortcut>, Handler) override;
    // The tracker's modifier flags of the keys held now.
    uint64_t heldModifierFlags();

private:
    struct State;
    void grab();
    void ungrab();
    void readEvents();
    void handleEvents();
    void handle(const xcb_generic_event_t&);

    PollRunLoop& runLoop_;
    Log& log_;
    // Work queued on the run loop holds this weakly and is dropped once the object has gone.
    std::shared_ptr<X11GlobalShortcuts*> self_;
    std::unique_ptr<State> state_;
    std::vector<KeyShortcut> shortcuts_;
    Handler handler_;
    std::set<std::string> reported_;
};

} // namespace vardel::linux_desktop
