#include "utils/framework/CCriticalSection.h"

#include "utils/framework/exceptions.h"
#include "utils/platform/thread.h"

CSyncObject::CSyncObject(LPCTSTR) : m_hObject(nullptr) {}
CSyncObject::~CSyncObject() = default;
BOOL CSyncObject::Unlock(LONG, LONG*) { return TRUE; }

CCriticalSection::CCriticalSection() : CSyncObject(nullptr), m_lock(nullptr) {
    HRESULT hr = qm::platform::CreateLock(&m_lock, 0);
    if (FAILED(hr)) {
        if (hr == E_OUTOFMEMORY) throw new CMemoryException;
        auto* e = new COleException;
        e->m_sc = hr;
        throw e;
    }
}

CCriticalSection::~CCriticalSection() { qm::platform::DeleteLock(m_lock); }

BOOL CCriticalSection::Lock() {
    qm::platform::EnterLock(m_lock);
    return TRUE;
}

BOOL CCriticalSection::Lock(DWORD) { return Lock(); }

BOOL CCriticalSection::Unlock() {
    qm::platform::LeaveLock(m_lock);
    return TRUE;
}

CSingleLock::CSingleLock(CSyncObject* pObject, BOOL bInitialLock)
    : m_pObject(pObject), m_hObject(pObject ? pObject->m_hObject : nullptr), m_bAcquired(FALSE) {
    if (bInitialLock) Lock();
}

CSingleLock::~CSingleLock() { Unlock(); }

BOOL CSingleLock::Lock(DWORD dwTimeOut) {
    if (!m_pObject || m_bAcquired) return m_bAcquired;
    m_bAcquired = m_pObject->Lock(dwTimeOut);
    return m_bAcquired;
}

BOOL CSingleLock::Unlock() {
    if (m_pObject && m_bAcquired) m_bAcquired = !m_pObject->Unlock();
    return !m_bAcquired;
}

BOOL CSingleLock::Unlock(LONG lCount, LONG* lPrevCount) {
    if (m_pObject && m_bAcquired) m_bAcquired = !m_pObject->Unlock(lCount, lPrevCount);
    return !m_bAcquired;
}
