#include "platform/linux/X11GlobalShortcuts.h"

#include "platform/linux/MallocHandle.h"
#include "platform/linux/X11Keys.h"

#include <algorithm>
#include <cstdlib>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

namespace vardel::linux_desktop {

namespace {

constexpr uint8_t badAccess = 10;
constexpr uint32_t numLockKeysym = 0xFF7F;
constexpr int modifierCount = 8;

template<typename T> using Owned = MallocHandle<T>;

struct ConnectionRelease {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
struct KeySymbolsRelease {
    void operator()(xcb_key_symbols_t* symbols) const { xcb_key_symbols_free(symbols); }
};

std::string describe(const KeyShortcut& shortcut)
{
    std::string text;
    uint16_t mask = X11Keys::modifierMask(shortcut.modifierFlags);
    const std::pair<uint16_t, const char*> names[] = { { X11Keys::controlMask, "Control+" },
        { X11Keys::mod1Mask, "Alt+" }, { X11Keys::shiftMask, "Shift+" }, { X11Keys::mod4Mask, "Super+" } };
    for (const auto& [modifier, name] : names) {
        if (mask & modifier)
            text += name;
    }
    return text + shortcut.key;
}

} // namespace

struct X11GlobalShortcuts::State {
    std::unique_ptr<xcb_connection_t, ConnectionRelease> connection;
    std::unique_ptr<xcb_key_symbols_t, KeySymbolsRelease> symbols;
    xcb_window_t root = 0;
    uint16_t numLockMask = X11Keys::mod2Mask;
    PollRunLoop::SourceId source = 0;
    // What is grabbed now: keycode and modifiers.
    std::vector<std::pair<xcb_keycode_t, uint16_t>> grabs;

    std::vector<xcb_keycode_t> keycodes(uint32_t keysym) const
    {
        std::vector<xcb_keycode_t> found;
        Owned<xcb_keycode_t> codes(xcb_key_symbols_get_keycode(symbols.get(), keysym));
        for (xcb_keycode_t* code = codes.get(); code && *code != XCB_NO_SYMBOL; ++code)
            found.push_back(*code);
        return found;
    }

