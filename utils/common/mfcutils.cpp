#include "utils/common/mfcutils.h"

#include <cstdint>
#include <mutex>

#include "utils/common/CVLogger.h"
#include "utils/common/DefaultStrings.h"
#include "utils/framework/CString.h"

#define QM_SOURCE_MODULE "Common\\mfcutils"

// ---------------------------------------------------------------------------------------
// To-do levels

namespace {

const UINT kTodoLevelNameIds[TL_MAX + 1] = {qm::IDS_TODO_LEVEL_NONE, qm::IDS_TODO_LEVEL_LOW,
                                            qm::IDS_TODO_LEVEL_NORMAL, qm::IDS_TODO_LEVEL_HIGH};

CString g_todoLevelNames[TL_MAX + 1];
std::once_flag g_todoLevelNamesLoaded;

}  // namespace

const char* GetTodoLevelName(TodoLevel tl) {
    // A level out of range is reported and answered with the empty string instead of being
    // used as an index.
    if (!CVASSERT(tl >= 0 && tl <= TL_MAX)) return "";
    std::call_once(g_todoLevelNamesLoaded, [] {
        qm::EnsureDefaultStrings();
        for (int i = 0; i <= TL_MAX; ++i)
            if (!g_todoLevelNames[i].LoadString(kTodoLevelNameIds[i])) g_todoLevelNames[i].Empty();
    });
    return g_todoLevelNames[tl];
}

void CreateTodoLevelSubMenu(CMenu& menu, UINT placeholderId, UINT firstCommandId) {
    for (int tl = 0; tl <= TL_MAX; ++tl)
        menu.InsertMenu(placeholderId, MF_BYCOMMAND | MF_STRING, firstCommandId + (UINT)tl,
                        GetTodoLevelName((TodoLevel)tl));
    menu.InsertMenu(placeholderId, MF_BYCOMMAND | MF_SEPARATOR);
    menu.DeleteMenu(placeholderId, MF_BYCOMMAND);
}

// ---------------------------------------------------------------------------------------
// Compact serialization

namespace {

int CodeFor(std::int32_t v) {
    if (v == 0) return 0;
    if (v >= -128 && v <= 127) return 1;
    if (v >= -32768 && v <= 32767) return 2;
    return 3;
}

const UINT kCodeWidth[4] = {0, 1, 2, 4};

// Writes the tag and the values as one block.
void StoreRecord(CArchive& ar, const std::int32_t* fields, int count) {
    BYTE block[1 + 4 * 4];
    UINT n = 1;
    BYTE tag = 0;
    for (int i = 0; i < count; ++i) {
        int code = CodeFor(fields[i]);
        tag = (BYTE)(tag | code << (2 * i));
        std::uint32_t bits = (std::uint32_t)fields[i];
        for (UINT b = 0; b < kCodeWidth[code]; ++b) block[n++] = (BYTE)(bits >> (8 * b));
    }
    block[0] = tag;
    ar.Write(block, n);
}

// Reads the record field by field, handing each value to set(index, value) as soon as it is
// read, so a record cut short leaves the earlier fields set. Tag bits beyond the record's
// fields are ignored.
template <typename Set>
void LoadRecord(CArchive& ar, int count, Set set) {
    BYTE tag;
    ar >> tag;
    for (int i = 0; i < count; ++i) {
        switch ((tag >> (2 * i)) & 3) {
        case 0:
            set(i, 0);
            break;
        case 1: {
            BYTE v;
            ar >> v;
            set(i, (std::int8_t)v);
            break;
        }
        case 2: {
            WORD v;
            ar >> v;
            set(i, (std::int16_t)v);
            break;
        }
        default: {
            unsigned int v;
            ar >> v;
            set(i, (std::int32_t)(std::uint32_t)v);
            break;
        }
        }
    }
}

// The low 32 bits of a long, as a signed 32-bit value (the whole value where long is 32 bits).
std::int32_t Low32(long v) { return (std::int32_t)(std::uint32_t)((unsigned long)v & 0xFFFFFFFFul); }

}  // namespace

void SmartSerializePoint(CArchive& ar, CPoint& pt) {
    if (ar.IsStoring()) {
        const std::int32_t fields[2] = {pt.x, pt.y};
        StoreRecord(ar, fields, 2);
    } else {
        LoadRecord(ar, 2, [&](int i, std::int32_t v) { (i == 0 ? pt.x : pt.y) = v; });
    }
}

void SmartSerializeSize(CArchive& ar, long& first, long& second) {
    if (ar.IsStoring()) {
        const std::int32_t fields[2] = {Low32(first), Low32(second)};
        StoreRecord(ar, fields, 2);
    } else {
        LoadRecord(ar, 2, [&](int i, std::int32_t v) { (i == 0 ? first : second) = v; });
    }
}

void SmartSerializeSize(CArchive& ar, int& first, int& second) {
    long a = first, b = second;
    SmartSerializeSize(ar, a, b);
    first = (int)a;
    second = (int)b;
}

void SmartSerializeRect(CArchive& ar, CRect& rc) {
    LONG* fields[4] = {&rc.left, &rc.top, &rc.right, &rc.bottom};
    if (ar.IsStoring()) {
        const std::int32_t values[4] = {rc.left, rc.top, rc.right, rc.bottom};
        StoreRecord(ar, values, 4);
    } else {
        LoadRecord(ar, 4, [&](int i, std::int32_t v) { *fields[i] = v; });
    }
}
