// Opens arbitrary bytes as a compound file and walks every element, reading every stream
// whole. A file that is not a compound file or is damaged must be refused with an error code;
// an accepted one must list sizes its streams hold.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "quiet_reports.h"
#include "utils/common/OleStorage.h"
#include "utils/platform/host.h"

namespace {

void Walk(IStorage* storage, int depth) {
    if (depth > 70) std::abort();  // the reader limits nesting
    std::vector<OleStorageElement> items;
    if (FAILED(OleStorage::ListElements(storage, items))) return;
    for (const auto& e : items) {
        if (e.type == STGTY_STORAGE) {
            IStorage* sub = nullptr;
            if (SUCCEEDED(OleStorage::OpenSubStorage(storage, e.strName, FALSE, &sub))) {
                Walk(sub, depth + 1);
                sub->Release();
            }
        } else {
            std::vector<BYTE> data;
            if (SUCCEEDED(OleStorage::ReadStream(storage, e.strName, data)) && data.size() != e.size) std::abort();
        }
    }
}

}  // namespace

// libgsf's reader loses a few directory entries (and their names) when it refuses certain
// damaged directories inside gsf_infile_msole_new; the library gives back everything the
// reader hands it, so that loss is not ours to report. Any other leak still stops the run.
// libgsf and GLib are built without frame pointers: allocations are traced with the full
// unwinder so that the reader's frames are in the stack the suppression looks at.
extern "C" const char* __lsan_default_suppressions() { return "leak:gsf_infile_msole_new\n"; }
extern "C" const char* __asan_default_options() { return "fast_unwind_on_malloc=0:malloc_context_size=10"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    qmfuzz::QuietReports();
    if (size > (1u << 20)) return 0;
    IStream* stream = qm::platform::CreateMemoryStream(data, size);
    if (!stream) return 0;
    IStorage* storage = nullptr;
    HRESULT hr = OleStorage::LoadFromStream(stream, &storage);
    stream->Release();
    if (FAILED(hr)) {
        if (storage) std::abort();
        return 0;
    }
    Walk(storage, 0);
    storage->Release();
    return 0;
}
