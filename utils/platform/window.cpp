// The parts of the message service that are the same on every system: the tick source and
// the pumps, built on the backend's queue calls.
#include "utils/platform/window.h"

#include <atomic>
#include <chrono>

namespace qm::platform {

namespace {
std::atomic<TickSource> g_tickSource{nullptr};
}

DWORD TickCount() {
    TickSource source = g_tickSource.load(std::memory_order_acquire);
    return source ? source() : SystemTickCount();
}

TickSource SetTickSource(TickSource source) { return g_tickSource.exchange(source, std::memory_order_acq_rel); }

namespace {

using Clock = std::chrono::steady_clock;

// Dispatches one waiting message; false when there is none (or it is WM_QUIT, put back for
// the loop that owns the thread).
bool PumpOne() {
    MSG msg;
    if (!PeekQueueMessage(&msg, nullptr, 0, 0, PM_REMOVE)) return false;
    if (msg.message == WM_QUIT) {
        PostQuit((int)msg.wParam);
        return false;
    }
    TranslateQueueMessage(&msg);
    DispatchQueueMessage(&msg);
    return true;
}

long long MillisecondsLeft(Clock::time_point end) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
}

}  // namespace

int PumpWaitingMessages() {
    int count = 0;
    while (PumpOne()) ++count;
    return count;
}

// The timed pumps look at the clock after every message: a queue that refills as fast as it
// is emptied (work that relaunches itself) must not keep them past their time.
void PumpMessagesFor(DWORD ms) {
    Clock::time_point end = Clock::now() + std::chrono::milliseconds(ms);
    for (;;) {
        while (MillisecondsLeft(end) > 0 && PumpOne()) {
        }
        long long left = MillisecondsLeft(end);
        if (left <= 0) return;
        WaitForQueueMessage((DWORD)left);
    }
}

bool PumpMessagesUntil(const std::function<bool()>& done, DWORD timeoutMs) {
    Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        if (done()) return true;
        while (MillisecondsLeft(end) > 0 && PumpOne())
            if (done()) return true;
        long long left = MillisecondsLeft(end);
        if (left <= 0) return done();
        // The condition may change on another thread without a message: look again soon.
        WaitForQueueMessage((DWORD)(left < 2 ? left : 2));
    }
}

}  // namespace qm::platform
