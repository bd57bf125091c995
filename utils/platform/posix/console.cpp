#include "utils/platform/host.h"

#include <fcntl.h>
#include <langinfo.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cstring>
#include <thread>

#include "utils/platform/codepage.h"
#include "utils/platform/thread.h"
#include "utils/platform/window.h"

namespace qm::platform {

namespace {

int g_wakePipe[2] = {-1, -1};

void OnInterrupt(int) {
    char c = 'i';
    // Only async-signal-safe work here: the watch thread does the rest.
    [[maybe_unused]] ssize_t n = write(g_wakePipe[1], &c, 1);
}

struct Watch {
    DWORD owner = 0;
    std::atomic<bool> cancelled{false};
    bool termiosSaved = false;
    termios savedTermios{};
    struct sigaction savedAction{};
    bool actionSaved = false;
    std::thread thread;

    void Cancel() {
        cancelled = true;
        PostThreadQueueMessage(owner, WM_KEYDOWN, VK_ESCAPE, 0);
    }

    void Run() {
        bool tty = termiosSaved;
        for (;;) {
            pollfd fds[2] = {{g_wakePipe[0], POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
            if (poll(fds, tty ? 2 : 1, -1) < 0) continue;
            if (fds[0].revents & POLLIN) {
                char c = 0;
                if (read(g_wakePipe[0], &c, 1) == 1) {
                    if (c == 'q') return;
                    Cancel();
                }
            }
            if (tty && (fds[1].revents & (POLLIN | POLLHUP))) {
                char buf[64];
                ssize_t n = read(STDIN_FILENO, buf, sizeof buf);
                if (n <= 0) {
                    tty = false;  // end of input: keep watching for Ctrl-C only
                    continue;
                }
                for (ssize_t i = 0; i < n; ++i)
                    if (buf[i] == 0x1B) Cancel();
            }
        }
    }
};

}  // namespace

bool IsTerminalStream(int stream) { return isatty(stream == 1 ? STDOUT_FILENO : STDERR_FILENO) == 1; }

namespace {
bool TerminalIsUtf8() {
    const char* set = nl_langinfo(CODESET);
    return set && (!std::strcmp(set, "UTF-8") || !std::strcmp(set, "utf8"));
}
}  // namespace

std::string TerminalTextToAnsi(const std::string& typed) {
    return TerminalIsUtf8() ? Utf8ToAnsi(typed.data(), typed.size()) : typed;
}

std::string AnsiToTerminalText(const std::string& text) {
    return TerminalIsUtf8() ? AnsiToUtf8(text.data(), text.size()) : text;
}

int TerminalColumns() {
    winsize ws{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &ws) == 0 && ws.ws_col > 0) return ws.ws_col;
    return 80;
}

ConsoleCancelWatch::ConsoleCancelWatch() : m_impl(nullptr) {
    if (g_wakePipe[0] >= 0 || pipe(g_wakePipe) != 0) return;
    fcntl(g_wakePipe[1], F_SETFL, O_NONBLOCK);
    auto* w = new Watch;
    w->owner = CurrentThreadId();
    // Keys arrive one by one and are not echoed; Ctrl-C still raises the interrupt signal.
    if (isatty(STDIN_FILENO) && tcgetattr(STDIN_FILENO, &w->savedTermios) == 0) {
        termios raw = w->savedTermios;
        raw.c_lflag &= ~(tcflag_t)(ICANON | ECHO);
        raw.c_cc[VMIN] = 1;
        raw.c_cc[VTIME] = 0;
        w->termiosSaved = tcsetattr(STDIN_FILENO, TCSANOW, &raw) == 0;
    }
    struct sigaction action{};
    action.sa_handler = &OnInterrupt;
    sigemptyset(&action.sa_mask);
    w->actionSaved = sigaction(SIGINT, &action, &w->savedAction) == 0;
    w->thread = std::thread([w] { w->Run(); });
    m_impl = w;
}

ConsoleCancelWatch::~ConsoleCancelWatch() {
    auto* w = static_cast<Watch*>(m_impl);
    if (!w) return;
    if (w->actionSaved) sigaction(SIGINT, &w->savedAction, nullptr);
    char c = 'q';
    [[maybe_unused]] ssize_t n = write(g_wakePipe[1], &c, 1);
    w->thread.join();
    if (w->termiosSaved) tcsetattr(STDIN_FILENO, TCSANOW, &w->savedTermios);
    close(g_wakePipe[0]);
    close(g_wakePipe[1]);
    g_wakePipe[0] = g_wakePipe[1] = -1;
    delete w;
}

bool ConsoleCancelWatch::Cancelled() const {
    auto* w = static_cast<Watch*>(m_impl);
    return w && w->cancelled;
}

}  // namespace qm::platform
