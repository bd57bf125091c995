#include "utils/platform/window.h"

#include <time.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "utils/platform/thread.h"

namespace qm::platform {

namespace {

using Clock = std::chrono::steady_clock;

// Windows does not run a timer faster than this.
constexpr UINT kMinimumTimerPeriod = 10;

struct Timer {
    HWND hwnd;
    UINT_PTR id;
    UINT period;
    Clock::time_point due;
    TIMERPROC proc;
};

struct Queue {
    DWORD threadId = 0;
    std::mutex m;
    std::condition_variable cv;
    std::deque<MSG> posted;
    std::vector<Timer> timers;
};

struct Window {
    std::shared_ptr<Queue> queue;
    WindowHandler handler = nullptr;
    void* owner = nullptr;
    bool destroying = false;
};

struct Registry {
    std::mutex m;
    std::unordered_map<HWND, Window> windows;
    std::unordered_map<DWORD, std::weak_ptr<Queue>> queues;
    std::set<std::string> classes;
    std::map<std::string, UINT> messages;
    UINT nextMessage = 0xC000;
    // Handles are never reused, so a stale handle is simply not found.
    std::uintptr_t nextHandle = 0x10000;
    UINT_PTR nextThreadTimer = 0x7F00;
};

// Kept for the whole process: windows and posts may be used during static destruction.
Registry& Reg() {
    static Registry* registry = new Registry;
    return *registry;
}

std::string Lower(const char* text) {
    std::string s = text ? text : "";
    for (char& c : s)
        if (c >= 'A' && c <= 'Z') c = (char)(c - 'A' + 'a');
    return s;
}

struct QueueHolder {
    std::shared_ptr<Queue> queue;
    ~QueueHolder() {
        if (!queue) return;
        Registry& r = Reg();
        std::lock_guard<std::mutex> lock(r.m);
        r.queues.erase(queue->threadId);
    }
};
thread_local QueueHolder t_queue;

const std::shared_ptr<Queue>& MyQueue() {
    if (!t_queue.queue) {
        auto q = std::make_shared<Queue>();
        q->threadId = CurrentThreadId();
        Registry& r = Reg();
        std::lock_guard<std::mutex> lock(r.m);
        r.queues[q->threadId] = q;
        t_queue.queue = q;
    }
    return t_queue.queue;
}

std::shared_ptr<Queue> QueueOfWindow(HWND hwnd) {
    Registry& r = Reg();
    std::lock_guard<std::mutex> lock(r.m);
    auto it = r.windows.find(hwnd);
    if (it == r.windows.end() || it->second.destroying) return nullptr;
    return it->second.queue;
}

bool Matches(HWND msgWnd, UINT message, HWND hwnd, UINT first, UINT last) {
    if (hwnd == (HWND)(intptr_t)-1) {
        if (msgWnd) return false;
    } else if (hwnd && msgWnd != hwnd) {
        return false;
    }
    if (first == 0 && last == 0) return true;
    return message >= first && message <= last;
}

void Push(Queue& q, HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    MSG msg{};
    msg.hwnd = hwnd;
    msg.message = message;
    msg.wParam = wParam;
    msg.lParam = lParam;
    msg.time = SystemTickCount();
    std::lock_guard<std::mutex> lock(q.m);
    q.posted.push_back(msg);
    q.cv.notify_all();
}

// Takes the first matching posted message, or else a due timer (posted messages come first,
// timers only when nothing else waits, as on Windows). Called with the queue locked.
bool TakeLocked(Queue& q, MSG* out, HWND hwnd, UINT first, UINT last, bool remove) {
    for (auto it = q.posted.begin(); it != q.posted.end(); ++it) {
        if (!Matches(it->hwnd, it->message, hwnd, first, last)) continue;
        *out = *it;
        if (remove) q.posted.erase(it);
        return true;
    }
    if (!(first == 0 && last == 0) && !(WM_TIMER >= first && WM_TIMER <= last)) return false;
    Clock::time_point now = Clock::now();
    Timer* best = nullptr;
    for (Timer& t : q.timers)
        if (t.due <= now && Matches(t.hwnd, WM_TIMER, hwnd, 0, 0) && (!best || t.due < best->due)) best = &t;
    if (!best) return false;
    *out = MSG{};
    out->hwnd = best->hwnd;
    out->message = WM_TIMER;
    out->wParam = best->id;
    out->lParam = (LPARAM)best->proc;
    out->time = SystemTickCount();
    if (remove) best->due = now + std::chrono::milliseconds(best->period);
    return true;
}

}  // namespace

bool RegisterWindowClass(const char* className, UINT, HCURSOR, HBRUSH, HICON) {
    if (!className || !*className) return false;
    Registry& r = Reg();
    std::lock_guard<std::mutex> lock(r.m);
    r.classes.insert(Lower(className));
    return true;
}

HWND CreateWindowObject(DWORD exStyle, const char* className, const char* windowName, DWORD style, int x, int y,
                        int width, int height, HWND parent, HMENU menu, LPVOID createParam, WindowHandler handler,
                        void* owner) {
    if (!handler) return nullptr;
    const std::shared_ptr<Queue>& queue = MyQueue();
    HWND hwnd = nullptr;
    {
        Registry& r = Reg();
        std::lock_guard<std::mutex> lock(r.m);
        if (!className || !r.classes.count(Lower(className))) return nullptr;
        r.nextHandle += 4;
        hwnd = (HWND)r.nextHandle;
        Window w;
        w.queue = queue;
        w.handler = handler;
        w.owner = owner;
        r.windows[hwnd] = w;
    }
    CREATESTRUCTA cs{};
    cs.lpCreateParams = createParam;
    cs.hMenu = menu;
    cs.hwndParent = parent;
    cs.cx = width;
    cs.cy = height;
    cs.x = x;
    cs.y = y;
    cs.style = (LONG)style;
    cs.lpszName = windowName;
    cs.lpszClass = className;
    cs.dwExStyle = exStyle;
    if (!handler(owner, hwnd, WM_NCCREATE, 0, (LPARAM)&cs) || handler(owner, hwnd, WM_CREATE, 0, (LPARAM)&cs) == -1) {
        DestroyWindowObject(hwnd);
        return nullptr;
    }
    return hwnd;
}

bool DestroyWindowObject(HWND hwnd) {
    WindowHandler handler = nullptr;
    void* owner = nullptr;
    std::shared_ptr<Queue> queue;
    {
        Registry& r = Reg();
        std::lock_guard<std::mutex> lock(r.m);
        auto it = r.windows.find(hwnd);
        if (it == r.windows.end() || it->second.destroying) return false;
        // Only the thread that created a window may destroy it.
        if (it->second.queue != t_queue.queue) return false;
        it->second.destroying = true;
        handler = it->second.handler;
        owner = it->second.owner;
        queue = it->second.queue;
    }
    handler(owner, hwnd, WM_DESTROY, 0, 0);
    handler(owner, hwnd, WM_NCDESTROY, 0, 0);
    {
        Registry& r = Reg();
        std::lock_guard<std::mutex> lock(r.m);
        r.windows.erase(hwnd);
    }
    std::lock_guard<std::mutex> lock(queue->m);
    std::erase_if(queue->timers, [hwnd](const Timer& t) { return t.hwnd == hwnd; });
    std::erase_if(queue->posted, [hwnd](const MSG& m) { return m.hwnd == hwnd; });
    return true;
}

bool IsWindowObject(HWND hwnd) { return hwnd && QueueOfWindow(hwnd) != nullptr; }

LRESULT DefaultWindowProc(HWND, UINT message, WPARAM, LPARAM) { return message == WM_NCCREATE ? TRUE : 0; }

LRESULT SendWindowMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    WindowHandler handler = nullptr;
    void* owner = nullptr;
    {
        Registry& r = Reg();
        std::lock_guard<std::mutex> lock(r.m);
        auto it = r.windows.find(hwnd);
        if (it == r.windows.end() || !t_queue.queue || it->second.queue != t_queue.queue) return 0;
        handler = it->second.handler;
        owner = it->second.owner;
    }
    return handler(owner, hwnd, message, wParam, lParam);
}

