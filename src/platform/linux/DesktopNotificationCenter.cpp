#include "platform/linux/DesktopNotificationCenter.h"

#include "platform/JsonText.h"
#include "platform/ValueJson.h"
#include "platform/linux/MessageBus.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <fstream>
#include <gio/gio.h>

namespace vardel::linux_desktop {

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* objectPath = "/org/freedesktop/Notifications";
constexpr const char* applicationName = "Vardel Tracker";
constexpr int notifyTimeoutMilliseconds = 2000;
// NotificationClosed's reason for "dismissed by the user".
constexpr uint32_t dismissedByUser = 2;
// The newest notifications the file keeps: older ones are long gone from the screen.
constexpr size_t maximumRememberedNotifications = 50;

struct PermissionRequest {
    std::function<void(bool)> answer;
};

void onCapabilities(GObject* bus, GAsyncResult* result, gpointer data)
{
    std::unique_ptr<PermissionRequest> request(static_cast<PermissionRequest*>(data));
    GVariantHandle reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
    bool showsActions = false;
    if (reply && g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(as)"))) {
        GVariantIter* unpacked = nullptr;
        g_variant_get(reply.get(), "(as)", &unpacked);
        GVariantIterHandle iterator(unpacked);
        const gchar* capability = nullptr;
        while (g_variant_iter_next(iterator.get(), "&s", &capability))
            showsActions = showsActions || std::string_view(capability) == "actions";
    }
    request->answer(showsActions);
}

std::optional<uint32_t> notificationIdFrom(const std::string& text)
{
    uint32_t id = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return id;
}

void onActionInvoked(
    GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* parameters, gpointer center)
{
    guint32 id = 0;
    const gchar* action = nullptr;
    g_variant_get(parameters, "(u&s)", &id, &action);
    std::string actionKey = action ? action : "";
    UserNotificationResponse response = actionKey == "default"
        ? UserNotificationResponse { UserNotificationResponse::Kind::clicked, {} }
        : UserNotificationResponse { UserNotificationResponse::Kind::action, actionKey };
    static_cast<DesktopNotificationCenter*>(center)->answer(id, response);
}

void onClosed(
    GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* parameters, gpointer center)
{
    guint32 id = 0;
    guint32 reason = 0;
    g_variant_get(parameters, "(uu)", &id, &reason);
    if (reason == dismissedByUser)
        static_cast<DesktopNotificationCenter*>(center)->answer(id, {});
}

} // namespace

DesktopNotificationCenter::DesktopNotificationCenter(
    EventTrace& trace, Log& log, std::optional<std::filesystem::path> deliveredFile)
    : trace_(trace)
    , log_(log)
    , deliveredFile_(std::move(deliveredFile))
{
    loadDelivered();
    connectIfGone();
}

DesktopNotificationCenter::~DesktopNotificationCenter()
{
    unsubscribe();
}

void DesktopNotificationCenter::unsubscribe()
{
    if (!bus_)
        return;
    g_dbus_connection_signal_unsubscribe(bus_.get(), actionSubscription_);
    g_dbus_connection_signal_unsubscribe(bus_.get(), closedSubscription_);
}

bool DesktopNotificationCenter::connectIfGone()
{
    if (!MessageBus::isGone(bus_))
        return true;
    unsubscribe();
    bus_ = MessageBus::connect(G_BUS_TYPE_SESSION);
    if (!bus_)
        return false;
    actionSubscription_ = g_dbus_connection_signal_subscribe(bus_.get(), nullptr, service, "ActionInvoked", objectPath,
        nullptr, G_DBUS_SIGNAL_FLAGS_NONE, onActionInvoked, this, nullptr);
    closedSubscription_ = g_dbus_connection_signal_subscribe(bus_.get(), nullptr, service, "NotificationClosed",
        objectPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, onClosed, this, nullptr);
    return true;
}

void DesktopNotificationCenter::registerCategory(const std::string& identifier,
    std::vector<UserNotificationAction> actions, UserNotificationCategoryDelegate* delegate)
{
    categories_.insert_or_assign(identifier, Category { std::move(actions), delegate });
}

void DesktopNotificationCenter::requestPermission(std::function<void(bool granted)> answer)
{
    if (!connectIfGone())
        return answer(false);
    g_dbus_connection_call(bus_.get(), service, objectPath, service, "GetCapabilities", nullptr, nullptr,
        G_DBUS_CALL_FLAGS_NONE, notifyTimeoutMilliseconds, nullptr, onCapabilities,
        new PermissionRequest { std::move(answer) });
}

