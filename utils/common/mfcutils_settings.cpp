#include "utils/common/mfcutils_settings.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/FileSystem.h"
#include "utils/common/utils_files.h"
#include "utils/framework/exceptions.h"
#include "utils/platform/files.h"
#include "utils/platform/host.h"
#include "utils/platform/userfiles.h"

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

// ---------------------------------------------------------------------------------------
// Deferred deletion

namespace {

const char kFilesToDeleteOnStart[] = "FilesToDeleteOnStart";
const char kDataPath[] = "DataPath";
const char kDataFolder[] = "\\Quillmark Desk\\";

}  // namespace

void DeleteFileOnNextStartIfExists(const char* pPath) {
    if (!pPath) return;  // nothing to register
    const CString key = GetQMKey();
    CString files;
    if (IsInRegistry(key, kFilesToDeleteOnStart, nullptr)) files = ReadFromRegistry(key, kFilesToDeleteOnStart, "");
    if (!files.IsEmpty() && files[files.GetLength() - 1] != '\r') files += '\r';
    files += pPath;
    bool bWriteOk = WriteToRegistry(key, kFilesToDeleteOnStart, files);
    CVASSERT(bWriteOk);
}

void DeleteFilesOnStart() {
    const CString key = GetQMKey();
    if (!IsInRegistry(key, kFilesToDeleteOnStart, nullptr)) return;
    CString files = ReadFromRegistry(key, kFilesToDeleteOnStart, "");
    if (files.IsEmpty()) return;
    int start = 0;
    while (start <= files.GetLength()) {
        int end = files.Find('\r', start);
        if (end < 0) end = files.GetLength();
        CString path = files.Mid(start, end - start);
        if (!path.IsEmpty() && FileExists(path)) qm::platform::FileDelete(path);
        start = end + 1;
    }
    DeleteFromRegistry(key, kFilesToDeleteOnStart);
}

void DeleteHTSTempFiles(const CString& csTargetPath) {
    CVASSERT(!csTargetPath.IsEmpty());
    CString target = csTargetPath;
    if (!FileExists(target)) {
        bool bTargetPathRes = FileSystem::MakePath(target) == 0;
        if (!CVASSERT(bTargetPathRes)) return;
    }
    FileSystem::EnsureBackslash(target);
    CString csPath = FileSystem::GetCurrentDirectory();
    CVASSERT(!csPath.IsEmpty());
    // The two patterns, each ended by a zero, and the list by a second zero, in 522 bytes. A
    // current folder too long for that buffer is reported and not searched.
    std::string from = std::string(csPath) + "HTS*.tmp" + '\0' + std::string(csPath) + "HTS_tmp*.*" + '\0' + '\0';
    if (from.size() > 522) {
        CVASSERT_TEXT("sizeof(szFrom) >= nFromLength");
        return;
    }
    std::string to = std::string(target) + '\0' + '\0';
    SHFILEOPSTRUCTA op{};
    op.wFunc = FO_MOVE;
    op.pFrom = from.c_str();
    op.pTo = to.c_str();
    op.fFlags = FOF_SILENT | FOF_RENAMEONCOLLISION | FOF_NOCONFIRMATION | FOF_FILESONLY | FOF_NOCONFIRMMKDIR |
                FOF_NOERRORUI;  // 0x069C
    int nResult = qm::platform::ShellFileOperation(&op);
    const int DE_INVALIDFILES = 124;
    CVASSERT((0 == nResult) || (2 == nResult) || (nResult == DE_INVALIDFILES));
}

void DeleteAttachmentFiles(const CString& csTargetPath) {
    if (!CVASSERT(!csTargetPath.IsEmpty())) return;
    // At most 261 characters, ended by two zeros.
    char from[263] = {};
    std::strncpy(from, csTargetPath, 261);
    SHFILEOPSTRUCTA op{};
    op.wFunc = FO_DELETE;
    op.pFrom = from;
    op.fFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_ALLOWUNDO | FOF_NOERRORUI;  // 0x0454
    qm::platform::ShellFileOperation(&op);
}

// ---------------------------------------------------------------------------------------
// Locations

namespace {

CString DocumentsDataFolder() {
    char documents[MAX_PATH + 1] = {};
    qm::platform::GetDocumentsFolder(documents);
    return CString(documents) + kDataFolder;
}

// The key's "DataPath" with a trailing backslash, or the fallback when the value is missing
// or empty (an empty value would otherwise name the root of the current drive).
CString DataPathOf(const CString& key, const CString& fallback) {
    if (!IsInRegistry(key, kDataPath, nullptr)) return fallback;
    CString path = ReadFromRegistry(key, kDataPath, fallback);
    if (path.IsEmpty()) return fallback;
    return FileSystem::EnsureBackslash(path);
}

}  // namespace

