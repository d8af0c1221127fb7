#include "platform/linux/SessionInhibitors.h"

#include "platform/linux/MessageBus.h"

#include <array>
#include <gio/gio.h>
#include <map>
#include <memory>

namespace vardel::linux_desktop {

namespace {

constexpr int callTimeoutMilliseconds = 1000;
// The first reading, at start-up, waits for its answers; a service that is slow then is given less.
constexpr int firstReadTimeoutMilliseconds = 300;
// The platform's assertion level for "on".
constexpr int assertionOn = 255;
constexpr const char* idleAssertionType = "PreventUserIdleDisplaySleep";
// GNOME's inhibitor flag for "the session is not idle".
constexpr uint32_t sessionManagerIdleFlag = 8;

constexpr const char* logindService = "org.freedesktop.login1";
constexpr const char* logindPath = "/org/freedesktop/login1";
constexpr const char* sessionManagerService = "org.gnome.SessionManager";
constexpr const char* sessionManagerPath = "/org/gnome/SessionManager";
constexpr const char* inhibitorInterface = "org.gnome.SessionManager.Inhibitor";

Value::Dictionary recordOf(const std::string& type, const std::string& name, const std::string& processName)
{
    return { { AssertionKey::type, type }, { AssertionKey::trueType, type }, { AssertionKey::name, name },
        { AssertionKey::processName, processName }, { AssertionKey::level, assertionOn } };
}

Value::Dictionary byProcess(std::map<std::string, Value::List>&& records)
{
    Value::Dictionary assertions;
    for (auto& [pid, list] : records)
        assertions.emplace(pid, Value(std::move(list)));
    return assertions;
}

bool isCancelled(GError* error)
{
    return error && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED);
}

GVariantHandle finishCall(GObject* bus, GAsyncResult* result, bool& cancelled)
{
    GError* failure = nullptr;
    GVariantHandle reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &failure));
    GErrorHandle error(failure);
    cancelled = isCancelled(error.get());
    return reply;
}

std::vector<SessionInhibitors::LogindInhibitor> logindInhibitorsIn(GVariant* reply)
{
    std::vector<SessionInhibitors::LogindInhibitor> inhibitors;
    if (!reply)
        return inhibitors;
    GVariantIter* unpacked = nullptr;
    g_variant_get(reply, "(a(ssssuu))", &unpacked);
    GVariantIterHandle iterator(unpacked);
    const gchar *what, *who, *why, *mode;
    guint32 uid, pid;
    while (g_variant_iter_next(iterator.get(), "(&s&s&s&suu)", &what, &who, &why, &mode, &uid, &pid))
        inhibitors.push_back({ what, who, why, mode, uid, pid });
    return inhibitors;
}

std::vector<std::string> objectPathsIn(GVariant* reply)
{
    std::vector<std::string> paths;
    if (!reply)
        return paths;
    GVariantIter* unpacked = nullptr;
    g_variant_get(reply, "(ao)", &unpacked);
    GVariantIterHandle iterator(unpacked);
    const gchar* path = nullptr;
    while (g_variant_iter_next(iterator.get(), "&o", &path))
        paths.emplace_back(path);
    return paths;
}

// One answer about a session manager's inhibitor, into the member the method reads.
void takeInhibitorAnswer(
    SessionInhibitors::SessionManagerInhibitor& inhibitor, std::string_view method, GVariant* reply)
{
    if (!reply)
        return;
    if (method == "GetFlags" && g_variant_is_of_type(reply, G_VARIANT_TYPE("(u)"))) {
        g_variant_get(reply, "(u)", &inhibitor.flags);
    } else if (g_variant_is_of_type(reply, G_VARIANT_TYPE("(s)"))) {
        const gchar* text = nullptr;
        g_variant_get(reply, "(&s)", &text);
        (method == "GetAppId" ? inhibitor.applicationId : inhibitor.reason) = text;
    }
}

constexpr std::array<const char*, 3> inhibitorQuestions { "GetAppId", "GetReason", "GetFlags" };

GVariantHandle callNow(GDBusConnection* bus, const char* service, const char* path, const char* interface,
    const char* method, const GVariantType* replyType)
{
    return GVariantHandle(g_dbus_connection_call_sync(bus, service, path, interface, method, nullptr, replyType,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, firstReadTimeoutMilliseconds, nullptr, nullptr));
}

