#include "host/desktop/MprisBus.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <unistd.h>

#include "host/desktop/MprisInterfaces.h"
#include "platform/RemoteKeys.h"

namespace host {
namespace {

// The first picture has the processor for itself.
constexpr unsigned kStartMs = 1500;
constexpr unsigned kAskMs = 500;
constexpr const char* kName = "org.mpris.MediaPlayer2.nuvid";
constexpr double kLongestSkip = 1e6;    // seconds

}    // namespace

MprisBus::MprisBus(GMainContext* context, MprisPlayer player)
    : m_pContext(context)
    , m_Player(std::move(player))
    , m_pCancel(g_cancellable_new())
    , m_Self(std::make_shared<MprisBus*>(this))
{
    After(kStartMs, &MprisBus::Connect);
}

MprisBus::~MprisBus()
{
    *m_Self = nullptr;
    g_cancellable_cancel(m_pCancel);
    g_object_unref(m_pCancel);
    if (m_pTimer != nullptr) {
        g_source_destroy(m_pTimer);
        g_source_unref(m_pTimer);
    }
    if (m_nName != 0) {
        g_bus_unown_name(m_nName);
    }
    if (m_pConnection != nullptr) {
        g_dbus_connection_close_sync(m_pConnection, nullptr, nullptr);
        g_object_unref(m_pConnection);
    }
    if (m_pNode != nullptr) {
        g_dbus_node_info_unref(m_pNode);
    }
}

// Once; the last timer that was set ends with it.
void MprisBus::After(unsigned milliseconds, void (MprisBus::*call)())
{
    if (m_pTimer != nullptr) {
        g_source_destroy(m_pTimer);
        g_source_unref(m_pTimer);
    }
    struct Task {
        MprisBus* bus;
        void (MprisBus::*call)();
    };
    m_pTimer = g_timeout_source_new(milliseconds);
    const GSourceFunc onTime = [](gpointer data) -> gboolean {
        const Task task = *static_cast<Task*>(data);
        (task.bus->*task.call)();
        return G_SOURCE_REMOVE;
    };
    g_source_set_callback(m_pTimer, onTime, new Task {this, call}, [](gpointer data) { delete static_cast<Task*>(data); });
    g_source_attach(m_pTimer, m_pContext);
}

void MprisBus::Connect()
{
    char* const address = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, m_pCancel, nullptr);
    if (address == nullptr) {
        return;
    }
    // A connection of our own: the shared one ends the process when the bus does.
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    const GAsyncReadyCallback onConnected = [](GObject*, GAsyncResult* result, gpointer data) {
        const std::unique_ptr<std::shared_ptr<MprisBus*>> self(static_cast<std::shared_ptr<MprisBus*>*>(data));
        GDBusConnection* const connection = g_dbus_connection_new_for_address_finish(result, nullptr);
        if (connection != nullptr && **self != nullptr) {
            (**self)->OnConnected(connection);
        } else if (connection != nullptr) {
            g_object_unref(connection);
        }
    };
    g_dbus_connection_new_for_address(address, flags, nullptr, m_pCancel, onConnected, new std::shared_ptr<MprisBus*>(m_Self));
    g_free(address);
}

void MprisBus::OnConnected(GDBusConnection* connection)
{
    m_pConnection = connection;
    if (!Register()) {
        return;
    }
    m_nName = g_bus_own_name_on_connection(connection, kName, G_BUS_NAME_OWNER_FLAGS_DO_NOT_QUEUE, nullptr,
        [](GDBusConnection* bus, const char*, gpointer data) {
            // Another player runs already: MPRIS 2.2, "Bus Name Policy".
            auto* const self = static_cast<MprisBus*>(data);
            if (bus != nullptr && !g_dbus_connection_is_closed(bus)) {
                g_bus_unown_name(self->m_nName);
                const std::string own = std::string(kName) + ".instance" + std::to_string(getpid());
                self->m_nName = g_bus_own_name_on_connection(bus, own.c_str(), G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr, nullptr);
            }
        },
        this, nullptr);
    Ask();
}

bool MprisBus::Register()
{
    static constexpr GDBusInterfaceVTable kTable = {OnCall, OnGet, OnSet, {}};
    m_pNode = g_dbus_node_info_new_for_xml(kMprisInterfaces, nullptr);
    for (const char* const name : {kMprisRoot, kMprisPlayer}) {
        GDBusInterfaceInfo* const interface = m_pNode == nullptr ? nullptr : g_dbus_node_info_lookup_interface(m_pNode, name);
        if (interface == nullptr || g_dbus_connection_register_object(m_pConnection, kMprisPath, interface, &kTable, this, nullptr, nullptr) == 0) {
            return false;
        }
    }
    return true;
}

void MprisBus::Ask()
{
    if (g_dbus_connection_is_closed(m_pConnection)) {
        return;
    }
    m_Player.ask([self = m_Self](const CascadeNowPlaying& now) {
        if (*self != nullptr) {
            (*self)->Announce(now);
        }
    });
}

