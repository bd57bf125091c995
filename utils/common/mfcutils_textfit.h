// Text fitting and word wrap of the mfcutils module: how many characters of a text fit into
// a pixel width on a device context, breaking a text into lines that fit, and a few small
// text helpers.
#pragma once

#include "utils/framework/CDC.h"
#include "utils/framework/CString.h"
#include "utils/framework/winclipboard.h"
#include "utils/framework/export.h"

// Where the fitted part of a text may end.
enum TSpacesConsideration {
    IgnoreSpaces = 0,    // at any character
    BetterOnSpaces = 1,  // at a word end when one fits, else at any character
    OnSpaces = 2,        // only at a word end; when none fits, nothing fits
};

// The number of leading characters of pText (nLen characters, -1: up to the NUL) whose
// extent on pDC is at most nWidth pixels; *pExtent (when given) receives that extent. A word
// end is a non-space followed by a space, or the last character. pTabStop, when given, is
// the distance between tab stops in pixels. nAvgCharWidth below 1 takes the font's average
// character width. The search measures few prefixes: each new measure reuses the extent of
// the longest prefix known to fit and measures only the new characters and the seam.
MFCQMUTILS_API int MapWidthToCharPos(CDC* pDC, LONG nWidth, const char* pText, int nLen = -1, int* pTabStop = nullptr,
                                     LONG* pExtent = nullptr, TSpacesConsideration spaces = IgnoreSpaces,
                                     LONG nAvgCharWidth = -1);

// Rewraps S in place so that every line fits nWidth pixels: LFs are dropped, lines are
// separated by single CRs, a line is broken after the last space that fits (or, in a word
// longer than the line, where it stops fitting). Returns the number of lines (0 for "").
MFCQMUTILS_API int WordWrapString(CString& S, int nWidth, CDC* pDC, int* pTabStop = nullptr);

// nSize bytes of a global memory block as a string, up to the first NUL among them; "" for a
// null handle or a size below 1. Never reads past the end of the block.
MFCQMUTILS_API CString GetTextFromHandle(HGLOBAL h, LONG nSize);

// Inserts nTabs TABs at the start of s and after every line end (CR LF, or a lone CR or LF).
MFCQMUTILS_API void AddTabsAtTheBeginningOfLines(CString& s, int nTabs);

// s with every TAB replaced by one space ("" for null).
MFCQMUTILS_API CString ReplaceTabsWithSpaces(const char* s);

// The bytes a string takes when stored: its length plus four for the stored length.
MFCQMUTILS_API unsigned int GetStringDiskSizeEstimate(const CString& str);

namespace qm {
// How many extent and character-width queries MapWidthToCharPos has made on this thread:
// the measure of its cost that tests and benchmarks compare.
MFCQMUTILS_API unsigned long TextFitMeasureCount();
}  // namespace qm
