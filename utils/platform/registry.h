// The registry: the current user's hive (read and write) and the local machine's hive (read
// only). Each call answers as the Win32 call named beside it: same arguments, same result
// codes (ERROR_SUCCESS, ERROR_FILE_NOT_FOUND for a missing key or value, ERROR_MORE_DATA
// when a value does not fit the caller's buffer, ERROR_ACCESS_DENIED, ...).
//
// Windows: advapi32 on the real hives. POSIX: a SQLite database (by default
// $XDG_CONFIG_HOME/MFCQMUtils/registry.db, or the file named by the environment variable
// MFCQMUTILS_REGISTRY) with the registry's semantics: key names are case-insensitive (ASCII
// letters) and nested by backslashes, keys are created on demand, values keep their types,
// every call is one transaction, and several processes may share the store (WAL mode, busy
// timeout). The local machine's hive answers "ProductName" under
// "SOFTWARE\Microsoft\Windows NT\CurrentVersion" (and "...\Windows\CurrentVersion") from the
// system's os-release file and refuses every change.
#pragma once

#include "utils/framework/winreg.h"
#include "utils/framework/export.h"

namespace qm::platform {

// RegCreateKeyExA(root, subKey, 0, NULL, REG_OPTION_NON_VOLATILE, access, NULL, result,
// disposition); disposition may be null.
MFCQMUTILS_API LONG RegistryCreateKey(HKEY root, const char* subKey, REGSAM access, HKEY* result,
                                      DWORD* disposition);
// RegOpenKeyExA(root, subKey, 0, access, result): the key must exist.
MFCQMUTILS_API LONG RegistryOpenKey(HKEY root, const char* subKey, REGSAM access, HKEY* result);
// RegCloseKey.
MFCQMUTILS_API LONG RegistryCloseKey(HKEY key);
// RegQueryValueExA(key, name, NULL, type, data, size): with data null only the type and the
// size are given; a buffer smaller than the value gives ERROR_MORE_DATA with *size set to
// the size needed. A null or empty name is the key's default value.
MFCQMUTILS_API LONG RegistryQueryValue(HKEY key, const char* name, DWORD* type, BYTE* data, DWORD* size);
// RegSetValueExA(key, name, 0, type, data, size). A non-empty string value (REG_SZ,
// REG_EXPAND_SZ) is stored with its terminating zero even when size leaves it out.
MFCQMUTILS_API LONG RegistrySetValue(HKEY key, const char* name, DWORD type, const BYTE* data, DWORD size);
// RegDeleteValueA.
MFCQMUTILS_API LONG RegistryDeleteValue(HKEY key, const char* name);
// RegDeleteTreeA(root, subKey): the key, its values and every key below it.
MFCQMUTILS_API LONG RegistryDeleteTree(HKEY root, const char* subKey);
// RegEnumValueA(key, index, name, nameSize, NULL, type, data, size); ERROR_NO_MORE_ITEMS
// past the last value. *nameSize is in characters, without the terminating zero on return.
MFCQMUTILS_API LONG RegistryEnumValue(HKEY key, DWORD index, char* name, DWORD* nameSize, DWORD* type,
                                      BYTE* data, DWORD* size);
// RegEnumKeyExA(key, index, name, nameSize, NULL, NULL, NULL, NULL).
MFCQMUTILS_API LONG RegistryEnumKey(HKEY key, DWORD index, char* name, DWORD* nameSize);

// Points the current user's hive of this process somewhere private, for tests and tools
// that must not touch the user's real settings; nullptr restores the real hive.
// POSIX: location is the database file. Windows: location is a key under the real current
// user's hive that stands in for the hive (RegOverridePredefKey).
MFCQMUTILS_API void SetRegistryStoreLocation(const char* location);

}  // namespace qm::platform
