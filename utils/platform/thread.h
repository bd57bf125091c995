// Threads, sleeping, interlocked counters and critical sections.
#pragma once

#include "utils/framework/winmsg.h"
#include "utils/framework/export.h"

namespace qm::platform {

typedef unsigned (*ThreadEntry)(void* arg);

// Creates a thread that runs entry(arg) once ResumeNewThread lets it go. The handle stays
// valid until CloseThread, whether the thread has ended or not. Null on failure.
MFCQMUTILS_API HANDLE CreateSuspendedThread(ThreadEntry entry, void* arg, unsigned stackSize, DWORD* threadId);
MFCQMUTILS_API bool ResumeNewThread(HANDLE thread);
MFCQMUTILS_API void CloseThread(HANDLE thread);
MFCQMUTILS_API bool SetPriorityOfThread(HANDLE thread, int priority);
// Waits until the thread has ended, at most ms milliseconds (INFINITE: no limit).
MFCQMUTILS_API bool WaitForThreadEnd(HANDLE thread, DWORD ms);

// The calling thread's id: nonzero, unique among the live threads of the process.
MFCQMUTILS_API DWORD CurrentThreadId();
MFCQMUTILS_API void SleepMilliseconds(DWORD ms);

MFCQMUTILS_API LONG AtomicIncrement(volatile LONG* value);
MFCQMUTILS_API LONG AtomicDecrement(volatile LONG* value);

// A recursive lock with a spin count. Create returns S_OK or the failure as an HRESULT.
MFCQMUTILS_API HRESULT CreateLock(void** lock, DWORD spinCount);
MFCQMUTILS_API void DeleteLock(void* lock);
MFCQMUTILS_API void EnterLock(void* lock);
MFCQMUTILS_API bool TryEnterLock(void* lock);
MFCQMUTILS_API void LeaveLock(void* lock);

}  // namespace qm::platform
