// Disk space from statvfs on the directory that a Windows path names. The volume is
// described as the Windows calls describe it: clusters of the file system's fragment size,
// counted in 512-byte sectors, counts above 32 bits capped as the basic call caps them.
#include <strings.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <string>

#include "utils/platform/files.h"
#include "utils/platform/sysinfo.h"

namespace qm::platform {
namespace {

bool VolumeOf(const char* root, struct statvfs* st) {
    std::string native;
    if (!ToNativePath(root && *root ? root : ".", native)) return false;
    if (statvfs(native.c_str(), st) != 0) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return false;
    }
    return true;
}

BOOL DiskFreeSpaceExImpl(const char* root, ULONGLONG* available, ULONGLONG* total, ULONGLONG* totalFree) {
    struct statvfs st;
    if (!VolumeOf(root, &st)) return FALSE;
    ULONGLONG unit = st.f_frsize ? st.f_frsize : st.f_bsize;
    if (available) *available = (ULONGLONG)st.f_bavail * unit;
    if (total) *total = (ULONGLONG)st.f_blocks * unit;
    if (totalFree) *totalFree = (ULONGLONG)st.f_bfree * unit;
    return TRUE;
}

DWORD Cap(unsigned long long n) { return (DWORD)std::min<unsigned long long>(n, 0xFFFFFFFFull); }

bool IsKernel(const char* moduleName) { return moduleName && strcasecmp(moduleName, "kernel32.dll") == 0; }

// Stands for the loaded system library; it needs no releasing.
int g_kernelModule;

}  // namespace

BOOL DiskFreeSpace(const char* root, DWORD* sectorsPerCluster, DWORD* bytesPerSector, DWORD* freeClusters,
                   DWORD* totalClusters) {
    struct statvfs st;
    if (!VolumeOf(root, &st)) return FALSE;
    unsigned long unit = st.f_frsize ? st.f_frsize : st.f_bsize;
    DWORD sector = unit >= 512 && unit % 512 == 0 ? 512 : (DWORD)unit;
    if (sectorsPerCluster) *sectorsPerCluster = (DWORD)(unit / sector);
    if (bytesPerSector) *bytesPerSector = sector;
    if (freeClusters) *freeClusters = Cap(st.f_bavail);
    if (totalClusters) *totalClusters = Cap(st.f_blocks);
    return TRUE;
}

DiskFreeSpaceExProc FindDiskFreeSpaceEx(const char* moduleName) {
    return IsKernel(moduleName) ? &DiskFreeSpaceExImpl : nullptr;
}

DiskFreeSpaceExProc LoadDiskFreeSpaceEx(const char* moduleName, void** library) {
    if (library) *library = IsKernel(moduleName) ? &g_kernelModule : nullptr;
    return FindDiskFreeSpaceEx(moduleName);
}

void ReleaseDiskLibrary(void*) {}

}  // namespace qm::platform
