// Postal address blocks and the e-mail header field names of the utils module.
#include <cstring>

#include "utils/common/CVLogger.h"
#include "utils/common/DefaultStrings.h"
#include "utils/common/utils_mail.h"
#include "utils/common/utils_text.h"
#include "utils/framework/mbchar.h"

#define QM_SOURCE_MODULE "Common\\utils"

namespace {

typedef unsigned char uchar;

bool IsLineBreak(char c) { return c == '\r' || c == '\x17'; }

}  // namespace

int ExtractAddress(CString& text, CString& out) {
    out = "";
    const int n = text.GetLength();
    int i = 0;
    while (i < n) {
        if ((uchar)text[i] <= 32) {
            ++i;
            continue;
        }
        // Collect the block's lines: it ends at the text's end, or at a line break whose next
        // line is empty (starts with CR), starts with "." or is the end of the text.
        const int start = i;
        int lines = 0;
        int pos = start;
        int end;
        for (;;) {
            while (pos < n && !IsLineBreak(text[pos])) ++pos;
            ++lines;
            if (pos >= n) {
                end = n;
                break;
            }
            int nextLine = pos + 1;
            if (nextLine >= n || text[nextLine] == '\r' || text[nextLine] == '.') {
                end = pos;
                break;
            }
            pos = nextLine;
        }
        const int blockLen = end - start;
        const int average = (blockLen - lines) / lines;
        const char last = end > start ? text[end - 1] : 0;
        if (lines >= 3 && lines <= 6 && average >= 7 && average <= 255 &&
            (mbc::IsDigit((uchar)last) || last == '\'')) {
            // The caller's text is changed: a closing apostrophe becomes a space. Kept on purpose.
            if (last == '\'') text.SetAt(end - 1, ' ');
            int lineStart = start;
            bool firstLine = true;
            while (lineStart <= end) {
                int lineEnd = lineStart;
                while (lineEnd < end && !IsLineBreak(text[lineEnd])) ++lineEnd;
                if (firstLine || (lineEnd > lineStart && mbc::IsAlnum((uchar)text[lineStart]))) {
                    out += text.Mid(lineStart, lineEnd - lineStart);
                    out += '\r';
                }
                firstLine = false;
                lineStart = lineEnd + 1;
            }
            return 1;
        }
        // Pass the block over and go on after it.
        i = end > start ? end : start + 1;
    }
    return 0;
}

// The e-mail header field names belong to the framework-side module of the library.
#undef QM_SOURCE_MODULE
#define QM_SOURCE_MODULE "Common\\mfcutils"

namespace {

struct FieldName {
    UINT resourceId;
    bool visibleByDefault;
};

const FieldName kFieldNames[EMF_Last] = {
    {614, true}, {611, true}, {616, true}, {608, false}, {607, false},
    {612, false}, {615, true}, {613, true}, {684, false}, {685, false},
};

CString g_fieldNames[EMF_Last];
bool g_fieldNamesLoaded = false;

}  // namespace

const char* GetEMailFieldName(EMailFieldNameType t) {
    // Loaded once for the process on the first call; the user-interface thread is the only
    // caller, so the flag needs no lock.
    if (!g_fieldNamesLoaded) {
        qm::EnsureDefaultStrings();  // English names where the host has none
        for (int i = 0; i < EMF_Last; ++i) g_fieldNames[i].LoadString(kFieldNames[i].resourceId);
        g_fieldNamesLoaded = true;
    }
    int idx = (int)t;
    // An index outside the table is reported; instead of reading outside the table the call
    // then answers with an empty name.
    if (!CVASSERT(idx >= 0 && idx < EMF_Last)) return "";
    return g_fieldNames[idx];
}

bool IsEMailFieldNameVisibleByDefault(EMailFieldNameType t) {
    int idx = (int)t;
    // Out of range: reported, then answered "not visible" rather than read outside the table.
    if (!CVASSERT(idx >= 0 && idx < EMF_Last)) return false;
    return kFieldNames[idx].visibleByDefault;
}
