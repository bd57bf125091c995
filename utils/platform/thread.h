// Threads, sleeping, interlocked counters and critical sections.
#pragma once

#include "utils/framework/winmsg.h"
#include "utils/platform/host.h"

namespace qm::platform {

typedef unsigned (*ThreadEntry)(void* arg);

// Creates a thread that runs entry(arg) once ResumeNewThread lets it go. The handle stays
// valid until CloseThread, whether the thread has ended or not. Null on failure.
HANDLE CreateSuspendedThread(ThreadEntry entry, void* arg, unsigned stackSize, DWORD* threadId);
bool ResumeNewThread(HANDLE thread);
void CloseThread(HANDLE thread);
bool SetPriorityOfThread(HANDLE thread, int priority);
// Waits until the thread has ended, at most ms milliseconds (INFINITE: no limit).
bool WaitForThreadEnd(HANDLE thread, DWORD ms);

// The calling thread's id: nonzero, unique among the live threads of the process.
DWORD CurrentThreadId();

LONG AtomicIncrement(volatile LONG* value);
LONG AtomicDecrement(volatile LONG* value);

// A recursive lock with a spin count. Create returns S_OK or the failure as an HRESULT.
HRESULT CreateLock(void** lock, DWORD spinCount);
void DeleteLock(void* lock);
void EnterLock(void* lock);
bool TryEnterLock(void* lock);
void LeaveLock(void* lock);

}  // namespace qm::platform
