// Values under the product's registry key, files to delete at the next start, leftover
// temporary files, and the folders where the program keeps its data and settings.
#pragma once

#include "utils/framework/CFile.h"
#include "utils/framework/CString.h"
#include "utils/framework/winreg.h"
#include "utils/module/export.h"

// ---------------------------------------------------------------------------------------
// Registry helpers. Keys are paths under the current user's hive, opened with full access.
// The helpers never throw; failures show as their results and defaults.

// "Software\Corvane\Quillmark 11" and the prior version's "Software\Corvane\Quillmark 10".
MFCQMUTILS_API CString GetQMKey();
MFCQMUTILS_API CString GetPriorVersionQMKey();

// Opens the key without creating it; true when the value exists, its type then stored
// through pType (which may be null).
MFCQMUTILS_API bool IsInRegistry(const char* pKey, const char* pValue, DWORD* pType);
// Creates the key if missing (asking for a value makes the key exist) and reads the value
// into 200 bytes: the value, or the default when the read fails (so a string of 200
// characters or more reads as the default). The type is not checked.
MFCQMUTILS_API CString ReadFromRegistry(CString csKey, CString csValue, CString csDefault);
// Creates the key if missing and stores a string value; true when the key could be created
// or opened, whatever the store's result.
MFCQMUTILS_API bool WriteToRegistry(CString csKey, CString csValue, CString csData);
// Creates the key if missing and reads 4 bytes; the default when the read fails.
MFCQMUTILS_API DWORD ReadDWFromRegistry(CString csKey, CString csValue, DWORD dwDefault);
// Creates the key if missing and stores a 32-bit number; true when the store succeeded.
MFCQMUTILS_API bool WriteDWToRegistry(CString csKey, CString csValue, DWORD dwValue);
// Opens the key without creating it and reads a binary value into a new array of *pSize
// bytes (the caller frees it with delete[]); true only when the read succeeded and the value
// is REG_BINARY. On false *ppData is null.
MFCQMUTILS_API bool ReadBinaryFromRegistry(const char* pKey, const char* pValue, unsigned char** ppData,
                                           DWORD* pSize);
// Creates the key if missing and stores a binary value; true when the store succeeded.
MFCQMUTILS_API bool WriteBinaryToRegistry(const char* pKey, const char* pValue, const unsigned char* pData,
                                          DWORD dwSize);
// Opens the key without creating it and deletes the value.
MFCQMUTILS_API void DeleteFromRegistry(const char* pKey, const char* pValue);
