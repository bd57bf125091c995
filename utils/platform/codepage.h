// Character set conversions between the 8-bit code pages the library speaks (the Western ANSI
// code page 1252, the OEM code page 437 and ISO 8859-1) and UTF-16 / UTF-8, without the
// operating system: the same tables on every target, so that text exchanged with other
// programs (the desktop clipboard, compound-file names, notifications) converts identically.
//
// Each byte of 1252 maps to one UTF-16 unit; the five bytes 1252 leaves undefined (0x81,
// 0x8D, 0x8F, 0x90, 0x9D) map to the control characters of the same value, as Windows does.
// A character a code page cannot hold becomes '?' (and *lossy is set). Invalid UTF-8
// sequences and unpaired surrogates become U+FFFD, one per offending byte or unit.
#pragma once

#include <cstddef>
#include <string>

#include "utils/framework/wintypes.h"

namespace qm::platform {

constexpr UINT kCodePageAnsi = 1252;
constexpr UINT kCodePageOem = 437;
constexpr UINT kCodePageLatin1 = 28591;

// True for the code pages above; any other code page is taken as 1252.
bool CodePageKnown(UINT cp);

std::u16string AnsiToUtf16(const char* text, std::size_t length, UINT cp = kCodePageAnsi);
std::string Utf16ToAnsi(const char16_t* text, std::size_t length, UINT cp = kCodePageAnsi, bool* lossy = nullptr);
std::string Utf16ToUtf8(const char16_t* text, std::size_t length);
std::u16string Utf8ToUtf16(const char* text, std::size_t length);

// Shortcuts through UTF-16.
std::string AnsiToUtf8(const char* text, std::size_t length, UINT cp = kCodePageAnsi);
std::string Utf8ToAnsi(const char* text, std::size_t length, UINT cp = kCodePageAnsi, bool* lossy = nullptr);
// One code page to another (1252 <-> 437 for the clipboard's OEM text).
std::string AnsiToAnsi(const char* text, std::size_t length, UINT fromCp, UINT toCp, bool* lossy = nullptr);

}  // namespace qm::platform
