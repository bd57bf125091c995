// Desktop alerts on POSIX: the Notify calls a mock notification service records on a session
// bus of the test's own (dbus-daemon and python3-dbusmock's notification template), and the
// line on standard error when there is no bus, no service, or a bus that never answers.
#if !defined(_WIN32)
// The library's headers first: GLib leaves TRUE and FALSE alone when they are defined.
#include "utils/common/WndUtils.h"

#include <gio/gio.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <clocale>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/child_process.h"

namespace {

using qmtest::Spawn;
using qmtest::Stop;

struct Notification { std::string app, title, body; int urgency = -1; int timeout = -2; };

// Restores an environment variable at the end of a test.
class EnvGuard {
public:
    explicit EnvGuard(const char* name) : m_name(name) {
        const char* v = std::getenv(name);
        m_had = v != nullptr;
        if (v) m_value = v;
    }
    ~EnvGuard() {
        if (m_had)
            setenv(m_name.c_str(), m_value.c_str(), 1);
        else
            unsetenv(m_name.c_str());
    }

private:
    std::string m_name, m_value;
    bool m_had = false;
};

// A session bus of the test's own, optionally with the mock notification service on it.
class AlertBus : public ::testing::Test {
protected:
    void StartBus() {
        int fds[2];
        ASSERT_EQ(pipe(fds), 0);
        m_bus = Spawn({"/usr/bin/dbus-daemon", "--session", "--nofork", "--print-address=1", "--address=unix:tmpdir=/tmp"},
                      "/dev/null", "", {}, fds[1]);
        close(fds[1]);
        ASSERT_GT(m_bus, 0);
        std::string address = qmtest::FirstLine(fds[0]);
        ASSERT_FALSE(address.empty());
        setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
        GError* error = nullptr;
        m_client = g_dbus_connection_new_for_address_sync(
            address.c_str(),
            (GDBusConnectionFlags)(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                   G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, &error);
        ASSERT_NE(m_client, nullptr) << (error ? error->message : "");
    }

    // The mock service; capabilities: its list, or empty for the template's default.
    void StartMock(const std::string& capabilities = "") {
        std::vector<std::string> args = {"/usr/bin/python3", "-m", "dbusmock", "--template", "notification_daemon"};
        if (!capabilities.empty()) {
            args.push_back("-p");
            args.push_back("{\"capabilities\": \"" + capabilities + "\"}");
        }
        m_mock = Spawn(args);
        ASSERT_GT(m_mock, 0);
        for (int i = 0; i < 100; ++i) {
            GVariant* owner = g_dbus_connection_call_sync(
                m_client, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner",
                g_variant_new("(s)", "org.freedesktop.Notifications"), nullptr, G_DBUS_CALL_FLAGS_NONE, 1000,
                nullptr, nullptr);
            if (owner) {
                g_variant_unref(owner);
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        FAIL() << "the mock notification service did not come up";
    }

    std::vector<Notification> Calls() {
        std::vector<Notification> out;
        GVariant* reply = g_dbus_connection_call_sync(
            m_client, "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
            "org.freedesktop.DBus.Mock", "GetMethodCalls", g_variant_new("(s)", "Notify"), G_VARIANT_TYPE("(a(tav))"),
            G_DBUS_CALL_FLAGS_NONE, 2000, nullptr, nullptr);
        if (!reply) return out;
        GVariantIter* calls = nullptr;
        GVariantIter* args = nullptr;
        guint64 when = 0;
        g_variant_get(reply, "(a(tav))", &calls);
        while (g_variant_iter_loop(calls, "(tav)", &when, &args)) {
            std::vector<GVariant*> arg;  // Notify's eight arguments, each in its variant
            for (GVariant* v; g_variant_iter_next(args, "v", &v);) arg.push_back(v);
            Notification n;
            n.app = g_variant_get_string(arg.at(0), nullptr);
            n.title = g_variant_get_string(arg.at(3), nullptr);
            n.body = g_variant_get_string(arg.at(4), nullptr);
            guchar urgency = 0;
            if (g_variant_lookup(arg.at(6), "urgency", "y", &urgency)) n.urgency = urgency;
            n.timeout = g_variant_get_int32(arg.at(7));
            for (GVariant* v : arg) g_variant_unref(v);
            out.push_back(n);
        }
        g_variant_iter_free(calls);
        g_variant_unref(reply);
        return out;
    }

    void TearDown() override {
        Stop(m_mock);
        if (m_client) g_object_unref(m_client);
        Stop(m_bus);
    }

    EnvGuard m_address{"DBUS_SESSION_BUS_ADDRESS"};
    EnvGuard m_runtime{"XDG_RUNTIME_DIR"};
    pid_t m_bus = -1, m_mock = -1;
    GDBusConnection* m_client = nullptr;
};

TEST_F(AlertBus, EachKindReachesTheNotificationService) {
    StartBus();
    StartMock();
    struct Case { WndUtils::AlertKind kind; UINT delay; const char* title; int urgency, timeout; } cases[] = {
        {WndUtils::ALERT_ERROR, 0, "Error", 2, 10000},
        {WndUtils::ALERT_WARNING, 0, "Warning", 1, 6000},
        {WndUtils::ALERT_MESSAGE, 0, "Message", 1, 4000},
        {WndUtils::ALERT_MESSAGE, 2500, "Message", 1, 2500},
    };
    for (const auto& c : cases) EXPECT_TRUE(WndUtils::ShowAlert("saved", c.kind, c.delay));
    auto calls = Calls();
    ASSERT_EQ(calls.size(), std::size(cases));
    for (std::size_t i = 0; i < calls.size(); ++i) {
        SCOPED_TRACE(cases[i].title);
        EXPECT_EQ(calls[i].app, "test_alert");
        EXPECT_EQ(calls[i].title, cases[i].title);
        EXPECT_EQ(calls[i].body, "saved");
        EXPECT_EQ(calls[i].urgency, cases[i].urgency);
        EXPECT_EQ(calls[i].timeout, cases[i].timeout);
    }
}

TEST_F(AlertBus, TextArrivesAsUtf8WithMarkupEscaped) {
    StartBus();
    StartMock();
    EXPECT_TRUE(WndUtils::ShowAlert("Caf\xE9 <b>\x80</b> & more", WndUtils::ALERT_WARNING));
    auto calls = Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].body, "Caf\xC3\xA9 &lt;b&gt;\xE2\x82\xAC&lt;/b&gt; &amp; more");
}

TEST_F(AlertBus, TextStaysAsItIsForServersWithoutMarkup) {
    StartBus();
    StartMock("body");
    EXPECT_TRUE(WndUtils::ShowAlert("disk <full> & more", WndUtils::ALERT_ERROR));
    auto calls = Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].body, "disk <full> & more");
}

