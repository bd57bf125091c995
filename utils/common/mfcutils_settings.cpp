#include "utils/common/mfcutils_settings.h"

#include <cstring>
#include <memory>

#include "utils/common/CVLogger.h"
#include "utils/platform/registry.h"

#define QM_SOURCE_MODULE "Common\\mfcutils"

using qm::platform::RegistryCloseKey;
using qm::platform::RegistryCreateKey;
using qm::platform::RegistryOpenKey;
using qm::platform::RegistryQueryValue;
using qm::platform::RegistrySetValue;

namespace {

// Reading helpers read into a buffer of this size.
constexpr DWORD kReadBufferSize = 200;

// An open key closed at the end of the scope.
class Key {
public:
    // create: RegCreateKeyEx, else RegOpenKeyEx; both with full access.
    Key(const char* path, bool create) {
        LONG rc = create ? RegistryCreateKey(HKEY_CURRENT_USER, path, KEY_ALL_ACCESS, &m_key, nullptr)
                         : RegistryOpenKey(HKEY_CURRENT_USER, path, KEY_ALL_ACCESS, &m_key);
        if (rc != ERROR_SUCCESS) m_key = nullptr;
    }
    ~Key() {
        if (m_key) RegistryCloseKey(m_key);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    explicit operator bool() const { return m_key != nullptr; }
    HKEY Get() const { return m_key; }

private:
    HKEY m_key = nullptr;
};

}  // namespace

CString GetQMKey() { return "Software\\Corvane\\Quillmark 11"; }

CString GetPriorVersionQMKey() { return "Software\\Corvane\\Quillmark 10"; }

bool IsInRegistry(const char* pKey, const char* pValue, DWORD* pType) {
    Key key(pKey, false);
    if (!key) return false;
    DWORD type = REG_NONE;
    if (RegistryQueryValue(key.Get(), pValue, &type, nullptr, nullptr) != ERROR_SUCCESS) return false;
    if (pType) *pType = type;
    return true;
}

CString ReadFromRegistry(CString csKey, CString csValue, CString csDefault) {
    Key key(csKey, true);
    if (!key) return csDefault;
    // One byte more than the read may fill, so that a value stored without its terminating
    // zero still ends in one.
    char buffer[kReadBufferSize + 1] = {};
    DWORD size = kReadBufferSize, type = REG_NONE;
    if (RegistryQueryValue(key.Get(), csValue, &type, reinterpret_cast<BYTE*>(buffer), &size) != ERROR_SUCCESS)
        return csDefault;
    return CString(buffer);
}

bool WriteToRegistry(CString csKey, CString csValue, CString csData) {
    Key key(csKey, true);
    if (!key) return false;
    RegistrySetValue(key.Get(), csValue, REG_SZ, reinterpret_cast<const BYTE*>(csData.GetString()),
                     (DWORD)csData.GetLength());
    return true;
}

DWORD ReadDWFromRegistry(CString csKey, CString csValue, DWORD dwDefault) {
    Key key(csKey, true);
    if (!key) return dwDefault;
    DWORD value = 0, size = sizeof value, type = REG_NONE;
    if (RegistryQueryValue(key.Get(), csValue, &type, reinterpret_cast<BYTE*>(&value), &size) != ERROR_SUCCESS)
        return dwDefault;
    return value;
}

bool WriteDWToRegistry(CString csKey, CString csValue, DWORD dwValue) {
    Key key(csKey, true);
    if (!key) return false;
    return RegistrySetValue(key.Get(), csValue, REG_DWORD, reinterpret_cast<const BYTE*>(&dwValue),
                            sizeof dwValue) == ERROR_SUCCESS;
}

bool ReadBinaryFromRegistry(const char* pKey, const char* pValue, unsigned char** ppData, DWORD* pSize) {
    if (ppData) *ppData = nullptr;
    if (!ppData || !pSize) return false;
    Key key(pKey, false);
    if (!key) return false;
    DWORD type = REG_NONE, size = 0;
    if (RegistryQueryValue(key.Get(), pValue, &type, nullptr, &size) != ERROR_SUCCESS) return false;
    // The value may change between asking for its size and reading it: a read that no
    // longer fits fails like any other.
    std::unique_ptr<unsigned char[]> data(new (std::nothrow) unsigned char[size ? size : 1]);
    if (!data) return false;
    DWORD read = size;
    if (RegistryQueryValue(key.Get(), pValue, &type, data.get(), &read) != ERROR_SUCCESS || type != REG_BINARY)
        return false;
    *pSize = read;
    *ppData = data.release();
    return true;
}

bool WriteBinaryToRegistry(const char* pKey, const char* pValue, const unsigned char* pData, DWORD dwSize) {
    Key key(pKey, true);
    if (!key) return false;
    return RegistrySetValue(key.Get(), pValue, REG_BINARY, pData, dwSize) == ERROR_SUCCESS;
}

void DeleteFromRegistry(const char* pKey, const char* pValue) {
    Key key(pKey, false);
    if (key) qm::platform::RegistryDeleteValue(key.Get(), pValue);
}