void DesktopNotificationCenter::deliver(const UserNotification& notification)
{
    trace_.write("notification",
        { { "title", notification.title }, { "body", notification.body },
            { "category", notification.categoryIdentifier }, { "sound", notification.playsSound },
            { "userInfo", ValueJson::encode(Value(notification.userInfo)) } });
    log_.info("Notification: " + notification.title + ": " + notification.body);
    if (!connectIfGone())
        return;
    GVariantBuilder actions;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    g_variant_builder_add(&actions, "s", "default");
    g_variant_builder_add(&actions, "s", notification.title.c_str());
    if (auto category = categories_.find(notification.categoryIdentifier); category != categories_.end()) {
        for (const UserNotificationAction& action : category->second.actions) {
            g_variant_builder_add(&actions, "s", action.identifier.c_str());
            g_variant_builder_add(&actions, "s", action.title.c_str());
        }
    }
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    if (!notification.playsSound)
        g_variant_builder_add(&hints, "{sv}", "suppress-sound", g_variant_new_boolean(TRUE));
    GVariantHandle reply(g_dbus_connection_call_sync(bus_.get(), service, objectPath, service, "Notify",
        g_variant_new("(susssasa{sv}i)", applicationName, 0u, "", notification.title.c_str(), notification.body.c_str(),
            &actions, &hints, -1),
        G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, notifyTimeoutMilliseconds, nullptr, nullptr));
    if (!reply)
        return;
    guint32 id = 0;
    g_variant_get(reply.get(), "(u)", &id);
    delivered_.insert_or_assign(id, Delivered { notification.categoryIdentifier, notification.userInfo });
    while (delivered_.size() > maximumRememberedNotifications)
        delivered_.erase(delivered_.begin());
    saveDelivered();
}

void DesktopNotificationCenter::answer(uint32_t notificationId, const UserNotificationResponse& response)
{
    auto delivered = delivered_.find(notificationId);
    if (delivered == delivered_.end())
        return;
    Delivered notification = delivered->second;
    delivered_.erase(delivered);
    saveDelivered();
    auto category = categories_.find(notification.category);
    if (category != categories_.end() && category->second.delegate)
        category->second.delegate->handleResponse(notification.category, response, notification.userInfo);
}

std::optional<std::filesystem::path> DesktopNotificationCenter::deliveredFileIn(const char* runtimeFolder)
{
    if (!runtimeFolder || !*runtimeFolder || !std::filesystem::path(runtimeFolder).is_absolute())
        return std::nullopt;
    return std::filesystem::path(runtimeFolder) / "vardel" / "notifications.json";
}

// {"<id>": {"category": "…", "userInfo": {"key": "text", …}}, …}
void DesktopNotificationCenter::loadDelivered()
{
    if (!deliveredFile_)
        return;
    std::ifstream file(*deliveredFile_);
    if (!file)
        return;
    auto remembered = nlohmann::json::parse(file, nullptr, /*allow_exceptions=*/false);
    if (!remembered.is_object()) {
        log_.warning("Ignoring the unreadable list of delivered notifications in " + deliveredFile_->string());
        return;
    }
    for (const auto& [key, entry] : remembered.items()) {
        auto id = notificationIdFrom(key);
        if (!id || !entry.is_object() || !entry.contains("category") || !entry["category"].is_string())
            continue;
        Delivered notification { entry["category"].get<std::string>(), {} };
        if (entry.contains("userInfo") && entry["userInfo"].is_object()) {
            for (const auto& [name, value] : entry["userInfo"].items()) {
                if (value.is_string())
                    notification.userInfo.emplace(name, value.get<std::string>());
            }
        }
        delivered_.insert_or_assign(*id, std::move(notification));
    }
}

void DesktopNotificationCenter::saveDelivered() const
{
    if (!deliveredFile_)
        return;
    nlohmann::json remembered = nlohmann::json::object();
    for (const auto& [id, notification] : delivered_) {
        nlohmann::json userInfo = nlohmann::json::object();
        for (const auto& [name, value] : notification.userInfo) {
            if (value.asText())
                userInfo[name] = *value.asText();
        }
        remembered[std::to_string(id)] = { { "category", notification.category }, { "userInfo", userInfo } };
    }
    std::error_code ignored;
    std::filesystem::create_directories(deliveredFile_->parent_path(), ignored);
    std::filesystem::path written = deliveredFile_->string() + ".new";
    {
        std::ofstream file(written, std::ios::trunc);
        file << jsonText(remembered);
        if (!file)
            return;
    }
    std::filesystem::rename(written, *deliveredFile_, ignored);
}

} // namespace vardel::linux_desktop