UINT_PTR SetWindowTimer(HWND hwnd, UINT_PTR id, UINT elapse, TIMERPROC proc) {
    std::shared_ptr<Queue> q;
    if (hwnd) {
        q = QueueOfWindow(hwnd);
        if (!q || q != t_queue.queue) return 0;
    } else {
        q = MyQueue();
        if (!id) {
            Registry& r = Reg();
            std::lock_guard<std::mutex> lock(r.m);
            id = ++r.nextThreadTimer;
        }
    }
    UINT period = std::max(elapse, kMinimumTimerPeriod);
    if (period > 0x7FFFFFFFu) period = 0x7FFFFFFFu;
    Clock::time_point due = Clock::now() + std::chrono::milliseconds(period);
    std::lock_guard<std::mutex> lock(q->m);
    for (Timer& t : q->timers) {
        if (t.hwnd == hwnd && t.id == id) {
            t.period = period;
            t.due = due;
            t.proc = proc;
            q->cv.notify_all();
            return id;
        }
    }
    q->timers.push_back(Timer{hwnd, id, period, due, proc});
    q->cv.notify_all();
    return id ? id : 1;
}

bool KillWindowTimer(HWND hwnd, UINT_PTR id) {
    std::shared_ptr<Queue> q = hwnd ? QueueOfWindow(hwnd) : t_queue.queue;
    if (!q) return false;
    std::lock_guard<std::mutex> lock(q->m);
    return std::erase_if(q->timers, [hwnd, id](const Timer& t) { return t.hwnd == hwnd && t.id == id; }) > 0;
}

bool PostWindowMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (!hwnd) {
        Push(*MyQueue(), nullptr, message, wParam, lParam);
        return true;
    }
    std::shared_ptr<Queue> q = QueueOfWindow(hwnd);
    if (!q) return false;
    Push(*q, hwnd, message, wParam, lParam);
    return true;
}

