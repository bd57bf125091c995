#include "utils/platform/sysinfo.h"

namespace qm::platform {
namespace {

typedef BOOL(WINAPI* GetDiskFreeSpaceExAProc)(LPCSTR, PULARGE_INTEGER, PULARGE_INTEGER, PULARGE_INTEGER);

GetDiskFreeSpaceExAProc g_found = nullptr;
GetDiskFreeSpaceExAProc g_loaded = nullptr;

BOOL CallDiskFreeSpaceEx(GetDiskFreeSpaceExAProc proc, const char* root, ULONGLONG* avail, ULONGLONG* total,
                         ULONGLONG* totalFree) {
    ULARGE_INTEGER a{}, t{}, f{};
    BOOL ok = proc(root, &a, &t, &f);
    if (avail) *avail = a.QuadPart;
    if (total) *total = t.QuadPart;
    if (totalFree) *totalFree = f.QuadPart;
    return ok;
}

BOOL FoundThunk(const char* root, ULONGLONG* a, ULONGLONG* t, ULONGLONG* f) {
    return CallDiskFreeSpaceEx(g_found, root, a, t, f);
}

BOOL LoadedThunk(const char* root, ULONGLONG* a, ULONGLONG* t, ULONGLONG* f) {
    return CallDiskFreeSpaceEx(g_loaded, root, a, t, f);
}

}  // namespace

BOOL DiskFreeSpace(const char* root, DWORD* sectorsPerCluster, DWORD* bytesPerSector, DWORD* freeClusters,
                   DWORD* totalClusters) {
    return GetDiskFreeSpaceA(root, sectorsPerCluster, bytesPerSector, freeClusters, totalClusters);
}

DiskFreeSpaceExProc FindDiskFreeSpaceEx(const char* moduleName) {
    HMODULE module = GetModuleHandleA(moduleName);
    g_found = module ? reinterpret_cast<GetDiskFreeSpaceExAProc>(
                           reinterpret_cast<void*>(GetProcAddress(module, "GetDiskFreeSpaceExA")))
                     : nullptr;
    return g_found ? &FoundThunk : nullptr;
}

DiskFreeSpaceExProc LoadDiskFreeSpaceEx(const char* moduleName, void** library) {
    HMODULE module = LoadLibraryA(moduleName);
    if (library) *library = module;
    g_loaded = module ? reinterpret_cast<GetDiskFreeSpaceExAProc>(
                            reinterpret_cast<void*>(GetProcAddress(module, "GetDiskFreeSpaceExA")))
                      : nullptr;
    return g_loaded ? &LoadedThunk : nullptr;
}

void ReleaseDiskLibrary(void* library) {
    if (library) FreeLibrary(static_cast<HMODULE>(library));
}

BOOL QueryMemoryStatus(MEMORYSTATUSEX* status) { return GlobalMemoryStatusEx(status); }

BOOL OpenProcessTokenForQuery(HANDLE* token) { return OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token); }

BOOL QueryTokenElevationType(HANDLE token, void* info, DWORD infoSize, DWORD* returnedSize) {
    return GetTokenInformation(token, TokenElevationType, info, infoSize, returnedSize);
}

}  // namespace qm::platform
