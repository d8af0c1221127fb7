#pragma once

#include "platform/PowerManagement.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/RetryDelays.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

typedef struct _GDBusConnection GDBusConnection;
typedef struct _GCancellable GCancellable;

namespace vardel::linux_desktop {

// What programs keep the session from going idle or the system from sleeping: logind's inhibitors
// (system bus) and, on GNOME, the session manager's (session bus). Both are read in the
// background, when they announce a change and at most every few seconds otherwise, so that a
// sample reads the last answer from memory; only the first reading, when the list is made, waits. Without either
// service the list is simply empty.
class SessionInhibitors {
public:
    struct LogindInhibitor {
        std::string what, who, why, mode;
        uint32_t uid = 0;
        uint32_t pid = 0;
    };
    struct SessionManagerInhibitor {
        std::string applicationId, reason;
        uint32_t flags = 0;
    };
    // The process of a running application with this application id (a desktop entry id or a
    // name), for inhibitors that name no process.
    using ApplicationResolver = std::function<std::optional<ProcessIdentifier>(const std::string& applicationId)>;

    SessionInhibitors();
    ~SessionInhibitors();
    SessionInhibitors(const SessionInhibitors&) = delete;
    SessionInhibitors& operator=(const SessionInhibitors&) = delete;

    // The inhibitors read last, as assertion records by process; asks again in the background when
    // the answer is older than the refresh interval.
    Value::Dictionary assertions(const ApplicationResolver&);

    // Idle inhibitors hold the display awake, as a call does; the shutdown and sleep delays browsers
    // keep all the time say nothing of the user.
    static Value::Dictionary assertionsOf(const std::vector<LogindInhibitor>&);
    static Value::Dictionary assertionsOf(const std::vector<SessionManagerInhibitor>&, const ApplicationResolver&);

    // Asks both services again; the answers arrive on the GLib main context.
    void refresh();
    // Called with the answers as they arrive.
    void takeLogindInhibitors(std::vector<LogindInhibitor>);
    void takeSessionManagerInhibitors(std::vector<SessionManagerInhibitor>);

private:
    // The first reading waits for its answers, so that a snapshot taken at start-up has them.
    void readNow();
    void connectIfGone();
    void refreshLogind();
    void refreshSessionManager();

    GObjectHandle<GCancellable> cancellable_;
    GObjectHandle<GDBusConnection> systemBus_;
    GObjectHandle<GDBusConnection> sessionBus_;
    unsigned logindSubscription_ = 0;
    unsigned sessionManagerSubscription_ = 0;
    std::vector<LogindInhibitor> logindInhibitors_;
    std::vector<SessionManagerInhibitor> sessionManagerInhibitors_;
    std::chrono::steady_clock::time_point lastRefresh_ {};
    // A bus that is not there (no system bus in a container) is looked for less and less often.
    RetryDelays systemBusRetries_ { refreshInterval, longestReconnectDelay };
    RetryDelays sessionBusRetries_ { refreshInterval, longestReconnectDelay };

    static constexpr auto refreshInterval = std::chrono::seconds(5);
    static constexpr auto longestReconnectDelay = std::chrono::seconds(60);
};

} // namespace vardel::linux_desktop