bool PostThreadQueueMessage(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam) {
    std::shared_ptr<Queue> q;
    if (threadId == CurrentThreadId()) {
        q = MyQueue();
    } else {
        Registry& r = Reg();
        std::lock_guard<std::mutex> lock(r.m);
        auto it = r.queues.find(threadId);
        if (it != r.queues.end()) q = it->second.lock();
    }
    if (!q) return false;
    Push(*q, nullptr, message, wParam, lParam);
    return true;
}

void PostQuit(int exitCode) { Push(*MyQueue(), nullptr, WM_QUIT, (WPARAM)exitCode, 0); }

UINT RegisterMessageName(const char* name) {
    if (!name || !*name) return 0;
    Registry& r = Reg();
    std::lock_guard<std::mutex> lock(r.m);
    std::string key = Lower(name);
    auto it = r.messages.find(key);
    if (it != r.messages.end()) return it->second;
    if (r.nextMessage > 0xFFFF) return 0;
    UINT id = r.nextMessage++;
    r.messages[key] = id;
    return id;
}

bool PeekQueueMessage(MSG* msg, HWND hwnd, UINT first, UINT last, UINT removeFlags) {
    if (!msg) return false;
    Queue& q = *MyQueue();
    std::lock_guard<std::mutex> lock(q.m);
    return TakeLocked(q, msg, hwnd, first, last, (removeFlags & PM_REMOVE) != 0);
}

bool GetQueueMessage(MSG* msg, HWND hwnd, UINT first, UINT last) {
    if (!msg) return false;
    Queue& q = *MyQueue();
    std::unique_lock<std::mutex> lock(q.m);
    for (;;) {
        if (TakeLocked(q, msg, hwnd, first, last, true)) return msg->message != WM_QUIT;
        Clock::time_point until = Clock::now() + std::chrono::seconds(1);
        for (const Timer& t : q.timers) until = std::min(until, t.due);
        q.cv.wait_until(lock, until);
    }
}

void WaitForQueueMessage(DWORD ms) {
    Queue& q = *MyQueue();
    std::unique_lock<std::mutex> lock(q.m);
    Clock::time_point deadline =
        ms == INFINITE ? Clock::time_point::max() : Clock::now() + std::chrono::milliseconds(ms);
    for (;;) {
        if (!q.posted.empty()) return;
        Clock::time_point now = Clock::now();
        Clock::time_point until = deadline;
        for (const Timer& t : q.timers) until = std::min(until, t.due);
        if (until <= now) return;
        if (until == Clock::time_point::max())
            q.cv.wait(lock);
        else
            q.cv.wait_until(lock, until);
    }
}

bool TranslateQueueMessage(const MSG* msg) { return msg && msg->message == WM_KEYDOWN; }

LRESULT DispatchQueueMessage(const MSG* msg) {
    if (!msg) return 0;
    if (msg->message == WM_TIMER && msg->lParam) {
        ((TIMERPROC)msg->lParam)(msg->hwnd, WM_TIMER, msg->wParam, msg->time);
        return 0;
    }
    if (!msg->hwnd) return 0;
    return SendWindowMessage(msg->hwnd, msg->message, msg->wParam, msg->lParam);
}

DWORD SystemTickCount() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (DWORD)((std::uint64_t)ts.tv_sec * 1000u + (std::uint64_t)ts.tv_nsec / 1000000u);
}

void ShowWaitCursor(bool) {}

}  // namespace qm::platform

// The Windows names of the message service.
UINT RegisterWindowMessageA(LPCSTR lpString) { return qm::platform::RegisterMessageName(lpString); }
BOOL PostMessageA(HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam) {
    return qm::platform::PostWindowMessage(hWnd, Msg, wParam, lParam);
}
BOOL PostThreadMessageA(DWORD idThread, UINT Msg, WPARAM wParam, LPARAM lParam) {
    return qm::platform::PostThreadQueueMessage(idThread, Msg, wParam, lParam);
}
BOOL PeekMessageA(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax, UINT wRemoveMsg) {
    return qm::platform::PeekQueueMessage(lpMsg, hWnd, wMsgFilterMin, wMsgFilterMax, wRemoveMsg);
}
BOOL GetMessageA(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax) {
    return qm::platform::GetQueueMessage(lpMsg, hWnd, wMsgFilterMin, wMsgFilterMax);
}
BOOL TranslateMessage(const MSG* lpMsg) { return qm::platform::TranslateQueueMessage(lpMsg); }
LRESULT DispatchMessageA(const MSG* lpMsg) { return qm::platform::DispatchQueueMessage(lpMsg); }
void PostQuitMessage(int nExitCode) { qm::platform::PostQuit(nExitCode); }
BOOL IsWindow(HWND hWnd) { return qm::platform::IsWindowObject(hWnd); }
DWORD GetTickCount() { return qm::platform::SystemTickCount(); }
DWORD GetCurrentThreadId() { return qm::platform::CurrentThreadId(); }
void Sleep(DWORD dwMilliseconds) { qm::platform::SleepMilliseconds(dwMilliseconds); }