TEST_F(AlertBus, BusWithoutServiceFallsBackToStandardError) {
    StartBus();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(WndUtils::ShowAlert("line one\r\nline two", WndUtils::ALERT_ERROR));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "test_alert: Error: line one  line two\n");
}

TEST_F(AlertBus, NoBusFallsBackToStandardError) {
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    setenv("XDG_RUNTIME_DIR", "", 1);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(WndUtils::ShowAlert("nothing to show it on", WndUtils::ALERT_MESSAGE));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "test_alert: Message: nothing to show it on\n");
    // A program that chose a UTF-8 locale gets the line in UTF-8; others get the ANSI bytes.
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(WndUtils::ShowAlert("Caf\xE9 \x80", WndUtils::ALERT_MESSAGE));
    setlocale(LC_CTYPE, "C");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "test_alert: Message: Caf\xC3\xA9 \xE2\x82\xAC\n");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(WndUtils::ShowAlert("Caf\xE9", WndUtils::ALERT_MESSAGE));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "test_alert: Message: Caf\xE9\n");
}

TEST_F(AlertBus, SilentBusDoesNotHoldTheCallerLong) {
    // A socket that accepts connections and never says a word.
    std::string path = "/tmp/qm-silent-bus-" + std::to_string(getpid());
    int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(listener, 0);
    sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    std::snprintf(addr.sun_path, sizeof addr.sun_path, "%s", path.c_str());
    unlink(path.c_str());
    ASSERT_EQ(bind(listener, (sockaddr*)&addr, sizeof addr), 0);
    ASSERT_EQ(listen(listener, 4), 0);
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);
    testing::internal::CaptureStderr();
    auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(WndUtils::ShowAlert("anyone there?", WndUtils::ALERT_WARNING));
    auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "test_alert: Warning: anyone there?\n");
    // Bounded by the library's wait (1.5 s), with room for a loaded machine.
    EXPECT_LT(waited, std::chrono::seconds(5));
    close(listener);
    unlink(path.c_str());
}

}  // namespace
#endif