CString GetProgramSettingsDirectory() { return DataPathOf(GetQMKey(), DocumentsDataFolder()); }

CString GetPriorVersionSettingsDirectory() { return DataPathOf(GetPriorVersionQMKey(), CString()); }

CString GetAssertFileDirectory() { return DocumentsDataFolder(); }

CString GetIniFileName() {
    char module[MAX_PATH + 1] = {};
    qm::platform::GetExecutableFileName(module, MAX_PATH);
    return FileSystem::ExtractFileName(module) + ".ini";
}

CString GetFolderLocation(const CString& csPath) {
    int pos = csPath.ReverseFind('\\');
    if (pos < 0) return CString();
    if (pos == 2 && csPath[1] == ':') return csPath.Left(3);
    return csPath.Left(pos);
}

void GetUniqueTempFileName(CString& FileName) {
    char temp[MAX_PATH + 1] = {};
    qm::platform::TempFolderGet(MAX_PATH, temp);
    FileName = CString(temp) + FileSystem::ExtractFile(FileName);
    if (FileExists(FileName)) {
        bool bOk = GenerateAlternateName(FileName) != 0;
        CVASSERT(bOk);
    }
    CVASSERT(!FileExists (FileName));
}

// ---------------------------------------------------------------------------------------
// Files

int GenerateAlternateName(CString& FileName) {
    char drive[3], dir[256], fname[256], ext[256];
    // A name whose parts do not fit the splitter's buffers has no alternate: it is emptied.
    if (qm::platform::SplitPathS(FileName, drive, sizeof drive, dir, sizeof dir, fname, sizeof fname, ext,
                                 sizeof ext) != 0) {
        FileName.Empty();
        return 0;
    }
    for (int counter = 0; counter <= 99999; ++counter) {
        char candidate[260];
        int n = std::snprintf(candidate, sizeof candidate, "%s%s%s%d%s", drive, dir, fname, counter, ext);
        // A candidate longer than the 260-character buffer cannot be built: there is no
        // alternate name then.
        if (n < 0 || n >= (int)sizeof candidate) break;
        if (!FileExists(candidate)) {
            FileName = candidate;
            return 1;
        }
    }
    FileName.Empty();
    return 0;
}

ULONGLONG GetFileLength(const char* pPath) {
    std::uint64_t size = 0;
    if (!pPath || !qm::platform::QueryFileStatus(pPath, nullptr, &size)) return 0;
    return size;
}

ULONGLONG LoadFileToString(CString& text, const char* pPath, bool bConvertUnicode) {
    text.Empty();
    CFile file;
    if (!pPath || !file.Open(pPath, CFile::modeRead | CFile::shareDenyWrite)) return 0;
    try {
        ULONGLONG dwFileLength = file.GetLength();
        // A string holds at most 2^31 - 1 characters: a larger file is not loaded.
        if (dwFileLength == 0 || dwFileLength >= (ULONGLONG)INT_MAX) {
            file.Close();
            return 0;
        }
        char* buffer = text.GetBuffer((int)dwFileLength);
        UINT dwRead = file.Read(buffer, (UINT)dwFileLength);
        text.ReleaseBuffer((int)dwRead);
        CVASSERT(dwRead == dwFileLength);
        file.Close();
        if (bConvertUnicode && qm::platform::HasUnicodeSignature(text.GetString(), (int)dwRead)) {
            // The characters after the signature: the length in bytes halved, minus one.
            int count = (int)(dwRead / 2) - 1;
            std::vector<std::uint16_t> wide((size_t)count + 1);
            std::memcpy(wide.data(), text.GetString() + 2, (size_t)count * 2);
            int needed = qm::platform::UnicodeToAnsi(wide.data(), count, nullptr, 0);
            std::unique_ptr<char[]> szMBBuff(new (std::nothrow) char[(size_t)needed + 1]);
            if (!CVASSERT(szMBBuff)) return dwFileLength;
            int n = count ? qm::platform::UnicodeToAnsi(wide.data(), count, szMBBuff.get(), needed) : 0;
            text = CString(szMBBuff.get(), n);
        }
        return dwFileLength;
    } catch (CFileException* e) {
        e->Delete();
        text.Empty();
        file.Abort();
        return 0;
    }
}

void WriteStringToAnsiFile(CFile* pFile, const CString& text) {
    if (!pFile) return;  // no file to write to
    pFile->Write(text.GetString(), (UINT)text.GetLength());
}
