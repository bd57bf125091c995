// Field markers: merging values into "@1"-style and "{name ... }"-style markers of a template.
#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_text.h"
#include "utils/framework/mbchar.h"

#define QM_SOURCE_MODULE "Common\\utils"

namespace {

inline unsigned char Up(char c) { return mbc::ToUpper((unsigned char)c); }

struct ValueShape {
    bool blank;             // only white space, line marks and command runs
    long long visibleLength;  // bytes outside command runs, less a final line mark
};

// A run left open at the end of the value is taken to reach the end: it is markup either way.
ValueShape Shape(const std::string& v) {
    ValueShape shape{true, 0};
    bool inRun = false;
    for (char c : v) {
        if (inRun) {
            if (c == QM_CMD_CLOSE) inRun = false;
            continue;
        }
        if (c == QM_CMD_OPEN) {
            inRun = true;
            continue;
        }
        ++shape.visibleLength;
        if (c != QM_LINE_MARK && !_ismbcspace((unsigned char)c)) shape.blank = false;
    }
    // A final line mark is not shown; one inside an unclosed run was never counted.
    if (!v.empty() && v.back() == QM_LINE_MARK && !inRun) --shape.visibleLength;
    return shape;
}

inline bool MarkerAt(const std::string& text, size_t at, const std::string& marker) {
    if (text.size() - at < marker.size()) return false;
    for (size_t k = 0; k < marker.size(); ++k)
        if (Up(text[at + k]) != Up(marker[k])) return false;
    return true;
}

}  // namespace

// The result is collected in a buffer of its own that grows as needed, so the fixed-growth
// capacity check of an in-place rewrite has nothing to guard here.
//
// A blank value removes the field: the marker goes together with a "{" just before it, and
// with what the field form would consume after it (the reserved spaces and the "}" of an
// open-brace field, or a "}" directly after any other marker). An open-brace marker that no
// "}" follows is not a field and stays, blank value or not. Callers use this to drop the
// placeholders of empty values from a template.
void MergeFieldIntoText(CString& text, const CString& marker, const CString& value) {
    if (!CVASSERT(!marker.IsEmpty())) return;
    const std::string& m = marker.str();
    const std::string& v = value.str();
    const std::string& src = text.str();
    const bool openBrace = m[0] == '{' && m.size() > 1 && m.back() != '}';
    const ValueShape shape = Shape(v);
    // The value as written: without a final line mark.
    const size_t writeLength = (!v.empty() && v.back() == QM_LINE_MARK) ? v.size() - 1 : v.size();

    std::string out;
    out.reserve(src.size());
    size_t i = 0;
    bool changed = false;
    while (i < src.size()) {
        // Quick skip to the next byte that can start the marker.
        if (Up(src[i]) != Up(m[0])) {
            out += src[i++];
            continue;
        }
        if (!MarkerAt(src, i, m)) {
            out += src[i++];
            continue;
        }
        size_t after = i + m.size();
        size_t reserved = 0;
        if (openBrace) {
            size_t k = after;
            while (k < src.size() && src[k] == ' ') ++k;
            if (k >= src.size() || src[k] != '}') {
                out += src[i++];  // not a field: undo the match and go on one byte later
                continue;
            }
            reserved = k - after;
            after = k + 1;
        } else if (after < src.size() && src[after] == '}') {
            ++after;
        }
        if (!out.empty() && out.back() == '{') out.pop_back();
        if (!shape.blank) {
            out.append(v, 0, writeLength);
            if ((long long)reserved > shape.visibleLength) out.append((size_t)((long long)reserved - shape.visibleLength), ' ');
        }
        i = after;
        changed = true;
    }
    if (changed) text = CString(out);
}

void ReplaceFields(const char* name, const char* text, CString& out) {
    if (!text || !*text || out.IsEmpty()) return;
    const char* found = InStringSkipCommands(name, text);
    if (!found) return;
    const char* lf = std::strchr(found, '\n');
    if (!lf) return;
    const char* start = lf + 1;
    const char* limit = InStringSkipCommands(name, start);

    char marker[] = "@0";
    for (char n = '1'; n <= '9'; ++n) {
        const char* end = std::strchr(start, '\n');
        if (!end) end = std::strchr(start, QM_LINE_MARK);
        if (!end || (limit && end >= limit)) break;
        marker[1] = n;
        MergeFieldIntoText(out, marker, CString(start, (int)(end - start)));
        start = end + 1;
    }
}
