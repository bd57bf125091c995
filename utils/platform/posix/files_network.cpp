// Network names on POSIX: a drive whose directory lies on an SMB/CIFS or NFS mount reports its
// share as \\server\share; no connection can be made from here.
#include <cstring>
#include <string>

#include "utils/platform/posix/files_internal.h"
#include "utils/platform/posix/mount_table.h"

namespace qm::platform {

using namespace pathmodel;
using namespace posixfs;

DWORD NetworkGetConnection(LPCSTR localName, LPSTR remoteName, DWORD* length) {
    if (!localName || !length) return ERROR_INVALID_PARAMETER;
    if (std::strlen(localName) != 2 || localName[1] != ':' || DriveIndex(localName[0]) < 0) return ERROR_BAD_DEVICE;
    std::string dir = DriveDir(DriveIndex(localName[0]));
    if (dir.empty()) return ERROR_NOT_CONNECTED;
    std::string remote = RemoteNameFromMountTable(mounts::Current()->text, dir);
    if (remote.empty()) return ERROR_NOT_CONNECTED;
    if (!remoteName || *length <= remote.size()) {
        *length = (DWORD)remote.size() + 1;
        return ERROR_MORE_DATA;
    }
    std::memcpy(remoteName, remote.c_str(), remote.size() + 1);
    return NO_ERROR;
}

DWORD NetworkAddConnection(NETRESOURCEA* resource, LPCSTR, LPCSTR, DWORD) {
    if (!resource) return ERROR_INVALID_PARAMETER;
    return ERROR_NOT_SUPPORTED;
}

}  // namespace qm::platform
