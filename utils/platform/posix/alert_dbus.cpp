// Desktop alerts on POSIX: org.freedesktop.Notifications.Notify on the session bus, through
// GDBus, from one worker thread so that the caller's wait stays bounded.
#include "utils/platform/alert.h"

#include <gio/gio.h>
#include <sys/stat.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "utils/platform/codepage.h"

namespace qm::platform {

namespace {

constexpr int kCallTimeoutMs = 1000;

// The session bus's address: the environment's, else the per-user socket; empty for none.
// (GIO's own lookup would fall back to starting a bus for the X display.)
std::string SessionBusAddress() {
    const char* env = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (env && *env) return env;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime && *runtime) {
        std::string path = std::string(runtime) + "/bus";
        struct stat st;
        if (::stat(path.c_str(), &st) == 0 && S_ISSOCK(st.st_mode)) return "unix:path=" + path;
    }
    return {};
}

struct Job {
    std::string address, app, title, text;
    bool critical = false;
    UINT delayMs = 0;
    GCancellable* cancel = g_cancellable_new();
    std::mutex lock;
    std::condition_variable cv;
    bool done = false;
    bool shown = false;
    ~Job() { g_object_unref(cancel); }
};

std::string Escaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '&') out += "&amp;";
        else if (c == '<') out += "&lt;";
        else if (c == '>') out += "&gt;";
        else out.push_back(c);
    }
    return out;
}

class Notifier {
public:
    ~Notifier() {
        {
            std::lock_guard<std::mutex> g(m_lock);
            m_stop = true;
            for (auto& job : m_queue) g_cancellable_cancel(job->cancel);
        }
        m_cv.notify_all();
        if (m_thread.joinable()) m_thread.join();
        Disconnect();
    }

    bool Show(std::shared_ptr<Job> job) {
        {
            std::lock_guard<std::mutex> g(m_lock);
            if (m_stop) return false;
            if (!m_thread.joinable()) m_thread = std::thread([this] { Run(); });
            m_queue.push_back(job);
        }
        m_cv.notify_all();
        std::unique_lock<std::mutex> g(job->lock);
        if (!job->cv.wait_for(g, std::chrono::milliseconds(kAlertWaitMs), [&] { return job->done; })) {
            g_cancellable_cancel(job->cancel);
            return false;
        }
        return job->shown;
    }

private:
    void Run() {
        for (;;) {
            std::shared_ptr<Job> job;
            {
                std::unique_lock<std::mutex> g(m_lock);
                m_cv.wait(g, [&] { return m_stop || !m_queue.empty(); });
                if (m_stop) return;
                job = m_queue.front();
                m_queue.pop_front();
            }
            bool shown = !g_cancellable_is_cancelled(job->cancel) && Send(*job);
            std::lock_guard<std::mutex> g(job->lock);
            job->shown = shown;
            job->done = true;
            job->cv.notify_all();
        }
    }

    void Disconnect() {
        if (m_connection) {
            g_dbus_connection_close_sync(m_connection, nullptr, nullptr);
            g_object_unref(m_connection);
        }
        m_connection = nullptr;
        m_address.clear();
    }

    bool Connect(const Job& job) {
        if (m_connection && m_address == job.address && !g_dbus_connection_is_closed(m_connection)) return true;
        Disconnect();
        GError* error = nullptr;
        m_connection = g_dbus_connection_new_for_address_sync(
            job.address.c_str(),
            (GDBusConnectionFlags)(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                   G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, job.cancel, &error);
        if (!m_connection) {
            if (error) g_error_free(error);
            return false;
        }
        g_dbus_connection_set_exit_on_close(m_connection, FALSE);
        m_address = job.address;
        m_markup = false;
        // Servers that read markup in the body get its special characters escaped.
        GVariant* caps = g_dbus_connection_call_sync(
            m_connection, "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
            "org.freedesktop.Notifications", "GetCapabilities", nullptr, G_VARIANT_TYPE("(as)"),
            G_DBUS_CALL_FLAGS_NONE, kCallTimeoutMs, job.cancel, nullptr);
        if (caps) {
            GVariantIter* iter = nullptr;
            const gchar* cap = nullptr;
            g_variant_get(caps, "(as)", &iter);
            while (g_variant_iter_loop(iter, "&s", &cap))
                if (std::string(cap) == "body-markup") m_markup = true;
            g_variant_iter_free(iter);
            g_variant_unref(caps);
        }
        return true;
    }

    bool Send(const Job& job) {
        if (!Connect(job)) return false;
        // Every string of a message must be UTF-8.
        std::string app = AnsiToUtf8(job.app.data(), job.app.size());
        std::string title = AnsiToUtf8(job.title.data(), job.title.size());
        std::string body = AnsiToUtf8(job.text.data(), job.text.size());
        if (m_markup) body = Escaped(body);
        GVariantBuilder actions, hints;
        g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
        g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
        g_variant_builder_add(&hints, "{sv}", "urgency", g_variant_new_byte(job.critical ? 2 : 1));
        GVariant* args = g_variant_new("(susssasa{sv}i)", app.c_str(), 0u, "", title.c_str(), body.c_str(), &actions,
                                       &hints, (gint32)(job.delayMs > 0x7FFFFFFF ? 0x7FFFFFFF : job.delayMs));
        GError* error = nullptr;
        GVariant* reply = g_dbus_connection_call_sync(
            m_connection, "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
            "org.freedesktop.Notifications", "Notify", args, G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE,
            kCallTimeoutMs, job.cancel, &error);
        if (!reply) {
            // A closed or broken connection is made again for the next alert.
            if (error && (error->domain != G_DBUS_ERROR || error->code != G_DBUS_ERROR_SERVICE_UNKNOWN)) Disconnect();
            if (error) g_error_free(error);
            return false;
        }
        g_variant_unref(reply);
        return true;
    }

    std::mutex m_lock;
    std::condition_variable m_cv;
    std::deque<std::shared_ptr<Job>> m_queue;
    std::thread m_thread;
    bool m_stop = false;
    // Worker thread only:
    GDBusConnection* m_connection = nullptr;
    std::string m_address;
    bool m_markup = false;
};

Notifier& TheNotifier() {
    static Notifier n;
    return n;
}

}  // namespace

bool AlertShow(const char* app, const char* title, const char* text, bool critical, UINT delayMs) {
    auto job = std::make_shared<Job>();
    job->address = SessionBusAddress();
    if (job->address.empty()) return false;
    job->app = app ? app : "";
    job->title = title ? title : "";
    job->text = text ? text : "";
    job->critical = critical;
    job->delayMs = delayMs;
    return TheNotifier().Show(job);
}

}  // namespace qm::platform
