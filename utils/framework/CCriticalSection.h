// The framework's synchronisation objects used by the library: the critical section and the
// single lock that brackets an access to it.
#pragma once

#include "utils/framework/CObject.h"
#include "utils/framework/winmsg.h"

class MFCQMUTILS_API CSyncObject : public CObject {
public:
    explicit CSyncObject(LPCTSTR pstrName);
    ~CSyncObject() override;

    virtual BOOL Lock(DWORD dwTimeout = INFINITE) = 0;
    virtual BOOL Unlock() = 0;
    virtual BOOL Unlock(LONG lCount, LONG* lpPrevCount = nullptr);

    HANDLE m_hObject;
};

// A recursive lock of the calling process (spin count 0). The constructor throws the
// framework's exception for the failure (CMemoryException for lack of memory, otherwise
// COleException with the system error as an HRESULT) when the section cannot be set up.
class MFCQMUTILS_API CCriticalSection : public CSyncObject {
public:
    CCriticalSection();
    ~CCriticalSection() override;
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    BOOL Lock();
    // Waits without limit whatever the timeout, as the framework's critical section does.
    BOOL Lock(DWORD dwTimeout) override;
    BOOL Unlock() override;
    using CSyncObject::Unlock;

private:
    void* m_lock;
};

// Locks its object for a scope: with bInitialLock FALSE it only remembers the object until
// Lock is called; the destructor releases a lock that it took.
class MFCQMUTILS_API CSingleLock {
public:
    explicit CSingleLock(CSyncObject* pObject, BOOL bInitialLock = FALSE);
    ~CSingleLock();
    CSingleLock(const CSingleLock&) = delete;
    CSingleLock& operator=(const CSingleLock&) = delete;

    BOOL Lock(DWORD dwTimeOut = INFINITE);
    BOOL Unlock();
    BOOL Unlock(LONG lCount, LONG* lPrevCount = nullptr);
    BOOL IsLocked() const { return m_bAcquired; }

protected:
    CSyncObject* m_pObject;
    HANDLE m_hObject;
    BOOL m_bAcquired;
};
