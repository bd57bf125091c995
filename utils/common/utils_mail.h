// E-mail and URL recognition: finding links and e-mail addresses in free note text,
// splitting and formatting address lists, finding a postal address block, converting between
// file paths and file URLs, and the names of the e-mail header fields the host shows.
//
// Every test is byte-wise on 8-bit text; bytes of 128 and above are ordinary characters.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <vector>

#include "utils/framework/CString.h"
#include "utils/framework/export.h"

// An ordered set of unique strings (sorted byte-wise); the container that CollectEMails
// fills. Everything is inline so the set crosses the module boundary as plain code.
class CStringSet {
public:
    typedef std::set<CString>::const_iterator const_iterator;

    // Adds s; returns true when it was not in the set yet.
    bool Add(const CString& s) { return m_items.insert(s).second; }
    bool Contains(const CString& s) const { return m_items.count(s) != 0; }
    // Removes s; returns true when it was there.
    bool Remove(const CString& s) { return m_items.erase(s) != 0; }
    int GetCount() const { return (int)m_items.size(); }
    bool IsEmpty() const { return m_items.empty(); }
    void RemoveAll() { m_items.clear(); }

    const_iterator begin() const { return m_items.begin(); }
    const_iterator end() const { return m_items.end(); }

private:
    std::set<CString> m_items;
};

// The e-mail header fields the host names; each name is a host string resource.
enum EMailFieldNameType {
    EMF_From = 0,         // resource 614, shown by default
    EMF_To = 1,           // 611, shown
    EMF_Cc = 2,           // 616, shown
    EMF_Bcc = 3,          // 608, hidden
    EMF_ReplyTo = 4,      // 607, hidden
    EMF_Sender = 5,       // 612, hidden
    EMF_Date = 6,         // 615, shown
    EMF_Subject = 7,      // 613, shown
    EMF_Attachments = 8,  // 684, hidden
    EMF_Priority = 9,     // 685, hidden
    EMF_Last = 10
};

// Is there a link at exactly s? On success len is its length in bytes. isMail is written by
// the e-mail step only (true when an address was found there, false when that step failed);
// a match of a scheme prefix returns without touching it.
MFCQMUTILS_API bool IsValidURL(const char* s, int& len, bool& isMail);
// Whether a link leaves the application; the host decides, so the library always says no.
MFCQMUTILS_API bool IsExternalLink(const char* s);
// Quick plausibility test of a whole text as one e-mail address.
MFCQMUTILS_API bool IsLooksLikeEmailAddress(const char* ptr_address);
// Adds every e-mail address found in text to found; always returns 0.
MFCQMUTILS_API int CollectEMails(CString text, CStringSet& found);
// The same; when steps is not null it receives the number of bytes the scans walked, which
// stays within a small multiple of the text's length whatever the text.
MFCQMUTILS_API int CollectEMails(CString text, CStringSet& found, size_t* steps);

// A link or e-mail address found in a text: where it starts, its length in bytes, and
// whether IsValidURL's e-mail step found it.
struct CLinkMatch {
    size_t offset;
    int length;
    bool isMail;
};
// Every link and e-mail address of text[0..length) that IsValidURL finds at the first byte of
// a word (a byte not preceded by a letter, a digit, "_", ".", "-", "@", ":", "/", "\\", "%"
// or a byte of 128 and above), left to right, the search going on after each one found.
// text[length] must be a NUL; embedded NULs end the scans that reach them. The walks are
// shared between the starts, so the search is linear in length where calling IsValidURL at
// every word can be quadratic. Returns the number of bytes walked (a small multiple of
// length) for callers that budget work.
MFCQMUTILS_API size_t FindLinks(const char* text, size_t length, std::vector<CLinkMatch>& found);

// Takes the first item of an address list: returns its address, fills name with its display
// name and sets *next (when next is not null) to the rest of the list, or to null at its end.
MFCQMUTILS_API CString GetAddress(const char* text, CString& name, const char** next, bool removeComments);
// Clears out, then adds every (address, name) pair of a ","- or ";"-separated list; an
// address seen twice keeps the name it was first found with.
MFCQMUTILS_API void ExtractEMailAddresses(const CString& list, std::map<CString, CString>& out);
// Clears out, then appends the bare address of every ";"-separated item of 5 bytes or more.
MFCQMUTILS_API void ExtractEMailAddresses(const CString& list, std::vector<CString>& out);
// The bare address of one item such as "John Smith <js@host>".
MFCQMUTILS_API CString GetMailAddress(const CString& item);
// Formats one list item: "\"Jane Doe\" <jd@host>" or "jd@host"; false when address is empty.
MFCQMUTILS_API bool CreateEMailReference(const char* address, const char* name, CString& out);

// Finds a postal address block of 3 to 6 lines ending in a postal code; returns 1 and the
// block's lines in out when found, else 0. A final apostrophe of the block is replaced by a
// space in text itself.
MFCQMUTILS_API int ExtractAddress(CString& text, CString& out);

// File path to "file:" URL, canonical and percent-encoded; "" on failure.
MFCQMUTILS_API CString Path2Url(CString path);
// "file:" URL to file path, percent escapes decoded; "" on failure.
MFCQMUTILS_API CString Url2Path(CString url);
// The URL in the canonical form a browser uses.
MFCQMUTILS_API CString UlrCanonize(CString url);
// Decodes "%hh" escapes (see the implementation for malformed ones).
MFCQMUTILS_API CString UrlDecode(CString s);

// The display name of an e-mail header field (a host string resource, loaded once).
MFCQMUTILS_API const char* GetEMailFieldName(EMailFieldNameType t);
// Whether the host shows the field without being asked to.
MFCQMUTILS_API bool IsEMailFieldNameVisibleByDefault(EMailFieldNameType t);