void MprisBus::Announce(const CascadeNowPlaying& now)
{
    const Clock::time_point at = Clock::now();
    const MprisState::Change change = m_State.Take(now, at);
    if (!change.properties.empty()) {
        GVariantBuilder changed;
        g_variant_builder_init(&changed, G_VARIANT_TYPE_VARDICT);
        for (const char* const name : change.properties) {
            g_variant_builder_add(&changed, "{sv}", name, m_State.Property(name, at));
        }
        g_dbus_connection_emit_signal(m_pConnection, nullptr, kMprisPath, "org.freedesktop.DBus.Properties", "PropertiesChanged",
            g_variant_new("(sa{sv}as)", kMprisPlayer, &changed, nullptr), nullptr);
    }
    if (change.seeked) {
        g_dbus_connection_emit_signal(
            m_pConnection, nullptr, kMprisPath, kMprisPlayer, "Seeked", g_variant_new("(x)", m_State.PositionUs(at)), nullptr);
    }
    After(kAskMs, &MprisBus::Ask);
}

void MprisBus::Seek(int64_t byUs)
{
    const double seconds = std::clamp(std::round(static_cast<double>(byUs) / 1e6), -kLongestSkip, kLongestSkip);
    if (seconds != 0) {
        m_Player.skip(static_cast<int>(seconds));
    }
}

void MprisBus::Call(const char* method, GVariant* parameters, GDBusMethodInvocation* invocation)
{
    struct KeyRow {
        const char* method;
        uint32_t key;
        bool whilePlaying;
        bool otherwise;
    };
    static constexpr KeyRow kKeys[] = {
        {"Next", Remote::kNextChapter, true, true},
        {"Previous", Remote::kPrevChapter, true, true},
        {"Pause", Remote::kPause, true, false},
        {"Play", Remote::kPlay, false, true},
        {"PlayPause", Remote::kPlayPause, true, true},
        {"Stop", Remote::kStop, true, true},
    };
    for (const KeyRow& row : kKeys) {
        if (std::strcmp(row.method, method) == 0 && (m_State.IsPlaying() ? row.whilePlaying : row.otherwise)) {
            m_Player.pressKey(row.key);
        }
    }
    if (std::strcmp(method, "Quit") == 0) {
        m_Player.quit();
    } else if (std::strcmp(method, "Seek") == 0) {
        int64_t by = 0;
        g_variant_get(parameters, "(x)", &by);
        Seek(by);
    } else if (std::strcmp(method, "SetPosition") == 0) {
        const char* track = nullptr;
        int64_t to = 0;
        g_variant_get(parameters, "(&ox)", &track, &to);
        if (m_State.TrackId() == track && to >= 0 && (m_State.LengthUs() < 0 || to <= m_State.LengthUs())) {
            Seek(to - m_State.PositionUs(Clock::now()));
        }
    } else if (std::strcmp(method, "OpenUri") == 0) {
        const char* uri = nullptr;
        g_variant_get(parameters, "(&s)", &uri);
        const std::string path = PathOfUri(uri);
        if (path.empty()) {
            g_dbus_method_invocation_return_error(invocation, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS, "Neither file:// nor http://");
            return;
        }
        m_Player.open(path);
    }
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

void MprisBus::OnCall(GDBusConnection*, const char*, const char*, const char*, const char* method, GVariant* parameters, GDBusMethodInvocation* invocation,
    gpointer self)
{
    static_cast<MprisBus*>(self)->Call(method, parameters, invocation);
}

GVariant* MprisBus::RootProperty(const char* name)
{
    const auto is = [name](const char* other) { return std::strcmp(name, other) == 0; };
    static const char* const kSchemes[] = {"file", "http", nullptr};
    static const char* const kTypes[] = {"video/mpeg", "video/mp2t", nullptr};
    if (is("Identity")) {
        return g_variant_new_string("Nuvid");
    }
    if (is("SupportedUriSchemes") || is("SupportedMimeTypes")) {
        return g_variant_new_strv(is("SupportedUriSchemes") ? kSchemes : kTypes, -1);
    }
    return g_variant_new_boolean(is("CanQuit"));    // no other window to raise, no list of tracks
}

GVariant* MprisBus::OnGet(GDBusConnection*, const char*, const char*, const char* interface, const char* property, GError** error, gpointer self)
{
    GVariant* const value
        = std::strcmp(interface, kMprisRoot) == 0 ? RootProperty(property) : static_cast<MprisBus*>(self)->m_State.Property(property, Clock::now());
    if (value == nullptr) {
        g_set_error(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_PROPERTY, "%s", property);
    }
    return value;
}

// Speed and volume stay as they are: the television has the volume.
gboolean MprisBus::OnSet(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*, GError**, gpointer)
{
    return TRUE;
}

}    // namespace host
