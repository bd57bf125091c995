// The private heap on the system heap functions. HeapAlloc runs with HEAP_GENERATE_EXCEPTIONS
// inside a structured exception frame (MinGW-w64's __try1/__except1 on x86_64), whose filter
// accepts every exception and keeps its code.
#include "utils/platform/heap.h"

#include <excpt.h>

namespace qm::platform {

namespace {
DWORD g_lastCode;  // the heap is used without serialization: one thread at a time
}

extern "C" LONG WINAPI QmPrivateHeapFilter(EXCEPTION_POINTERS* ep) {
    g_lastCode = ep && ep->ExceptionRecord ? ep->ExceptionRecord->ExceptionCode : 0xFFFFFFFFu;
    return EXCEPTION_EXECUTE_HANDLER;
}

HANDLE CreatePrivateHeap() { return HeapCreate(HEAP_NO_SERIALIZE, 0x200000, 0); }

#if defined(_MSC_VER)
void* HeapAllocGuarded(HANDLE heap, size_t size, DWORD* pExceptionCode) {
    void* result = nullptr;
    g_lastCode = 0;
    __try {
        result = HeapAlloc(heap, HEAP_NO_SERIALIZE | HEAP_GENERATE_EXCEPTIONS, CeiledHeapRequest(size));
    } __except (QmPrivateHeapFilter(GetExceptionInformation())) {
        result = nullptr;
    }
    if (pExceptionCode) *pExceptionCode = g_lastCode;
    return result;
}
#else
// Kept out of line and alone in its frame: the exception frame's labels may appear only once.
__attribute__((noinline, noclone)) void* HeapAllocGuarded(HANDLE heap, size_t size, DWORD* pExceptionCode) {
    void* volatile result = nullptr;
    g_lastCode = 0;
    SIZE_T asked = CeiledHeapRequest(size);
    __try1(QmPrivateHeapFilter)
    result = HeapAlloc(heap, HEAP_NO_SERIALIZE | HEAP_GENERATE_EXCEPTIONS, asked);
    __except1
    if (pExceptionCode) *pExceptionCode = g_lastCode;
    return result;
}
#endif

void* HeapReAllocBlock(HANDLE heap, void* block, size_t size) {
    return HeapReAlloc(heap, HEAP_NO_SERIALIZE, block, CeiledHeapRequest(size));
}

bool HeapFreeBlock(HANDLE heap, void* block) { return HeapFree(heap, HEAP_NO_SERIALIZE, block) != FALSE; }

size_t HeapBlockSize(HANDLE heap, const void* block) { return HeapSize(heap, HEAP_NO_SERIALIZE, block); }

bool HeapValidateBlock(HANDLE heap, const void* block) {
    return block && HeapValidate(heap, HEAP_NO_SERIALIZE, block) != FALSE;
}

}  // namespace qm::platform
