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

int PumpWaitingMessages() {
    int count = 0;
    MSG msg;
    while (PeekQueueMessage(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) {
            // Left for the loop that owns the thread.
            PostQuit((int)msg.wParam);
            break;
        }
        TranslateQueueMessage(&msg);
        DispatchQueueMessage(&msg);
        ++count;
    }
    return count;
}

void PumpMessagesFor(DWORD ms) {
    using Clock = std::chrono::steady_clock;
    Clock::time_point end = Clock::now() + std::chrono::milliseconds(ms);
    for (;;) {
        PumpWaitingMessages();
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        if (left <= 0) return;
        WaitForQueueMessage((DWORD)left);
    }
}

bool PumpMessagesUntil(const std::function<bool()>& done, DWORD timeoutMs) {
    using Clock = std::chrono::steady_clock;
    Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        if (done()) return true;
        PumpWaitingMessages();
        if (done()) return true;
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        if (left <= 0) return false;
        // The condition may change on another thread without a message: look again soon.
        WaitForQueueMessage((DWORD)(left < 2 ? left : 2));
    }
}

}  // namespace qm::platform
