// Two arbitrary texts (split at the first zero byte; control bytes and high bytes included)
// through the path algebra: splitting, joining, relative and absolute forms, drive roots,
// compacting (the second text's first byte is the width), wildcards and share names. Checks
// that compacting never grows a path and that the splitter keeps within its buffers.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/FileSystem.h"
#include "utils/platform/files.h"
#include "utils/platform/files_text.h"

namespace {

void QuietAssert(const char*, const char*, int) {}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static bool ready = [] {
        SetCvAssertSink(&QuietAssert);
        // No drives: the long forms that relative and absolute paths ask for fail at once
        // instead of searching the real disk, so the runs stay on the text.
        qm::platform::SetDriveMapping('Z', nullptr);
        return true;
    }();
    (void)ready;
    std::string input(reinterpret_cast<const char*>(data), size);
    size_t zero = input.find('\0');
    CString a = input.substr(0, zero).c_str();
    CString b = zero == std::string::npos ? CString() : CString(input.substr(zero + 1).c_str());

    FileSystem::ExtractDrive(a);
    FileSystem::ExtractPath(a);
    FileSystem::ExtractFile(a);
    FileSystem::ExtractFileName(a);
    FileSystem::ExtractExtension(a);
    FileSystem::ChangeExtension(a, b);
    FileSystem::ChangeFileName(a, b);
    FileSystem::ChangeDir(a, b);
    FileSystem::CreateFilePath(a, b);
    FileSystem::IncrementFileName(a);
    FileSystem::IsFullPath(a);
    FileSystem::IsPathInFolder(a, b);
    FileSystem::GetRelativePath(a, b);
    FileSystem::GetAbsolutePath(a, b);
    CString quoted = a, unquoted = a, cut = a, slashed = a;
    FileSystem::AddQuotes(quoted);
    FileSystem::RemoveQuotes(unquoted);
    FileSystem::RemoveExtension(cut);
    FileSystem::EnsureBackslash(slashed);

    unsigned width = b.IsEmpty() ? 0 : (unsigned char)b[0];
    CString compact;
    FileSystem::CompactPath(a, compact, width);
    if ((unsigned)compact.GetLength() > std::max<unsigned>(width, (unsigned)a.GetLength())) std::abort();

    char drive[3], dir[7], fname[5], ext[4];
    qm::platform::SplitPathS(a, drive, sizeof drive, dir, sizeof dir, fname, sizeof fname, ext, sizeof ext);
    char joined[9];
    qm::platform::MakePathS(joined, sizeof joined, b, a, b, a);
    // Names are at most 255 bytes on every file system the searches meet, and a search pattern
    // is at most a path long; the matcher's table is pattern x name, so a 4 KiB pattern would
    // spend each run on one table of a million cells.
    qm::platform::MatchWildcard(a.Left(MAX_PATH), b.Left(255));
    qm::platform::CanonicalizePathText(a.str());
    std::string combined;
    qm::platform::CombinePathText(a, b, combined);
    qm::platform::RemoteNameFromMountTable(a.str(), b.str());
    return 0;
}