void onLogindInhibitors(GObject* bus, GAsyncResult* result, gpointer owner)
{
    bool cancelled = false;
    GVariantHandle reply = finishCall(bus, result, cancelled);
    if (!cancelled)
        static_cast<SessionInhibitors*>(owner)->takeLogindInhibitors(logindInhibitorsIn(reply.get()));
}

// One reading of the session manager's inhibitors: their list, then three questions to each.
struct SessionManagerReading {
    SessionInhibitors* owner;
    GObjectHandle<GCancellable> cancellable;
    std::vector<SessionInhibitors::SessionManagerInhibitor> inhibitors;
    size_t pendingAnswers = 0;

    void answered()
    {
        if (--pendingAnswers > 0)
            return;
        std::unique_ptr<SessionManagerReading> done(this);
        if (!g_cancellable_is_cancelled(cancellable.get()))
            owner->takeSessionManagerInhibitors(std::move(inhibitors));
    }
};

struct InhibitorQuestion {
    SessionManagerReading* reading;
    size_t inhibitor;
    const char* method;
};

void onInhibitorAnswer(GObject* bus, GAsyncResult* result, gpointer data)
{
    std::unique_ptr<InhibitorQuestion> question(static_cast<InhibitorQuestion*>(data));
    bool cancelled = false;
    GVariantHandle reply = finishCall(bus, result, cancelled);
    takeInhibitorAnswer(question->reading->inhibitors[question->inhibitor], question->method, reply.get());
    question->reading->answered();
}

void onSessionManagerInhibitors(GObject* bus, GAsyncResult* result, gpointer data)
{
    auto* reading = static_cast<SessionManagerReading*>(data);
    bool cancelled = false;
    GVariantHandle reply = finishCall(bus, result, cancelled);
    std::vector<std::string> paths = objectPathsIn(reply.get());
    reading->inhibitors.resize(paths.size());
    // The list itself counts as one answer, so that the reading ends when the last question does.
    reading->pendingAnswers = 1;
    for (size_t inhibitor = 0; inhibitor < paths.size() && !cancelled; ++inhibitor) {
        for (const char* method : inhibitorQuestions) {
            ++reading->pendingAnswers;
            g_dbus_connection_call(G_DBUS_CONNECTION(bus), sessionManagerService, paths[inhibitor].c_str(),
                inhibitorInterface, method, nullptr, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, callTimeoutMilliseconds,
                reading->cancellable.get(), onInhibitorAnswer, new InhibitorQuestion { reading, inhibitor, method });
        }
    }
    reading->answered();
}

void onChangeAnnounced(
    GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant*, gpointer owner)
{
    static_cast<SessionInhibitors*>(owner)->refresh();
}

} // namespace

SessionInhibitors::SessionInhibitors()
    : cancellable_(g_cancellable_new())
{
    connectIfGone();
    readNow();
}

// A bus that restarted closed its connection: a later reading makes a new one.
void SessionInhibitors::connectIfGone()
{
    auto now = RetryDelays::Clock::now();
    if (MessageBus::isGone(systemBus_) && systemBusRetries_.isDue(now)) {
        systemBus_ = MessageBus::connect(G_BUS_TYPE_SYSTEM);
        if (systemBus_) {
            systemBusRetries_.succeeded();
            logindSubscription_ = g_dbus_connection_signal_subscribe(systemBus_.get(), logindService,
                "org.freedesktop.DBus.Properties", "PropertiesChanged", logindPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
                onChangeAnnounced, this, nullptr);
        } else {
            systemBusRetries_.failed(now);
        }
    }
    if (MessageBus::isGone(sessionBus_) && sessionBusRetries_.isDue(now)) {
        sessionBus_ = MessageBus::connect(G_BUS_TYPE_SESSION);
        if (sessionBus_) {
            sessionBusRetries_.succeeded();
            sessionManagerSubscription_ = g_dbus_connection_signal_subscribe(sessionBus_.get(), sessionManagerService,
                "org.gnome.SessionManager", nullptr, sessionManagerPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
                onChangeAnnounced, this, nullptr);
        } else {
            sessionBusRetries_.failed(now);
        }
    }
}