    // The modifier that Num Lock is on, which differs between keyboard maps.
    uint16_t findNumLockMask() const
    {
        auto numLock = keycodes(numLockKeysym);
        Owned<xcb_get_modifier_mapping_reply_t> mapping(
            xcb_get_modifier_mapping_reply(connection.get(), xcb_get_modifier_mapping(connection.get()), nullptr));
        if (!mapping)
            return X11Keys::mod2Mask;
        const xcb_keycode_t* codes = xcb_get_modifier_mapping_keycodes(mapping.get());
        int perModifier = mapping->keycodes_per_modifier;
        for (int modifier = 0; modifier < modifierCount; ++modifier) {
            for (int index = 0; index < perModifier; ++index) {
                xcb_keycode_t code = codes[modifier * perModifier + index];
                if (code != XCB_NO_SYMBOL && std::find(numLock.begin(), numLock.end(), code) != numLock.end())
                    return static_cast<uint16_t>(1U << modifier);
            }
        }
        return 0;
    }
};

X11GlobalShortcuts::X11GlobalShortcuts(PollRunLoop& runLoop, Log& log, const char* display)
    : runLoop_(runLoop)
    , log_(log)
    , self_(std::make_shared<X11GlobalShortcuts*>(this))
{
    int screenNumber = 0;
    std::unique_ptr<xcb_connection_t, ConnectionRelease> connection(xcb_connect(display, &screenNumber));
    if (xcb_connection_has_error(connection.get()))
        return;
    auto state = std::make_unique<State>();
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    for (int skipped = 0; skipped < screenNumber && screens.rem; ++skipped)
        xcb_screen_next(&screens);
    if (!screens.rem)
        return;
    state->root = screens.data->root;
    state->symbols.reset(xcb_key_symbols_alloc(connection.get()));
    state->connection = std::move(connection);
    state->numLockMask = state->findNumLockMask();
    state->source
        = runLoop_.addReadableSource(xcb_get_file_descriptor(state->connection.get()), [this] { readEvents(); });
    state_ = std::move(state);
}

X11GlobalShortcuts::~X11GlobalShortcuts()
{
    if (state_)
        runLoop_.removeSource(state_->source);
}

void X11GlobalShortcuts::listen(std::vector<KeyShortcut> shortcuts, Handler handler)
{
    shortcuts_ = handler ? std::move(shortcuts) : std::vector<KeyShortcut> {};
    handler_ = std::move(handler);
    if (!state_)
        return;
    ungrab();
    grab();
    // Waiting for the grabs' answers may have queued key presses that the descriptor no longer shows.
    handleEvents();
}

void X11GlobalShortcuts::grab()
{
    xcb_connection_t* connection = state_->connection.get();
    for (const KeyShortcut& shortcut : shortcuts_) {
        auto keysym = X11Keys::keysym(shortcut.key);
        auto keycodes = keysym ? state_->keycodes(*keysym) : std::vector<xcb_keycode_t> {};
        if (keycodes.empty() && reported_.insert(describe(shortcut)).second) {
            log_.warning("The shortcut " + describe(shortcut) + " has no key on this keyboard; it cannot be used.");
            continue;
        }
        std::vector<xcb_void_cookie_t> requests;
        uint16_t modifiers = X11Keys::modifierMask(shortcut.modifierFlags);
        for (xcb_keycode_t keycode : keycodes) {
            for (uint16_t locks : X11Keys::lockVariants(state_->numLockMask)) {
                auto mask = static_cast<uint16_t>(modifiers | locks);
                requests.push_back(xcb_grab_key_checked(
                    connection, 1, state_->root, mask, keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
                state_->grabs.emplace_back(keycode, mask);
            }
        }
        bool taken = false;
        for (xcb_void_cookie_t request : requests) {
            Owned<xcb_generic_error_t> error(xcb_request_check(connection, request));
            taken = taken || (error && error->error_code == badAccess);
        }
        if (taken && reported_.insert(describe(shortcut)).second)
            log_.warning("The shortcut " + describe(shortcut)
                + " is taken by another program; it works only while that program lets it go.");
    }
}

void X11GlobalShortcuts::ungrab()
{
    for (const auto& [keycode, mask] : state_->grabs)
        xcb_ungrab_key(state_->connection.get(), keycode, state_->root, mask);
    state_->grabs.clear();
    xcb_flush(state_->connection.get());
}

uint64_t X11GlobalShortcuts::heldModifierFlags()
{
    if (!state_)
        return 0;
    xcb_connection_t* connection = state_->connection.get();
    Owned<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, state_->root), nullptr));
    // Presses that came in with the reply wait in the queue, where the descriptor does not show them.
    runLoop_.schedule(0, [alive = std::weak_ptr<X11GlobalShortcuts*>(self_)] {
        if (auto self = alive.lock())
            (*self)->handleEvents();
    });
    return pointer ? X11Keys::modifierFlags(pointer->mask) : 0;
}

void X11GlobalShortcuts::readEvents()
{
    if (xcb_connection_has_error(state_->connection.get())) {
        runLoop_.removeSource(state_->source);
        return;
    }
    while (Owned<xcb_generic_event_t> event { xcb_poll_for_event(state_->connection.get()) })
        handle(*event);
}

void X11GlobalShortcuts::handleEvents()
{
    while (Owned<xcb_generic_event_t> event { xcb_poll_for_queued_event(state_->connection.get()) })
        handle(*event);
}

void X11GlobalShortcuts::handle(const xcb_generic_event_t& event)
{
    constexpr uint8_t sentBySendEvent = 0x80;
    switch (event.response_type & ~sentBySendEvent) {
    case XCB_KEY_PRESS: {
        const auto& press = reinterpret_cast<const xcb_key_press_event_t&>(event);
        KeyShortcut pressed { X11Keys::key(xcb_key_symbols_get_keysym(state_->symbols.get(), press.detail, 0)),
            X11Keys::modifierFlags(press.state) };
        if (std::find(shortcuts_.begin(), shortcuts_.end(), pressed) == shortcuts_.end())
            return;
        runLoop_.schedule(0, [alive = std::weak_ptr<X11GlobalShortcuts*>(self_), pressed] {
            auto self = alive.lock();
            if (self && (*self)->handler_)
                (*self)->handler_(pressed);
        });
        return;
    }
    case XCB_MAPPING_NOTIFY: {
        // Another keyboard map moves keys and modifiers: the grabs follow.
        auto notify = reinterpret_cast<const xcb_mapping_notify_event_t&>(event);
        xcb_refresh_keyboard_mapping(state_->symbols.get(), &notify);
        state_->numLockMask = state_->findNumLockMask();
        ungrab();
        grab();
        return;
    }
    default:
        return;
    }
}

} // namespace vardel::linux_desktop
