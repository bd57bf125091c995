#include "utils/platform/sysinfo.h"

#include <grp.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <vector>

namespace qm::platform {
namespace {

// A value in kB from a /proc file ("MemAvailable:   123 kB"), or -1.
long long ProcKilobytes(const char* file, const char* field) {
    FILE* f = std::fopen(file, "r");
    if (!f) return -1;
    char line[256];
    long long value = -1;
    size_t n = std::strlen(field);
    while (std::fgets(line, sizeof line, f))
        if (std::strncmp(line, field, n) == 0 && line[n] == ':') {
            std::sscanf(line + n + 1, "%lld", &value);
            break;
        }
    std::fclose(f);
    return value;
}

// The user part of the address space of a 64-bit process (47 bits), as Windows reports it.
constexpr ULONGLONG kUserAddressSpace = 1ULL << 47;

// Stands for the process's token; it needs no closing.
HANDLE const kProcessToken = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x7070));

bool InAdministratorGroup() {
    int n = getgroups(0, nullptr);
    if (n <= 0) return false;
    std::vector<gid_t> groups((size_t)n);
    n = getgroups(n, groups.data());
    for (const char* name : {"sudo", "wheel", "admin"})
        if (const group* g = getgrnam(name))
            for (int i = 0; i < n; ++i)
                if (groups[(size_t)i] == g->gr_gid) return true;
    return false;
}

}  // namespace

BOOL QueryMemoryStatus(MEMORYSTATUSEX* status) {
    if (!status || status->dwLength != sizeof(MEMORYSTATUSEX)) return FALSE;
    struct sysinfo si {};
    if (sysinfo(&si) != 0) return FALSE;
    ULONGLONG unit = si.mem_unit ? si.mem_unit : 1;
    ULONGLONG total = si.totalram * unit, avail = si.freeram * unit;
    if (long long kb = ProcKilobytes("/proc/meminfo", "MemAvailable"); kb >= 0) avail = (ULONGLONG)kb * 1024;
    status->ullTotalPhys = total;
    status->ullAvailPhys = avail;
    status->dwMemoryLoad = total ? (DWORD)((total - avail) * 100 / total) : 0;
    status->ullTotalPageFile = total + si.totalswap * unit;
    status->ullAvailPageFile = avail + si.freeswap * unit;
    long long used = ProcKilobytes("/proc/self/status", "VmSize");
    status->ullTotalVirtual = kUserAddressSpace;
    status->ullAvailVirtual = kUserAddressSpace - (used > 0 ? (ULONGLONG)used * 1024 : 0);
    status->ullAvailExtendedVirtual = 0;
    return TRUE;
}

BOOL OpenProcessTokenForQuery(HANDLE* token) {
    if (!token) return FALSE;
    *token = kProcessToken;
    return TRUE;
}

BOOL QueryTokenElevationType(HANDLE token, void* info, DWORD infoSize, DWORD* returnedSize) {
    if (token != kProcessToken || !returnedSize) return FALSE;
    *returnedSize = sizeof(TOKEN_ELEVATION_TYPE);
    if (!info || infoSize < sizeof(TOKEN_ELEVATION_TYPE)) return FALSE;
    TOKEN_ELEVATION_TYPE type = geteuid() == 0          ? TokenElevationTypeFull
                                : InAdministratorGroup() ? TokenElevationTypeLimited
                                                         : TokenElevationTypeDefault;
    std::memcpy(info, &type, sizeof type);
    return TRUE;
}

}  // namespace qm::platform
