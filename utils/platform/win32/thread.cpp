#include "utils/platform/thread.h"

#include <process.h>

#include <new>

namespace qm::platform {

namespace {

struct Start {
    ThreadEntry entry;
    void* arg;
};

unsigned __stdcall Trampoline(void* p) {
    Start start = *static_cast<Start*>(p);
    delete static_cast<Start*>(p);
    return start.entry(start.arg);
}

}  // namespace

HANDLE CreateSuspendedThread(ThreadEntry entry, void* arg, unsigned stackSize, DWORD* threadId) {
    auto* start = new (std::nothrow) Start{entry, arg};
    if (!start) return nullptr;
    unsigned id = 0;
    uintptr_t h = _beginthreadex(nullptr, stackSize, &Trampoline, start, CREATE_SUSPENDED, &id);
    if (!h) {
        delete start;
        return nullptr;
    }
    if (threadId) *threadId = id;
    return (HANDLE)h;
}

bool ResumeNewThread(HANDLE thread) { return thread && ResumeThread(thread) != (DWORD)-1; }

void CloseThread(HANDLE thread) {
    if (thread) CloseHandle(thread);
}

bool SetPriorityOfThread(HANDLE thread, int priority) { return thread && SetThreadPriority(thread, priority); }

bool WaitForThreadEnd(HANDLE thread, DWORD ms) { return thread && WaitForSingleObject(thread, ms) == WAIT_OBJECT_0; }

DWORD CurrentThreadId() { return GetCurrentThreadId(); }

void SleepMilliseconds(DWORD ms) { Sleep(ms); }

LONG AtomicIncrement(volatile LONG* value) { return InterlockedIncrement(value); }
LONG AtomicDecrement(volatile LONG* value) { return InterlockedDecrement(value); }

HRESULT CreateLock(void** lock, DWORD spinCount) {
    auto* cs = new (std::nothrow) CRITICAL_SECTION;
    *lock = nullptr;
    if (!cs) return E_OUTOFMEMORY;
    if (!InitializeCriticalSectionAndSpinCount(cs, spinCount)) {
        HRESULT hr = HRESULT_FROM_WIN32(GetLastError());
        delete cs;
        return FAILED(hr) ? hr : E_FAIL;
    }
    *lock = cs;
    return S_OK;
}

void DeleteLock(void* lock) {
    if (!lock) return;
    DeleteCriticalSection(static_cast<CRITICAL_SECTION*>(lock));
    delete static_cast<CRITICAL_SECTION*>(lock);
}

void EnterLock(void* lock) { EnterCriticalSection(static_cast<CRITICAL_SECTION*>(lock)); }
bool TryEnterLock(void* lock) { return TryEnterCriticalSection(static_cast<CRITICAL_SECTION*>(lock)) != 0; }
void LeaveLock(void* lock) { LeaveCriticalSection(static_cast<CRITICAL_SECTION*>(lock)); }

}  // namespace qm::platform
