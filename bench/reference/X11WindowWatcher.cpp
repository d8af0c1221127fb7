// The least an X11 window watcher does: once a second the active window, then its title, class and
// process id, four property reads. The process benchmark runs it beside the tracker as the floor of
// what sampling the desktop costs. Appends one line per sample to the file it is given.

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <xcb/xcb.h>

namespace {

struct FreeDeleter {
    void operator()(void* pointer) const { std::free(pointer); }
};
using PropertyReply = std::unique_ptr<xcb_get_property_reply_t, FreeDeleter>;

struct ConnectionCloser {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

xcb_atom_t atom(xcb_connection_t* connection, const char* name)
{
    auto cookie = xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name);
    std::unique_ptr<xcb_intern_atom_reply_t, FreeDeleter> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

PropertyReply property(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t name, xcb_atom_t type)
{
    constexpr uint32_t longestValue = 1024;
    auto cookie = xcb_get_property(connection, 0, window, name, type, 0, longestValue);
    return PropertyReply(xcb_get_property_reply(connection, cookie, nullptr));
}

std::string text(const PropertyReply& reply)
{
    if (!reply)
        return "";
    return std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
        static_cast<size_t>(xcb_get_property_value_length(reply.get())));
}

uint32_t cardinal(const PropertyReply& reply)
{
    if (!reply || xcb_get_property_value_length(reply.get()) < static_cast<int>(sizeof(uint32_t)))
        return 0;
    return *static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s SAMPLE-LOG\n", argv[0]);
        return 2;
    }
    std::unique_ptr<std::FILE, FileCloser> log(std::fopen(argv[1], "a"));
    int screenNumber = 0;
    std::unique_ptr<xcb_connection_t, ConnectionCloser> connection(xcb_connect(nullptr, &screenNumber));
    if (!log || xcb_connection_has_error(connection.get())) {
        std::fprintf(stderr, "%s: cannot open the sample log or the display\n", argv[0]);
        return 1;
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    for (int skipped = 0; skipped < screenNumber; ++skipped)
        xcb_screen_next(&screens);
    xcb_window_t root = screens.data->root;
    xcb_atom_t activeWindow = atom(connection.get(), "_NET_ACTIVE_WINDOW");
    xcb_atom_t windowName = atom(connection.get(), "_NET_WM_NAME");
    xcb_atom_t utf8String = atom(connection.get(), "UTF8_STRING");
    xcb_atom_t windowPid = atom(connection.get(), "_NET_WM_PID");

    timespec next {};
    clock_gettime(CLOCK_MONOTONIC, &next);
    while (!xcb_connection_has_error(connection.get())) {
        auto window
            = static_cast<xcb_window_t>(cardinal(property(connection.get(), root, activeWindow, XCB_ATOM_WINDOW)));
        std::string title;
        std::string windowClass;
        uint32_t pid = 0;
        if (window != XCB_WINDOW_NONE) {
            title = text(property(connection.get(), window, windowName, utf8String));
            windowClass = text(property(connection.get(), window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING));
            pid = cardinal(property(connection.get(), window, windowPid, XCB_ATOM_CARDINAL));
        }
        std::fprintf(log.get(), "%u %zu %zu\n", pid, title.size(), windowClass.size());
        std::fflush(log.get());
        next.tv_sec += 1;
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &next, nullptr) == EINTR) { }
    }
    return 0;
}
