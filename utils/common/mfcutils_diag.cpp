#include "utils/common/mfcutils_diag.h"

#include <mutex>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/FileSystem.h"
#include "utils/common/utils_text.h"
#include "utils/framework/CWinApp.h"
#include "utils/platform/files.h"
#include "utils/platform/messagebox.h"
#include "utils/platform/host.h"
#include "utils/platform/sysinfo.h"

#define QM_SOURCE_MODULE "Common\\mfcutils"

namespace {

void EnsureFrameworkStrings() {
    static std::once_flag once;
    std::call_once(once, [] {
        qm::SetDefaultStringResource(qm::IDS_FRAMEWORK_FILE_NOT_FOUND, "%1 was not found.");
        qm::SetDefaultStringResource(qm::IDS_FRAMEWORK_DISK_FULL, "Disk full while accessing %1.");
    });
}

const bool g_stringsAtLoad = (EnsureFrameworkStrings(), true);

// The framework's AfxFormatString1: the resource's text with "%1" replaced by the argument.
CString FormatResource1(UINT id, const char* argument) {
    EnsureFrameworkStrings();
    CString text;
    if (!text.LoadString(id)) return CString();
    ReplaceString(text, "%1", argument, 1, 1);
    return text;
}

}  // namespace

namespace qm {
OSVERSIONINFOA& ModuleOSVersionRecord() {
    static OSVERSIONINFOA record;
    return record;
}
}  // namespace qm

const OSVERSIONINFOA& GetModuleOSVersion() { return qm::ModuleOSVersionRecord(); }

int GetOSVersionNum() { return (int)GetModuleOSVersion().dwMajorVersion; }

int GetOSMinorVersionNum() { return (int)GetModuleOSVersion().dwMinorVersion; }

bool IsWinNT() { return GetModuleOSVersion().dwPlatformId == VER_PLATFORM_WIN32_NT; }

CString GetOSName() {
    const char* key = IsWinNT() ? "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion"
                                : "SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
    HKEY hKey = nullptr;
    if (qm::platform::RegistryOpenKey(HKEY_LOCAL_MACHINE, key, KEY_QUERY_VALUE, &hKey) != ERROR_SUCCESS)
        return CString();
    CString name;
    DWORD type = REG_NONE, size = 0;
    if (qm::platform::RegistryQueryValue(hKey, "ProductName", &type, nullptr, &size) == ERROR_SUCCESS && size) {
        std::vector<char> buffer(size + 1, '\0');
        if (qm::platform::RegistryQueryValue(hKey, "ProductName", &type, reinterpret_cast<BYTE*>(buffer.data()),
                                             &size) == ERROR_SUCCESS)
            name = buffer.data();
    }
    qm::platform::RegistryCloseKey(hKey);
    return name;
}

ULONGLONG FreeDiskSpace(const CString& path, DWORD size) {
    const ULONGLONG kFailed = ~0ULL;
    qm::platform::DiskFreeSpaceExProc freeSpaceEx = qm::platform::FindDiskFreeSpaceEx("kernel32.dll");
    CString root = FileSystem::ExtractDrive(path);
    const char* rootText = root.IsEmpty() ? nullptr : root.GetString();
    ULONGLONG freeSpace = 0, clusterSize = 0;
    if (!freeSpaceEx || size != 0) {
        DWORD sectorsPerCluster = 0, bytesPerSector = 0, freeClusters = 0, totalClusters = 0;
        if (!qm::platform::DiskFreeSpace(rootText, &sectorsPerCluster, &bytesPerSector, &freeClusters, &totalClusters))
            return kFailed;
        clusterSize = (ULONGLONG)sectorsPerCluster * bytesPerSector;
        freeSpace = (ULONGLONG)freeClusters * clusterSize;
    }
    if (freeSpaceEx) {
        ULONGLONG available = 0, total = 0, totalFree = 0;
        if (!freeSpaceEx(rootText, &available, &total, &totalFree)) return kFailed;
        freeSpace = available;
    }
    // A volume that reports no cluster size adds the size as it is.
    if (size != 0) freeSpace += clusterSize ? (size + clusterSize - 1) / clusterSize * clusterSize : size;
    return freeSpace;
}

ULONGLONG FreeDiskSpace() {
    char current[260] = {};
    DWORD n = qm::platform::FolderGetCurrent(sizeof current, current);
    if (n == 0 || n >= sizeof current) return 0;
    return FreeDiskSpace(current, 0);
}

