#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/OleUtils.h"
#include "utils/platform/clipboard_formats.h"
#include "utils/platform/codepage.h"
#include "utils/platform/globalmem.h"

#define QM_SOURCE_MODULE "Common\\OleUtils"

namespace {

constexpr std::size_t kFixed = sizeof(OBJECTDESCRIPTOR);  // 52

// The string at offset in the block, up to its terminator; false when there is none inside
// the first `size` bytes.
bool StringAt(const BYTE* block, std::size_t size, DWORD offset, std::u16string& out) {
    out.clear();
    if (offset == 0) return true;
    if (offset < kFixed || offset >= size) return false;
    for (std::size_t at = offset; at + 2 <= size; at += 2) {
        char16_t unit;
        std::memcpy(&unit, block + at, 2);
        if (unit == 0) return true;
        out.push_back(unit);
    }
    return false;
}

}  // namespace

HGLOBAL OleCreateObjectDescriptor(REFCLSID clsid, DWORD dwDrawAspect, SIZEL sizel, POINTL pointl, DWORD dwStatus,
                                  LPCTSTR lpszFullUserTypeName, LPCTSTR lpszSrcOfCopy) {
    std::u16string type, source;
    if (lpszFullUserTypeName) type = qm::platform::AnsiToUtf16(lpszFullUserTypeName, std::strlen(lpszFullUserTypeName));
    if (lpszSrcOfCopy) source = qm::platform::AnsiToUtf16(lpszSrcOfCopy, std::strlen(lpszSrcOfCopy));
    // Without a source of copy the type name stands for it.
    if (source.empty()) source = type;
    const bool hasType = lpszFullUserTypeName != nullptr && *lpszFullUserTypeName;
    const bool hasSource = !source.empty();
    std::size_t typeBytes = hasType ? (type.size() + 1) * 2 : 0;
    std::size_t sourceBytes = hasSource ? (source.size() + 1) * 2 : 0;
    std::size_t total = kFixed + typeBytes + sourceBytes;
    if (total > 0xFFFFFFFFu) {
        CVASSERT_TEXT("cbSize <= ULONG_MAX");
        return nullptr;
    }
    HGLOBAL h = qm::platform::GlobalMemAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, total);
    if (!h) return nullptr;
    auto* p = (BYTE*)qm::platform::GlobalMemLock(h);
    if (!p) {
        qm::platform::GlobalMemFree(h);
        return nullptr;
    }
    OBJECTDESCRIPTOR od{};
    od.cbSize = (ULONG)total;
    od.clsid = clsid;
    od.dwDrawAspect = dwDrawAspect;
    od.sizel = sizel;
    od.pointl = pointl;
    od.dwStatus = dwStatus;
    od.dwFullUserTypeName = hasType ? (DWORD)kFixed : 0;
    od.dwSrcOfCopy = hasSource ? (DWORD)(kFixed + typeBytes) : 0;
    std::memcpy(p, &od, kFixed);
    // The block was zeroed: the terminators are already there.
    if (hasType) std::memcpy(p + od.dwFullUserTypeName, type.data(), type.size() * 2);
    if (hasSource) std::memcpy(p + od.dwSrcOfCopy, source.data(), source.size() * 2);
    qm::platform::GlobalMemUnlock(h);
    return h;
}

BOOL OleParseObjectDescriptor(const void* pData, size_t nSize, OBJECTDESCRIPTOR& od, CString& strFullUserTypeName,
                              CString& strSrcOfCopy) {
    std::memset(&od, 0, sizeof od);
    strFullUserTypeName.Empty();
    strSrcOfCopy.Empty();
    if (!pData || nSize < kFixed) return FALSE;
    OBJECTDESCRIPTOR read;
    std::memcpy(&read, pData, kFixed);
    if (read.cbSize < kFixed || read.cbSize > nSize) return FALSE;
    std::u16string type, source;
    const BYTE* block = (const BYTE*)pData;
    if (!StringAt(block, read.cbSize, read.dwFullUserTypeName, type) ||
        !StringAt(block, read.cbSize, read.dwSrcOfCopy, source))
        return FALSE;
    od = read;
    strFullUserTypeName = qm::platform::Utf16ToAnsi(type.data(), type.size()).c_str();
    strSrcOfCopy = qm::platform::Utf16ToAnsi(source.data(), source.size()).c_str();
    return TRUE;
}

BOOL OleReadObjectDescriptor(HGLOBAL hObjDesc, OBJECTDESCRIPTOR& od, CString& strFullUserTypeName,
                             CString& strSrcOfCopy) {
    if (!CVASSERT(hObjDesc != nullptr)) {
        std::memset(&od, 0, sizeof od);
        strFullUserTypeName.Empty();
        strSrcOfCopy.Empty();
        return FALSE;
    }
    std::size_t size = qm::platform::GlobalMemSize(hObjDesc);
    const void* p = qm::platform::GlobalMemLock(hObjDesc);
    BOOL ok = OleParseObjectDescriptor(p, p ? size : 0, od, strFullUserTypeName, strSrcOfCopy);
    if (p) qm::platform::GlobalMemUnlock(hObjDesc);
    return ok;
}

CLIPFORMAT OleRegisterClipboardFormat(LPCTSTR lpszFormatName) {
    return (CLIPFORMAT)qm::platform::ClipboardRegisterFormat(lpszFormatName);
}

CLIPFORMAT OleObjectDescriptorFormat() { return OleRegisterClipboardFormat("Object Descriptor"); }
