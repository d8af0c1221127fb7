#include "platform/linux/X11Connection.h"

#include "platform/linux/MallocHandle.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <xcb/randr.h>
#include <xcb/res.h>
#include <xcb/xcb.h>
#include <xcb/xcb_ewmh.h>
#include <xcb/xcb_icccm.h>

namespace vardel::linux_desktop {

namespace {

// Window levels as the window list reports them: normal windows 0, windows kept above 3, docks and
// panels 20, menus, tooltips and notifications 101.
constexpr int floatingLayer = 3;
constexpr int dockLayer = 20;
constexpr int popUpLayer = 101;
constexpr uint32_t allDesktops = 0xFFFFFFFF;

template<typename T> using Reply = MallocHandle<T>;

std::string utf8Text(const xcb_ewmh_get_utf8_strings_reply_t& reply)
{
    std::string text(reply.strings, reply.strings_len);
    // Some clients end the text with a NUL; the title stops there.
    if (auto end = text.find('\0'); end != std::string::npos)
        text.resize(end);
    return text;
}

bool containsAtom(const xcb_ewmh_get_atoms_reply_t& atoms, xcb_atom_t atom)
{
    return std::find(atoms.atoms, atoms.atoms + atoms.atoms_len, atom) != atoms.atoms + atoms.atoms_len;
}

} // namespace

struct X11Connection::State {
    xcb_connection_t* connection = nullptr;
    xcb_ewmh_connection_t ewmh {};
    int screenNumber = 0;
    xcb_window_t root = 0;
    xcb_atom_t gtkApplicationId = XCB_ATOM_NONE;
    bool hasResourceExtension = false;
    bool hasRandr = false;

    ~State()
    {
        if (ewmh.connection)
            xcb_ewmh_connection_wipe(&ewmh);
        if (connection)
            xcb_disconnect(connection);
    }

    xcb_atom_t internAtom(const char* name)
    {
        auto cookie = xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name);
        Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
        return reply ? reply->atom : xcb_atom_t { XCB_ATOM_NONE };
    }

    bool hasExtension(xcb_extension_t* extension)
    {
        const xcb_query_extension_reply_t* reply = xcb_get_extension_data(connection, extension);
        return reply && reply->present;
    }

    // The pid the X server saw connecting for the window's client; for clients without _NET_WM_PID.
    ProcessIdentifier pidFromResourceExtension(xcb_window_t window)
    {
        if (!hasResourceExtension)
            return 0;
        xcb_res_client_id_spec_t clientQuery { window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID };
        auto cookie = xcb_res_query_client_ids(connection, 1, &clientQuery);
        Reply<xcb_res_query_client_ids_reply_t> reply(xcb_res_query_client_ids_reply(connection, cookie, nullptr));
        if (!reply)
            return 0;
        for (auto ids = xcb_res_query_client_ids_ids_iterator(reply.get()); ids.rem;
             xcb_res_client_id_value_next(&ids)) {
            if ((ids.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID)
                && xcb_res_client_id_value_value_length(ids.data) >= 1)
                return static_cast<ProcessIdentifier>(*xcb_res_client_id_value_value(ids.data));
        }
        return 0;
    }

    int layerOf(const xcb_ewmh_get_atoms_reply_t* types, const xcb_ewmh_get_atoms_reply_t* states)
    {
        if (types) {
            if (containsAtom(*types, ewmh._NET_WM_WINDOW_TYPE_DOCK))
                return dockLayer;
            for (xcb_atom_t popUp : { ewmh._NET_WM_WINDOW_TYPE_MENU, ewmh._NET_WM_WINDOW_TYPE_DROPDOWN_MENU,
                     ewmh._NET_WM_WINDOW_TYPE_POPUP_MENU, ewmh._NET_WM_WINDOW_TYPE_TOOLTIP,
                     ewmh._NET_WM_WINDOW_TYPE_NOTIFICATION }) {
                if (containsAtom(*types, popUp))
                    return popUpLayer;
            }
        }
        if (states && containsAtom(*states, ewmh._NET_WM_STATE_ABOVE))
            return floatingLayer;
        return 0;
    }
};

std::unique_ptr<X11Connection> X11Connection::open(const char* display)
{
    auto state = std::make_unique<State>();
    state->connection = xcb_connect(display, &state->screenNumber);
    if (!state->connection || xcb_connection_has_error(state->connection))
        return nullptr;
    xcb_intern_atom_cookie_t* cookies = xcb_ewmh_init_atoms(state->connection, &state->ewmh);
    if (!xcb_ewmh_init_atoms_replies(&state->ewmh, cookies, nullptr)) {
        state->ewmh.connection = nullptr;
        return nullptr;
    }
    state->root = state->ewmh.screens[state->screenNumber]->root;
    state->gtkApplicationId = state->internAtom("_GTK_APPLICATION_ID");
    state->hasResourceExtension = state->hasExtension(&xcb_res_id);
    state->hasRandr = state->hasExtension(&xcb_randr_id);
    return std::unique_ptr<X11Connection>(new X11Connection(std::move(state)));
}

