// The registry on Windows: advapi32 on the real hives.
#include "utils/platform/host.h"

#include <mutex>
#include <string>

namespace qm::platform {

LONG RegistryCreateKey(HKEY root, const char* subKey, REGSAM access, HKEY* result, DWORD* disposition) {
    return RegCreateKeyExA(root, subKey ? subKey : "", 0, nullptr, REG_OPTION_NON_VOLATILE, access, nullptr, result,
                           disposition);
}

LONG RegistryOpenKey(HKEY root, const char* subKey, REGSAM access, HKEY* result) {
    return RegOpenKeyExA(root, subKey, 0, access, result);
}

LONG RegistryCloseKey(HKEY key) { return RegCloseKey(key); }

LONG RegistryQueryValue(HKEY key, const char* name, DWORD* type, BYTE* data, DWORD* size) {
    return RegQueryValueExA(key, name, nullptr, type, data, size);
}

LONG RegistrySetValue(HKEY key, const char* name, DWORD type, const BYTE* data, DWORD size) {
    return RegSetValueExA(key, name, 0, type, data, size);
}

LONG RegistryDeleteValue(HKEY key, const char* name) { return RegDeleteValueA(key, name); }

LONG RegistryDeleteTree(HKEY root, const char* subKey) { return RegDeleteTreeA(root, subKey); }

LONG RegistryEnumValue(HKEY key, DWORD index, char* name, DWORD* nameSize, DWORD* type, BYTE* data, DWORD* size) {
    return RegEnumValueA(key, index, name, nameSize, nullptr, type, data, size);
}

LONG RegistryEnumKey(HKEY key, DWORD index, char* name, DWORD* nameSize) {
    return RegEnumKeyExA(key, index, name, nameSize, nullptr, nullptr, nullptr, nullptr);
}

void SetRegistryStoreLocation(const char* location) {
    static std::mutex mutex;
    static HKEY privateHive = nullptr;
    std::lock_guard<std::mutex> lock(mutex);
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    if (privateHive) RegCloseKey(privateHive);
    privateHive = nullptr;
    if (location && *location &&
        RegCreateKeyExA(HKEY_CURRENT_USER, location, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr,
                        &privateHive, nullptr) == ERROR_SUCCESS)
        RegOverridePredefKey(HKEY_CURRENT_USER, privateHive);
}

}  // namespace qm::platform
