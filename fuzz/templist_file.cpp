// Arbitrary bytes as a temporary-file list file: read by the list's rules, adopted by a list,
// written out once, and the written file read again, which must give the same entries. The
// entries are let go without deleting anything (whatever they name), and the list file lies in
// the library's private temporary folder.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <string>

#include "quiet_reports.h"
#include "utils/common/TempList.h"
#include "utils/platform/files.h"
#include "utils/platform/posix/name_cache.h"

namespace {

// The list's protected batch operations: the entries are adopted with saving suspended and the
// file is written once, instead of once per entry as a plain adoption does.
struct OneWriteList : CTempList {
    OneWriteList() : CTempList("") {}
    using CTempList::AppendTempFiles;
    using CTempList::SaveTempFiles;
};

// The list file of this process in a private folder of its own, in memory (/dev/shm) where
// there is one: on a disk file system, replacing a file by a rename or truncating it makes the
// kernel write the new data out at once, and each run would wait for the disk twice. The folder
// is drive Q:, the only drive: entries naming other drives (or relative to the current folder)
// fail at once, so the entries adopted by each run never make the path service search the
// disk. Removed at exit.
struct ListFile {
    ListFile() {
        std::string base = "/dev/shm/qmfuzz-XXXXXX";
        if (!mkdtemp(base.data())) {
            char folder[MAX_PATH + 1] = {};
            if (!qm::platform::GetTempPathA(MAX_PATH, folder) || !qm::platform::ToNativePath(folder, base)) return;
            base += "qmfuzz-XXXXXX";
            if (!mkdtemp(base.data())) return;
        }
        dir = base;
        for (char d = 'A'; d <= 'Z'; ++d) qm::platform::SetDriveMapping(d, nullptr);
        if (qm::platform::SetDriveMapping('Q', dir.c_str())) name = "Q:\\templist.lst";
    }
    ~ListFile() {
        std::error_code ec;
        if (!dir.empty()) std::filesystem::remove_all(dir, ec);
    }
    std::string dir, name;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qmfuzz::QuietReports();
    // A kilobyte holds lines of every kind (empty, trimmed, cut into 259-character pieces);
    // longer inputs only add entries, each one a path look-up.
    if (size > 1024) return 0;
    static const ListFile where;
    const std::string& file = where.name;
    if (file.empty()) return 0;
    FILE* out = qm::platform::OpenFileStream(file.c_str(), "wb");
    if (!out) return 0;
    std::fwrite(data, 1, size, out);
    std::fclose(out);
    CStringList first;
    CTempList::ReadListFile(file.c_str(), first);
    {
        OneWriteList list;
        list.SuspendSaving(true);
        list.AppendTempFiles(first);
        list.SaveTempFiles(file.c_str());
        list.Detach(nullptr);  // nothing is deleted
    }
    CStringList again;
    CTempList::ReadListFile(file.c_str(), again);
    if (first.GetCount() != again.GetCount()) __builtin_trap();
    for (POSITION a = first.GetHeadPosition(), b = again.GetHeadPosition(); a && b;)
        if (first.GetNext(a) != again.GetNext(b)) __builtin_trap();
    // The folder listings the path service kept for this run's names go with the run: memory
    // kept from one run to the next makes the fuzzer look for leaks after every run.
    qm::platform::names::ForgetAll();
    return 0;
}
