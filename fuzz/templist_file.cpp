// Arbitrary bytes as a temporary-file list file: read by the list's rules, adopted by a list,
// written out once, and the written file read again, which must give the same entries. The
// entries are let go without deleting anything (whatever they name), and the list file lies in
// the library's private temporary folder.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "quiet_reports.h"
#include "utils/common/TempList.h"
#include "utils/platform/files.h"

namespace {

// The list's protected batch operations: the entries are adopted with saving suspended and the
// file is written once, instead of once per entry as a plain adoption does.
struct OneWriteList : CTempList {
    OneWriteList() : CTempList("") {}
    using CTempList::AppendTempFiles;
    using CTempList::SaveTempFiles;
};

// The list file of this process in the private temporary folder; removed at exit.
const std::string& ListFile() {
    static const std::string name = [] {
        char folder[MAX_PATH + 1] = {};
        if (!qm::platform::GetTempPathA(MAX_PATH, folder)) return std::string();
        std::string path = std::string(folder) + "qmfuzz-templist-" + std::to_string(std::rand()) + ".lst";
        std::atexit([] { qm::platform::DeleteFileA(ListFile().c_str()); });
        return path;
    }();
    return name;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qmfuzz::QuietReports();
    const std::string& file = ListFile();
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
    return 0;
}