void TraceDiskInfo(const char* pRoot) {
    const char* root = pRoot ? pRoot : "";
    void* library = nullptr;
    qm::platform::DiskFreeSpaceExProc freeSpaceEx = qm::platform::LoadDiskFreeSpaceEx("KERNEL32.DLL", &library);
    BOOL result;
    if (freeSpaceEx) {
        ULONGLONG available = 0, total = 0, totalFree = 0;
        result = freeSpaceEx(pRoot, &available, &total, &totalFree);
        _cvtrace_("Disk space for %s: FreeMBsAvailableToCaller = %d; TotalNumberOfMBs = %d; TotalNumberOfFreeMBs = %d\n",
                  root, (int)(available >> 20), (int)(total >> 20), (int)(totalFree >> 20));
    } else {
        DWORD sectorsPerCluster = 0, bytesPerSector = 0, freeClusters = 0, totalClusters = 0;
        result = qm::platform::DiskFreeSpace(pRoot, &sectorsPerCluster, &bytesPerSector, &freeClusters, &totalClusters);
        // Computed in 32 bits: it wraps on large disks.
        DWORD bytes = freeClusters * bytesPerSector * sectorsPerCluster;
        _cvtrace_("Disk space for %s = %d\n", root, (int)bytes);
    }
    if (result != 1) CVASSERT_TEXT("FALSE");
    qm::platform::ReleaseDiskLibrary(library);
}

void FileError(const char* pPrefix, const char* pFileName, LONG code) {
    if (code >= 0) return;
    // A null file name is reported and shown as the empty text.
    if (!CVASSERT(pFileName != NULL)) pFileName = "";
    CString message = pPrefix ? pPrefix : "";
    UINT resource = 0;
    switch (code & 0xFFFF) {
    case 2:
    case 3:
        resource = qm::IDS_FRAMEWORK_FILE_NOT_FOUND;
        break;
    case 112:
        resource = qm::IDS_FRAMEWORK_DISK_FULL;
        break;
    case 4:
        message += "%s\nToo many files are open.\nClose other files to use this file.";
        break;
    case 5:
    case 32:
        message += "%s\nUnable to access file. It may be read-only or opened by someone else.";
        break;
    case 8:
        message += "%s\nThere is insufficient memory available.\nClose other files to use this file.";
        break;
    default:
        message += "%s\nFailed to read or write the file.";
        break;
    }
    ReplaceString(message, "%s", pFileName, 1, 1);
    // The resource text replaces the whole message, prefix included.
    if (resource) message = FormatResource1(resource, pFileName);
    CString text;
    text.Format("%s\nError code: %#x", (const char*)message, (unsigned)code);
    qm::platform::ShowMessageBox(text, AfxGetApp() ? AfxGetApp()->m_pszAppName : "", MB_OK);
}

void TraceMemoryInfo() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    qm::platform::QueryMemoryStatus(&status);
    _cvtrace_("%ld percent of memory is in use.\n", (long)status.dwMemoryLoad);
    // The virtual and extended memory lines are in hexadecimal on purpose.
    const struct {
        const char* format;
        ULONGLONG bytes;
    } lines[] = {
        {"%*I64d total %sbytes of physical memory.\n", status.ullTotalPhys},
        {"%*I64d free %sbytes of physical memory.\n", status.ullAvailPhys},
        {"%*I64d total %sbytes of paging file.\n", status.ullTotalPageFile},
        {"%*I64d free %sbytes of paging file.\n", status.ullAvailPageFile},
        {"%*I64x total %sbytes of virtual memory.\n", status.ullTotalVirtual},
        {"%*I64x free %sbytes of virtual memory.\n", status.ullAvailVirtual},
        {"%*I64x free %sbytes of extended memory.\n", status.ullAvailExtendedVirtual},
    };
    for (const auto& line : lines) _cvtrace_(line.format, 7, (long long)(line.bytes / 1024), "K");
}

void LogSecurityDetails() {
    HANDLE token = nullptr;
    bool bOk = qm::platform::OpenProcessTokenForQuery(&token) != FALSE;
    if (!CVASSERT(bOk)) return;
    DWORD type = 0, dwSize = 0;
    if (!qm::platform::QueryTokenElevationType(token, &type, sizeof type, &dwSize)) {
        _cvtrace_("Unable to get access token\n");
        return;
    }
    CVASSERT(dwSize == sizeof(TOKEN_ELEVATION_TYPE));
    _cvtrace_("Elevation type: %d\n", (int)type);
}
