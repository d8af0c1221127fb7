#include "platform/linux/LogindPowerManagement.h"

#include "platform/linux/ApplicationIdentity.h"
#include "platform/linux/GLibHandles.h"

#include <gio/gio.h>

namespace vardel::linux_desktop {

namespace {

constexpr int callTimeoutMilliseconds = 500;
// The platform's assertion level for "on".
constexpr int assertionOn = 255;

std::vector<LogindPowerManagement::Inhibitor> listInhibitors()
{
    std::vector<LogindPowerManagement::Inhibitor> inhibitors;
    GObjectHandle<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    if (!bus)
        return inhibitors;
    GVariantHandle reply(g_dbus_connection_call_sync(bus.get(), "org.freedesktop.login1", "/org/freedesktop/login1",
        "org.freedesktop.login1.Manager", "ListInhibitors", nullptr, G_VARIANT_TYPE("(a(ssssuu))"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, callTimeoutMilliseconds, nullptr, nullptr));
    if (!reply)
        return inhibitors;
    GVariantIter* unpacked = nullptr;
    g_variant_get(reply.get(), "(a(ssssuu))", &unpacked);
    GVariantIterHandle iterator(unpacked);
    const gchar *what, *who, *why, *mode;
    guint32 uid, pid;
    while (g_variant_iter_next(iterator.get(), "(&s&s&s&suu)", &what, &who, &why, &mode, &uid, &pid))
        inhibitors.push_back({ what, who, why, mode, uid, pid });
    return inhibitors;
}

} // namespace

Value::Dictionary LogindPowerManagement::assertionsOf(const std::vector<Inhibitor>& inhibitors)
{
    std::map<std::string, Value::List> byProcess;
    for (const Inhibitor& inhibitor : inhibitors) {
        Value::Dictionary record { { AssertionKey::type, inhibitor.what }, { AssertionKey::trueType, inhibitor.what },
            { AssertionKey::name, inhibitor.why }, { AssertionKey::processName, inhibitor.who },
            { AssertionKey::level, assertionOn }, { "Mode", inhibitor.mode } };
        byProcess[std::to_string(inhibitor.pid)].push_back(std::move(record));
    }
    Value::Dictionary assertions;
    for (auto& [pid, records] : byProcess)
        assertions.emplace(pid, Value(std::move(records)));
    return assertions;
}

AssertionsByProcess LogindPowerManagement::copyAssertionsByProcess()
{
    return { 0, assertionsOf(listInhibitors()) };
}

std::optional<std::string> LogindPowerManagement::pathForProcess(ProcessIdentifier pid)
{
    return ApplicationIdentity::executableOf(pid);
}

} // namespace vardel::linux_desktop
