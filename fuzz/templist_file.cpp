// Arbitrary bytes as a temporary-file list file: read by the list's rules, adopted by a list
// (which rewrites the file), and the rewritten file read again, which must give the same
// entries. The entries name no existing file, so nothing is deleted.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "quiet_reports.h"
#include "utils/common/TempList.h"
#include "utils/platform/files.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qmfuzz::QuietReports();
    static const std::string native = "/tmp/qmfuzz-templist-" + std::to_string(::getpid()) + ".lst";
    static std::string file;
    if (file.empty()) {
        if (!qm::platform::ToWindowsPath(native.c_str(), file)) return 0;
        std::atexit([] { std::remove(native.c_str()); });
    }
    // Entries of the input are kept away from real files: they are read, not used as paths.
    FILE* out = std::fopen(native.c_str(), "wb");
    if (!out) return 0;
    std::fwrite(data, 1, size, out);
    std::fclose(out);
    CStringList first;
    CTempList::ReadListFile(file.c_str(), first);
    CStringList again;
    {
        CTempList list(file.c_str());
        list.SuspendSaving(true);
        // Let the entries go without deleting anything.
        while (!list.IsEmpty()) {
            CTempFile* entry = list.GetHead();
            entry->SetPath("");
            delete entry;
        }
    }
    CTempList::ReadListFile(file.c_str(), again);
    if (first.GetCount() != again.GetCount()) __builtin_trap();
    for (POSITION a = first.GetHeadPosition(), b = again.GetHeadPosition(); a && b;)
        if (first.GetNext(a) != again.GetNext(b)) __builtin_trap();
    return 0;
}
