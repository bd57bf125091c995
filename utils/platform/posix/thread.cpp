#include "utils/platform/thread.h"

#include <pthread.h>
#include <time.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <new>

namespace qm::platform {

namespace {

std::atomic<DWORD> g_nextThreadId{1};
thread_local DWORD t_threadId = 0;

// Shared by the creator's handle and the thread itself; freed when both have let go.
struct ThreadRecord {
    ThreadEntry entry;
    void* arg;
    std::atomic<int> refs{2};
    std::mutex m;
    std::condition_variable cv;
    bool go = false;
    bool ended = false;
    DWORD id = 0;
};

void Release(ThreadRecord* r) {
    if (r->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete r;
}

void* Start(void* p) {
    auto* r = static_cast<ThreadRecord*>(p);
    {
        std::unique_lock<std::mutex> lock(r->m);
        r->cv.wait(lock, [r] { return r->go; });
    }
    t_threadId = r->id;
    r->entry(r->arg);
    {
        std::lock_guard<std::mutex> lock(r->m);
        r->ended = true;
        r->cv.notify_all();
    }
    Release(r);
    return nullptr;
}

}  // namespace

HANDLE CreateSuspendedThread(ThreadEntry entry, void* arg, unsigned stackSize, DWORD* threadId) {
    auto* r = new (std::nothrow) ThreadRecord;
    if (!r) return nullptr;
    r->entry = entry;
    r->arg = arg;
    r->id = g_nextThreadId.fetch_add(1);
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    // Windows rounds a small stack up; the minimum here keeps a tiny request from failing.
    if (stackSize) pthread_attr_setstacksize(&attr, stackSize < 65536 ? 65536 : stackSize);
    pthread_t t;
    int rc = pthread_create(&t, &attr, &Start, r);
    pthread_attr_destroy(&attr);
    if (rc != 0) {
        delete r;
        return nullptr;
    }
    if (threadId) *threadId = r->id;
    return r;
}

bool ResumeNewThread(HANDLE thread) {
    auto* r = static_cast<ThreadRecord*>(thread);
    if (!r) return false;
    // Held across the wake-up: the thread may end and close its handle at once.
    r->refs.fetch_add(1, std::memory_order_relaxed);
    {
        std::lock_guard<std::mutex> lock(r->m);
        r->go = true;
        r->cv.notify_all();
    }
    Release(r);
    return true;
}

void CloseThread(HANDLE thread) {
    if (thread) Release(static_cast<ThreadRecord*>(thread));
}

bool SetPriorityOfThread(HANDLE thread, int) { return thread != nullptr; }

bool WaitForThreadEnd(HANDLE thread, DWORD ms) {
    auto* r = static_cast<ThreadRecord*>(thread);
    if (!r) return false;
    std::unique_lock<std::mutex> lock(r->m);
    if (ms == INFINITE) {
        r->cv.wait(lock, [r] { return r->ended; });
        return true;
    }
    return r->cv.wait_for(lock, std::chrono::milliseconds(ms), [r] { return r->ended; });
}

DWORD CurrentThreadId() {
    if (!t_threadId) t_threadId = g_nextThreadId.fetch_add(1);
    return t_threadId;
}

void SleepMilliseconds(DWORD ms) {
    timespec ts{(time_t)(ms / 1000), (long)(ms % 1000) * 1000000L};
    while (nanosleep(&ts, &ts) == -1 && errno == EINTR) {
    }
}

LONG AtomicIncrement(volatile LONG* value) { return __atomic_add_fetch(value, 1, __ATOMIC_SEQ_CST); }
LONG AtomicDecrement(volatile LONG* value) { return __atomic_sub_fetch(value, 1, __ATOMIC_SEQ_CST); }

HRESULT CreateLock(void** lock, DWORD) {
    *lock = new (std::nothrow) std::recursive_mutex;
    return *lock ? S_OK : E_OUTOFMEMORY;
}

void DeleteLock(void* lock) { delete static_cast<std::recursive_mutex*>(lock); }
void EnterLock(void* lock) { static_cast<std::recursive_mutex*>(lock)->lock(); }
bool TryEnterLock(void* lock) { return static_cast<std::recursive_mutex*>(lock)->try_lock(); }
void LeaveLock(void* lock) { static_cast<std::recursive_mutex*>(lock)->unlock(); }

}  // namespace qm::platform
