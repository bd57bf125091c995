// Values under the product's registry key, files to delete at the next start, leftover
// temporary files, and the folders where the program keeps its data and settings.
#pragma once

#include "utils/framework/CFile.h"
#include "utils/framework/CString.h"
#include "utils/framework/winreg.h"
#include "utils/framework/export.h"

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

// ---------------------------------------------------------------------------------------
// Deferred deletion

// Adds path to the value "FilesToDeleteOnStart" of the product key (paths separated by one
// carriage return). The value is read in 200 bytes: once it has grown to 200 characters it
// reads as empty and the next registration replaces it by the single new path.
MFCQMUTILS_API void DeleteFileOnNextStartIfExists(const char* pPath);
// Deletes every listed file that exists (failures are ignored) and removes the value; an
// empty value is left as it is.
MFCQMUTILS_API void DeleteFilesOnStart();
// Moves "HTS*.tmp" and "HTS_tmp*.*" of the current folder into csTargetPath (made when
// missing), renaming on collision.
MFCQMUTILS_API void DeleteHTSTempFiles(const CString& csTargetPath);
// Sends the files or folder that the path (or its pattern) names to the recycle bin (POSIX:
// the freedesktop.org trash).
MFCQMUTILS_API void DeleteAttachmentFiles(const CString& csTargetPath);

// ---------------------------------------------------------------------------------------
// Locations

// The user's documents folder + "\Quillmark Desk\", or the product key's "DataPath" (with a
// trailing backslash) when it is set.
MFCQMUTILS_API CString GetProgramSettingsDirectory();
// The prior version's "DataPath" with a trailing backslash, or "" when it is not set.
MFCQMUTILS_API CString GetPriorVersionSettingsDirectory();
// The documents folder + "\Quillmark Desk\", never the registry value.
MFCQMUTILS_API CString GetAssertFileDirectory();
// The executable's name without folder and extension, + ".ini" ("host.ini").
MFCQMUTILS_API CString GetIniFileName();
// The path up to its last backslash, without it, except at a drive root ("C:\x" gives
// "C:\"); "" when there is no backslash.
MFCQMUTILS_API CString GetFolderLocation(const CString& csPath);
// The name becomes the temporary folder + its name-and-extension part, made unique with
// GenerateAlternateName when something exists there.
MFCQMUTILS_API void GetUniqueTempFileName(CString& FileName);

// ---------------------------------------------------------------------------------------
// Files

// Replaces the name by the first of name0, name1, ... name99999 (the counter before the
// extension) at which nothing exists and returns 1; when all exist, empties it and returns 0.
MFCQMUTILS_API int GenerateAlternateName(CString& FileName);
// The file's size; 0 when its status cannot be read.
MFCQMUTILS_API ULONGLONG GetFileLength(const char* pPath);
// Reads the whole file into text (empty when it cannot be read). With bConvertUnicode, a file
// that starts with the UTF-16 little-endian signature is converted to the ANSI code page.
// Returns the file's length in bytes (0 when nothing was read).
MFCQMUTILS_API ULONGLONG LoadFileToString(CString& text, const char* pPath, bool bConvertUnicode);
// Writes the string's characters (no terminating zero, no conversion) at the file's position.
MFCQMUTILS_API void WriteStringToAnsiFile(CFile* pFile, const CString& text);
