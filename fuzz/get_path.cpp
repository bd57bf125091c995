// Arbitrary command lines through GetPath (the first byte sets the quote flag), from an
// exactly sized copy so that a read past the terminator is caught, and arbitrary paths through
// the full-path resolver of ExpandPathToFull and MakeFull.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/FileSystem.h"

namespace {

void QuietAssert(const char*, const char*, int) {}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static bool ready = [] {
        SetCvAssertSink(&QuietAssert);
        return true;
    }();
    (void)ready;
    if (size == 0) return 0;
    std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    char* copy = new char[text.size() + 1];
    std::memcpy(copy, text.c_str(), text.size() + 1);
    CString target;
    char* stop = FileSystem::GetPath(copy, target, data[0] & 1);
    if (stop < copy || stop > copy + std::strlen(copy)) std::abort();
    delete[] copy;

    CString path = text.c_str();
    char* name = FileSystem::ExpandPathToFull(path);
    if (name < path.GetString() || name > path.GetString() + path.GetLength()) std::abort();
    CString full = text.c_str();
    FileSystem::MakeFull(full);
    return 0;
}
