#include "utils/platform/osversion.h"

#include <sys/utsname.h>

#include <cstdio>
#include <cstring>

namespace qm::platform {

BOOL QueryOSVersion(OSVERSIONINFOA* info) {
    if (!info || info->dwOSVersionInfoSize != sizeof(OSVERSIONINFOA)) return FALSE;
    utsname u{};
    if (uname(&u) != 0) return FALSE;
    // "6.1.0-13-amd64" gives major 6, minor 1, build 0; the rest goes to the service-pack text.
    unsigned major = 0, minor = 0, build = 0;
    int used = 0;
    std::sscanf(u.release, "%u.%u.%u%n", &major, &minor, &build, &used);
    info->dwMajorVersion = major;
    info->dwMinorVersion = minor;
    info->dwBuildNumber = build;
    info->dwPlatformId = VER_PLATFORM_WIN32_NT;
    std::snprintf(info->szCSDVersion, sizeof info->szCSDVersion, "%.60s %.60s", u.sysname, u.release);
    return TRUE;
}

}  // namespace qm::platform