X11Connection::X11Connection(std::unique_ptr<State> state)
    : state_(std::move(state))
{
}

X11Connection::~X11Connection() = default;

int X11Connection::fileDescriptor() const
{
    return xcb_get_file_descriptor(state_->connection);
}

std::optional<X11Window> X11Connection::activeWindow()
{
    auto cookie = xcb_ewmh_get_active_window(&state_->ewmh, state_->screenNumber);
    xcb_window_t active = XCB_WINDOW_NONE;
    if (!xcb_ewmh_get_active_window_reply(&state_->ewmh, cookie, &active, nullptr) || active == XCB_WINDOW_NONE)
        return std::nullopt;
    auto described = describe({ active }, false);
    if (described.empty())
        return std::nullopt;
    return described.front();
}

std::vector<X11Window> X11Connection::windowsOfProcess(ProcessIdentifier pid)
{
    std::vector<X11Window> windows = clientWindowsFrontToBack();
    std::erase_if(windows, [pid](const X11Window& window) { return window.pid != pid; });
    return windows;
}

std::vector<uint32_t> X11Connection::stackingFrontToBack()
{
    auto cookie = xcb_ewmh_get_client_list_stacking(&state_->ewmh, state_->screenNumber);
    xcb_ewmh_get_windows_reply_t reply;
    if (!xcb_ewmh_get_client_list_stacking_reply(&state_->ewmh, cookie, &reply, nullptr))
        return {};
    // The property lists bottom to top.
    std::vector<uint32_t> windows(reply.windows, reply.windows + reply.windows_len);
    xcb_ewmh_get_windows_reply_wipe(&reply);
    std::reverse(windows.begin(), windows.end());
    return windows;
}

std::vector<X11Window> X11Connection::clientWindowsFrontToBack()
{
    return describe(stackingFrontToBack(), false);
}

std::vector<X11Window> X11Connection::onScreenWindowsFrontToBack()
{
    return describe(stackingFrontToBack(), true);
}

