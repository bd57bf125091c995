// Text scanning and replacement for the application's 8-bit note text (module "Common\utils").
//
// Note text carries inline command runs: a byte 0x01 opens a run and a byte 0x02 closes it; the
// run is markup, not text. Line ends are CR, CR LF or the in-text line mark 0x17.
//
// Functions taking `const char*` stop at the first NUL; functions taking a CString work on its
// counted bytes (embedded NULs included) unless they say otherwise.
#pragma once

#include "utils/framework/CString.h"
#include "utils/framework/export.h"

// In-text markers.
constexpr char QM_CMD_OPEN = '\x01';   // opens an inline command run
constexpr char QM_CMD_CLOSE = '\x02';  // closes it
constexpr char QM_LINE_MARK = '\x17';  // the application's in-text line mark

// First occurrence of `pattern` in `text`, ignoring case (both bytes upper-cased); null when
// either is null or `text` is empty; an empty `pattern` matches at the start of `text`.
MFCQMUTILS_API char* InString(const char* pattern, const char* text);

// The same search, but every command run in `text` is passed over, both before a candidate
// start and inside a match (a match may span a run). An unclosed run asserts and gives null.
MFCQMUTILS_API char* InStringSkipCommands(const char* pattern, const char* text);

// Skips space, CR, LF and TAB, then takes the bytes up to the next of them (or the end) into
// `token` and leaves `*p` just after it. Non-zero when the token is not empty.
MFCQMUTILS_API int GetToken(const char** p, CString& token);

// `out` = the bytes from `p` up to the first `c` or the end; `p` is left on the `c`.
MFCQMUTILS_API CString& GetStrUpTo(const char*& p, char c, CString& out);

// Copies the n-th (from 1) whitespace-separated token of `src` into `token` (empty when there
// are fewer); `n` 0 or below leaves `token` as it is. Non-zero when `token` is not empty.
MFCQMUTILS_API int nth_token_cpy(CString& token, CString& src, int n);

// Index of the first CR or 0x17 line mark after position `i`, or the length when none.
MFCQMUTILS_API int next_eol(const CString& s, int i);

// Removes leading and trailing spaces (byte 32 only; TAB is kept).
MFCQMUTILS_API CString& TrimEdges(CString& s);

// Removes the parenthesised comments of an address text (quotes protect parentheses) and
// trims the result.
MFCQMUTILS_API CString RemoveComments(const char* s);

// Drops every LF and collapses each run of CRs to one CR.
MFCQMUTILS_API void RemoveEmptyLines(CString& s);

// Every CR and every LF becomes CR LF (so an existing CR LF becomes two line ends).
MFCQMUTILS_API void ReplaceEOLAndNL(CString& s);

// Appends a CR when the text does not end in one (also to an empty text).
MFCQMUTILS_API void InsureEolAtEnd(CString& s);

// Number of non-space bytes followed by a space byte or the end.
MFCQMUTILS_API int WordCount(const char* s);

// Prepends max(0, (width - length * charWidth) / 2) spaces.
MFCQMUTILS_API void CenterText(CString& s, int width, int charWidth);

// Index of the character after the first single '&' ("&&" is an escaped ampersand); -1 when
// there is none.
MFCQMUTILS_API int GetAcceleratorPos(const CString& s);

// Makes a text usable as a mutex name: backslashes become '|', everything else lower case.
MFCQMUTILS_API void ValidMutexName(CString& s);

// Longest text ReplaceString lets a replacement produce.
constexpr long long QM_MAX_STRING_LENGTH = 0x7FFFFFFD;

// Replaces every occurrence of `find` in `s`. Returns the number of replacements; 0 when `s`
// is empty or nothing was found; -1 when `find` is empty or the result would be longer than
// QM_MAX_STRING_LENGTH and `truncate` is zero (with `truncate` only the occurrences that fit
// are replaced). A replacement longer than `find` always matches regardless of case.
MFCQMUTILS_API int ReplaceString(CString& s, CString find, CString replacement, int truncate, int caseSensitive);

// Sorts `count` records of `size` bytes in place by a list merge; with `flag` 0 the array ends
// in descending order of `compare`, with `flag` non-zero in ascending order (ties keep their
// original order in both senses for a consistent comparator).
MFCQMUTILS_API void ListMergeSort(void* base, unsigned int count, unsigned int size,
                                  int (*compare)(const void*, const void*), int flag);

// Cursor scanners: each leaves the cursor on the first byte it did not take and never moves
// past the terminating NUL. A null cursor is left alone.
MFCQMUTILS_API void SkipSpaces(const char*& p);     // multibyte space test
MFCQMUTILS_API void SkipInvisible(const char*& p);  // space, CR, LF, TAB
MFCQMUTILS_API void SkipVisible(const char*& p);    // up to the next space, CR, LF or TAB
MFCQMUTILS_API void SkipToDigit(const char*& p);    // up to the next digit
MFCQMUTILS_API void SkipToEOL(const char*& p);      // up to the next LF, CR or 0x17

// Replaces the field `marker` ("@1", "{name", "{name}") in `text` by `value`; see the .cpp for
// the brace and padding rules. A blank value removes the marker with its braces and padding.
MFCQMUTILS_API void MergeFieldIntoText(CString& text, const CString& marker, const CString& value);

// Fills the markers "@1".."@9" of `out` from the lines that follow the line holding `name`
// in `text`.
MFCQMUTILS_API void ReplaceFields(const char* name, const char* text, CString& out);

namespace qm::text {
// ReplaceString with its length limit as a parameter (QM_MAX_STRING_LENGTH in ReplaceString),
// so the guard can be exercised without gigabyte strings.
MFCQMUTILS_API int ReplaceStringLimited(CString& s, const CString& find, const CString& replacement, int truncate,
                                        int caseSensitive, long long maxLength);
}  // namespace qm::text
