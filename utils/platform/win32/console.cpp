#include "utils/platform/host.h"

#include <io.h>
#include <stdio.h>

#include <thread>

#include "utils/platform/thread.h"
#include "utils/platform/window.h"

namespace qm::platform {

namespace {

struct Watch {
    DWORD owner = 0;
    std::atomic<bool> cancelled{false};
    std::atomic<bool> stop{false};
    HANDLE input = nullptr;
    DWORD savedMode = 0;
    bool console = false;
    std::thread thread;

    void Cancel() {
        cancelled = true;
        PostThreadMessageA(owner, WM_KEYDOWN, VK_ESCAPE, 0);
    }

    void Run() {
        while (!stop) {
            if (!console) {
                Sleep(50);
                continue;
            }
            if (WaitForSingleObject(input, 50) != WAIT_OBJECT_0) continue;
            INPUT_RECORD records[16];
            DWORD read = 0;
            if (!ReadConsoleInputA(input, records, 16, &read)) continue;
            for (DWORD i = 0; i < read; ++i)
                if (records[i].EventType == KEY_EVENT && records[i].Event.KeyEvent.bKeyDown &&
                    records[i].Event.KeyEvent.wVirtualKeyCode == VK_ESCAPE)
                    Cancel();
        }
    }
};

Watch* g_watch = nullptr;

BOOL WINAPI OnControl(DWORD type) {
    if ((type == CTRL_C_EVENT || type == CTRL_BREAK_EVENT) && g_watch) {
        g_watch->Cancel();
        return TRUE;
    }
    return FALSE;
}

}  // namespace

bool IsTerminalStream(int stream) {
    if (!_isatty(stream == 1 ? 1 : 2)) return false;
    // The frame redraws its line with ANSI sequences: let the console interpret them.
    HANDLE h = GetStdHandle(stream == 1 ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    DWORD mode = 0;
    if (GetConsoleMode(h, &mode)) SetConsoleMode(h, mode | 0x0004 /* ENABLE_VIRTUAL_TERMINAL_PROCESSING */);
    return true;
}

std::string TerminalTextToAnsi(const std::string& typed) { return typed; }

std::string AnsiToTerminalText(const std::string& text) { return text; }

int TerminalColumns() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info))
        return info.srWindow.Right - info.srWindow.Left + 1;
    return 80;
}

ConsoleCancelWatch::ConsoleCancelWatch() : m_impl(nullptr) {
    if (g_watch) return;
    auto* w = new Watch;
    w->owner = GetCurrentThreadId();
    w->input = GetStdHandle(STD_INPUT_HANDLE);
    w->console = w->input && w->input != INVALID_HANDLE_VALUE && GetConsoleMode(w->input, &w->savedMode);
    g_watch = w;
    SetConsoleCtrlHandler(&OnControl, TRUE);
    w->thread = std::thread([w] { w->Run(); });
    m_impl = w;
}

ConsoleCancelWatch::~ConsoleCancelWatch() {
    auto* w = static_cast<Watch*>(m_impl);
    if (!w) return;
    SetConsoleCtrlHandler(&OnControl, FALSE);
    w->stop = true;
    w->thread.join();
    g_watch = nullptr;
    delete w;
}

bool ConsoleCancelWatch::Cancelled() const {
    auto* w = static_cast<Watch*>(m_impl);
    return w && w->cancelled;
}

}  // namespace qm::platform