std::vector<X11Window> X11Connection::describe(const std::vector<uint32_t>& windows, bool onScreenOnly)
{
    xcb_connection_t* c = state_->connection;
    xcb_ewmh_connection_t* ewmh = &state_->ewmh;
    struct Cookies {
        xcb_get_property_cookie_t pid, name, legacyName, state, type, windowClass, gtkId, desktop;
        xcb_get_geometry_cookie_t geometry;
        xcb_translate_coordinates_cookie_t origin;
        xcb_get_window_attributes_cookie_t attributes;
    };
    auto currentDesktopCookie = xcb_ewmh_get_current_desktop(ewmh, state_->screenNumber);
    std::vector<Cookies> cookies;
    cookies.reserve(windows.size());
    for (xcb_window_t window : windows) {
        cookies.push_back({ xcb_ewmh_get_wm_pid(ewmh, window), xcb_ewmh_get_wm_name(ewmh, window),
            xcb_icccm_get_wm_name(c, window), xcb_ewmh_get_wm_state(ewmh, window),
            xcb_ewmh_get_wm_window_type(ewmh, window), xcb_icccm_get_wm_class(c, window),
            xcb_get_property(c, 0, window, state_->gtkApplicationId, ewmh->UTF8_STRING, 0, 1024),
            xcb_ewmh_get_wm_desktop(ewmh, window), xcb_get_geometry(c, window),
            xcb_translate_coordinates(c, window, state_->root, 0, 0), xcb_get_window_attributes(c, window) });
    }
    uint32_t currentDesktop = 0;
    bool knowsDesktop = xcb_ewmh_get_current_desktop_reply(ewmh, currentDesktopCookie, &currentDesktop, nullptr);

    std::vector<X11Window> described;
    for (size_t index = 0; index < windows.size(); ++index) {
        Cookies& cookie = cookies[index];
        X11Window window;
        window.id = windows[index];
        bool onScreen = true;

        uint32_t pid = 0;
        if (xcb_ewmh_get_wm_pid_reply(ewmh, cookie.pid, &pid, nullptr))
            window.pid = static_cast<ProcessIdentifier>(pid);

        xcb_ewmh_get_utf8_strings_reply_t name;
        if (xcb_ewmh_get_wm_name_reply(ewmh, cookie.name, &name, nullptr)) {
            window.title = utf8Text(name);
            xcb_ewmh_get_utf8_strings_reply_wipe(&name);
        }
        xcb_icccm_get_text_property_reply_t legacyName;
        if (xcb_icccm_get_wm_name_reply(c, cookie.legacyName, &legacyName, nullptr)) {
            if (window.title.empty())
                window.title.assign(legacyName.name, legacyName.name_len);
            xcb_icccm_get_text_property_reply_wipe(&legacyName);
        }

        xcb_ewmh_get_atoms_reply_t states;
        bool hasStates = xcb_ewmh_get_wm_state_reply(ewmh, cookie.state, &states, nullptr);
        xcb_ewmh_get_atoms_reply_t types;
        bool hasTypes = xcb_ewmh_get_wm_window_type_reply(ewmh, cookie.type, &types, nullptr);
        if (hasStates) {
            window.fullScreen = containsAtom(states, ewmh->_NET_WM_STATE_FULLSCREEN);
            onScreen = onScreen && !containsAtom(states, ewmh->_NET_WM_STATE_HIDDEN);
        }
        if (hasTypes)
            onScreen = onScreen && !containsAtom(types, ewmh->_NET_WM_WINDOW_TYPE_DESKTOP);
        window.layer = state_->layerOf(hasTypes ? &types : nullptr, hasStates ? &states : nullptr);
        if (hasStates)
            xcb_ewmh_get_atoms_reply_wipe(&states);
        if (hasTypes)
            xcb_ewmh_get_atoms_reply_wipe(&types);

        xcb_icccm_get_wm_class_reply_t windowClass;
        if (xcb_icccm_get_wm_class_reply(c, cookie.windowClass, &windowClass, nullptr)) {
            window.instanceName = windowClass.instance_name ? windowClass.instance_name : "";
            window.className = windowClass.class_name ? windowClass.class_name : "";
            xcb_icccm_get_wm_class_reply_wipe(&windowClass);
        }
        Reply<xcb_get_property_reply_t> gtkId(xcb_get_property_reply(c, cookie.gtkId, nullptr));
        if (gtkId && xcb_get_property_value_length(gtkId.get()) > 0)
            window.gtkApplicationId.assign(static_cast<const char*>(xcb_get_property_value(gtkId.get())),
                static_cast<size_t>(xcb_get_property_value_length(gtkId.get())));

        uint32_t desktop = 0;
        if (knowsDesktop && xcb_ewmh_get_wm_desktop_reply(ewmh, cookie.desktop, &desktop, nullptr))
            onScreen = onScreen && (desktop == allDesktops || desktop == currentDesktop);

        Reply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(c, cookie.geometry, nullptr));
        Reply<xcb_translate_coordinates_reply_t> origin(xcb_translate_coordinates_reply(c, cookie.origin, nullptr));
        Reply<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(c, cookie.attributes, nullptr));
        if (!geometry || !attributes)
            continue; // The window is gone.
        onScreen = onScreen && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
        window.frame = { { origin ? double(origin->dst_x) : double(geometry->x),
                             origin ? double(origin->dst_y) : double(geometry->y) },
            { double(geometry->width), double(geometry->height) } };
        if (window.pid == 0)
            window.pid = state_->pidFromResourceExtension(window.id);
        if (!onScreenOnly || onScreen)
            described.push_back(std::move(window));
    }
    return described;
}

std::vector<Rect> X11Connection::monitorFrames()
{
    std::vector<Rect> frames;
    if (state_->hasRandr) {
        auto cookie = xcb_randr_get_monitors(state_->connection, state_->root, 1);
        Reply<xcb_randr_get_monitors_reply_t> reply(xcb_randr_get_monitors_reply(state_->connection, cookie, nullptr));
        if (reply) {
            for (auto monitor = xcb_randr_get_monitors_monitors_iterator(reply.get()); monitor.rem;
                 xcb_randr_monitor_info_next(&monitor)) {
                Rect frame { { double(monitor.data->x), double(monitor.data->y) },
                    { double(monitor.data->width), double(monitor.data->height) } };
                if (monitor.data->primary)
                    frames.insert(frames.begin(), frame);
                else
                    frames.push_back(frame);
            }
        }
    }
    if (frames.empty()) {
        const xcb_screen_t* screen = state_->ewmh.screens[state_->screenNumber];
        frames.push_back({ { 0, 0 }, { double(screen->width_in_pixels), double(screen->height_in_pixels) } });
    }
    return frames;
}

} // namespace vardel::linux_desktop
