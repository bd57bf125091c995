// Window and UI helpers of the mfcutils module: to-do level names and their menu, and the
// compact serialization of points, sizes and rectangles.
#pragma once

#include "utils/framework/CArchive.h"
#include "utils/framework/CMenu.h"
#include "utils/framework/geometry.h"
#include "utils/framework/wintypes.h"
#include "utils/framework/export.h"

// ---------------------------------------------------------------------------------------
// To-do levels

enum TodoLevel : int {
    TL_None = 0,
    TL_Low = 1,
    TL_Normal = 2,
    TL_High = 3,
    TL_MAX = 3,
};

// The level's display name: host string resources 659 to 662 (level 0 to 3), loaded on the
// first call and kept for the process. A level outside 0 to TL_MAX reports
// "tl >= 0 && tl <= TL_MAX" and gives the empty string.
MFCQMUTILS_API const char* GetTodoLevelName(TodoLevel tl);

// Replaces the item with command placeholderId (found anywhere in the menu's tree) by the
// four level items, with commands firstCommandId + level, and a separator after them.
MFCQMUTILS_API void CreateTodoLevelSubMenu(CMenu& menu, UINT placeholderId, UINT firstCommandId);

// ---------------------------------------------------------------------------------------
// Compact serialization
//
// Each function stores its fields when the archive is storing and loads them when it is
// loading. The record is one tag byte, two bits per field (field 1 in bits 0-1, field 2 in
// bits 2-3, ...), then each field's value little-endian in the width its code gives:
//   code 0: the value 0, no bytes     code 1: -128..127, 1 byte
//   code 2: -32768..32767, 2 bytes    code 3: any other value, 4 bytes
// Loading a truncated record throws CArchiveException (endOfFile) with the fields read so far
// already set; loading from a storing archive throws it too (writeOnly).

MFCQMUTILS_API void SmartSerializePoint(CArchive& ar, CPoint& pt);
// Fields first, second. long is 32 bits on Windows; where it is wider, the low 32 bits are
// stored and a loaded value is sign-extended from 32 bits.
MFCQMUTILS_API void SmartSerializeSize(CArchive& ar, long& first, long& second);
// The same record as the long form, run through two long copies: on a failed load neither
// int is changed.
MFCQMUTILS_API void SmartSerializeSize(CArchive& ar, int& first, int& second);
// Fields left, top, right, bottom.
MFCQMUTILS_API void SmartSerializeRect(CArchive& ar, CRect& rc);
#include "utils/common/mfcutils_textfit.h"
#include "utils/common/mfcutils_wait.h"
#include "utils/common/mfcutils_diag.h"
#include "utils/common/mfcutils_settings.h"
