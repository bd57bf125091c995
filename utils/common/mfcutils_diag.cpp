#include "utils/common/mfcutils_diag.h"

#include <mutex>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_text.h"
#include "utils/module/MFCQMUtils.h"
#include "utils/platform/messagebox.h"
#include "utils/platform/registry.h"
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
