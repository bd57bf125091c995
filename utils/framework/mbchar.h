// Byte classification of the runtime's multibyte character functions, for 8-bit ANSI text.
//
// A module gets the runtime's "C" locale unless its host changes it, and there only ASCII
// bytes are letters, digits or spaces; bytes of 128 and above are neither, on every target,
// so that the same text scans the same way on Windows and POSIX.
#pragma once

namespace mbc {

inline bool IsSpace(unsigned c) { return c == ' ' || (c >= 9 && c <= 13); }
inline bool IsDigit(unsigned c) { return c >= '0' && c <= '9'; }
inline bool IsXDigit(unsigned c) { return IsDigit(c) || ((c | 0x20) >= 'a' && (c | 0x20) <= 'f'); }
inline bool IsUpper(unsigned c) { return c >= 'A' && c <= 'Z'; }
inline bool IsLower(unsigned c) { return c >= 'a' && c <= 'z'; }
inline bool IsAlpha(unsigned c) { return IsUpper(c) || IsLower(c); }
inline bool IsAlnum(unsigned c) { return IsAlpha(c) || IsDigit(c); }
inline unsigned char ToUpper(unsigned c) { return (unsigned char)(IsLower(c) ? c - 32 : c); }
inline unsigned char ToLower(unsigned c) { return (unsigned char)(IsUpper(c) ? c + 32 : c); }

}  // namespace mbc

// The runtime's names, for code that follows the runtime's spelling.
inline int _ismbcspace(unsigned int c) { return mbc::IsSpace(c); }
inline int _ismbcdigit(unsigned int c) { return mbc::IsDigit(c); }
inline int _ismbcalnum(unsigned int c) { return mbc::IsAlnum(c); }
inline int _ismbcalpha(unsigned int c) { return mbc::IsAlpha(c); }