void SessionInhibitors::readNow()
{
    lastRefresh_ = std::chrono::steady_clock::now();
    if (systemBus_) {
        logindInhibitors_ = logindInhibitorsIn(callNow(systemBus_.get(), logindService, logindPath,
            "org.freedesktop.login1.Manager", "ListInhibitors", G_VARIANT_TYPE("(a(ssssuu))"))
                                                   .get());
    }
    if (!sessionBus_)
        return;
    auto list = callNow(sessionBus_.get(), sessionManagerService, sessionManagerPath, "org.gnome.SessionManager",
        "GetInhibitors", G_VARIANT_TYPE("(ao)"));
    for (const std::string& path : objectPathsIn(list.get())) {
        SessionManagerInhibitor& inhibitor = sessionManagerInhibitors_.emplace_back();
        for (const char* method : inhibitorQuestions) {
            takeInhibitorAnswer(inhibitor, method,
                callNow(sessionBus_.get(), sessionManagerService, path.c_str(), inhibitorInterface, method, nullptr)
                    .get());
        }
    }
}

SessionInhibitors::~SessionInhibitors()
{
    g_cancellable_cancel(cancellable_.get());
    if (systemBus_)
        g_dbus_connection_signal_unsubscribe(systemBus_.get(), logindSubscription_);
    if (sessionBus_)
        g_dbus_connection_signal_unsubscribe(sessionBus_.get(), sessionManagerSubscription_);
}

Value::Dictionary SessionInhibitors::assertions(const ApplicationResolver& resolver)
{
    if (std::chrono::steady_clock::now() - lastRefresh_ >= refreshInterval)
        refresh();
    Value::Dictionary assertions = assertionsOf(logindInhibitors_);
    if (!resolver || sessionManagerInhibitors_.empty())
        return assertions;
    return mergedAssertions(std::move(assertions), assertionsOf(sessionManagerInhibitors_, resolver));
}

void SessionInhibitors::refresh()
{
    lastRefresh_ = std::chrono::steady_clock::now();
    connectIfGone();
    refreshLogind();
    refreshSessionManager();
}

void SessionInhibitors::refreshLogind()
{
    if (!systemBus_)
        return;
    g_dbus_connection_call(systemBus_.get(), logindService, logindPath, "org.freedesktop.login1.Manager",
        "ListInhibitors", nullptr, G_VARIANT_TYPE("(a(ssssuu))"), G_DBUS_CALL_FLAGS_NO_AUTO_START,
        callTimeoutMilliseconds, cancellable_.get(), onLogindInhibitors, this);
}

void SessionInhibitors::refreshSessionManager()
{
    if (!sessionBus_)
        return;
    auto* reading = new SessionManagerReading { this,
        GObjectHandle<GCancellable>(G_CANCELLABLE(g_object_ref(cancellable_.get()))), {}, 0 };
    g_dbus_connection_call(sessionBus_.get(), sessionManagerService, sessionManagerPath, "org.gnome.SessionManager",
        "GetInhibitors", nullptr, G_VARIANT_TYPE("(ao)"), G_DBUS_CALL_FLAGS_NO_AUTO_START, callTimeoutMilliseconds,
        cancellable_.get(), onSessionManagerInhibitors, reading);
}

void SessionInhibitors::takeLogindInhibitors(std::vector<LogindInhibitor> inhibitors)
{
    logindInhibitors_ = std::move(inhibitors);
}

void SessionInhibitors::takeSessionManagerInhibitors(std::vector<SessionManagerInhibitor> inhibitors)
{
    sessionManagerInhibitors_ = std::move(inhibitors);
}

Value::Dictionary SessionInhibitors::assertionsOf(const std::vector<LogindInhibitor>& inhibitors)
{
    std::map<std::string, Value::List> records;
    for (const LogindInhibitor& inhibitor : inhibitors) {
        // Only a blocking idle inhibitor keeps the screen on; delays and other locks are bookkeeping.
        bool holdsIdle = inhibitor.mode == "block" && inhibitor.what.find("idle") != std::string::npos;
        std::string type = holdsIdle ? idleAssertionType : "logind:" + inhibitor.what + ":" + inhibitor.mode;
        records[std::to_string(inhibitor.pid)].push_back(recordOf(type, inhibitor.why, inhibitor.who));
    }
    return byProcess(std::move(records));
}

Value::Dictionary SessionInhibitors::assertionsOf(
    const std::vector<SessionManagerInhibitor>& inhibitors, const ApplicationResolver& resolver)
{
    std::map<std::string, Value::List> records;
    for (const SessionManagerInhibitor& inhibitor : inhibitors) {
        if (!(inhibitor.flags & sessionManagerIdleFlag))
            continue;
        if (auto pid = resolver(inhibitor.applicationId)) {
            records[std::to_string(*pid)].push_back(
                recordOf(idleAssertionType, inhibitor.reason, inhibitor.applicationId));
        }
    }
    return byProcess(std::move(records));
}

} // namespace vardel::linux_desktop
