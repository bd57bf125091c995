// Bulk replacement with the process-wide length guard.
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_text.h"
#include "utils/common/utils_text_scan.h"
#include "utils/framework/mbchar.h"
#include "utils/platform/pixelblock.h"

#define QM_SOURCE_MODULE "Common\\utils"

namespace {

inline unsigned char Up(char c) { return mbc::ToUpper((unsigned char)c); }

inline bool EqualNoCase(const char* a, const char* b, size_t n) {
    for (size_t k = 0; k < n; ++k)
        if (Up(a[k]) != Up(b[k])) return false;
    return true;
}

// Finds the occurrences of `f` in `text` left to right, ignoring case (the comparison of
// InString, over counted bytes so an embedded NUL is an ordinary byte).
class NoCaseFinder {
public:
    NoCaseFinder(std::string_view text, std::string_view f)
        : m_text(text), m_f(f), m_scan((unsigned char)f[0], f.size() > 1 ? (unsigned char)f[1] : 0, f.size() > 1) {}

    // First match at or after `from`; npos when none.
    size_t Next(size_t from) const {
        if (m_f.size() > m_text.size()) return std::string_view::npos;
        // Candidates start at most at `last`; with two pattern bytes b[last + 1] is in the text.
        const size_t last = m_text.size() - m_f.size();
        const char* b = m_text.data();
        for (size_t i = m_scan.Next(b, from, last + 1); i <= last; i = m_scan.Next(b, i + 1, last + 1))
            if (EqualNoCase(b + i, m_f.data(), m_f.size())) return i;
        return std::string_view::npos;
    }

    // Every match that does not overlap the one before it, left to right.
    template <class Found>
    void All(Found found) const {
        if (m_f.size() > m_text.size()) return;
        const size_t last = m_text.size() - m_f.size();
        const char* b = m_text.data();
        size_t allowed = 0;  // the first position after the last match
        m_scan.ForEach(b, 0, last + 1, [&](size_t i) {
            if (i >= allowed && EqualNoCase(b + i, m_f.data(), m_f.size())) {
                found(i);
                allowed = i + m_f.size();
            }
            return true;
        });
    }

private:
    std::string_view m_text, m_f;
    qm::text::detail::PairScanner m_scan;
};

// The replacement is not longer than `find`: the text is rewritten in place, left to right,
// resuming after each match, so replacements never overlap.
int ReplaceInPlace(CString& s, const CString& find, const CString& replacement, int caseSensitive) {
    const std::string_view text(s.str());
    const std::string_view f(find.str());
    const std::string_view r(replacement.str());
    const NoCaseFinder noCase(text, f);
    auto next = [&](size_t from) { return caseSensitive ? text.find(f, from) : noCase.Next(from); };
    size_t hit = next(0);
    if (hit == std::string_view::npos) return 0;

    const int len = s.GetLength();
    char* buf = s.GetBuffer(len);
    size_t src = 0, dst = 0;
    int count = 0;
    while (hit != std::string_view::npos) {
        // Reading the unchanged text ahead of the writer: dst never passes src.
        std::memmove(buf + dst, buf + src, hit - src);
        dst += hit - src;
        std::memcpy(buf + dst, r.data(), r.size());
        dst += r.size();
        src = hit + f.size();
        ++count;
        hit = next(src);
    }
    std::memmove(buf + dst, buf + src, (size_t)len - src);
    dst += (size_t)len - src;
    s.ReleaseBuffer((int)dst);
    return count;
}

}  // namespace

namespace qm::text {

int ReplaceStringLimited(CString& s, const CString& find, const CString& replacement, int truncate, int caseSensitive,
                         long long maxLength) {
    if (s.IsEmpty()) return 0;
    if (find.IsEmpty()) return -1;
    if (replacement.GetLength() <= find.GetLength()) return ReplaceInPlace(s, find, replacement, caseSensitive);

    // A longer replacement: the occurrences are found ignoring case whatever `caseSensitive`
    // says. This is how the product has always behaved and callers rely on it.
    const std::string_view text(s.str());
    const std::string_view f(find.str());
    const NoCaseFinder finder(text, f);
    std::vector<size_t> hits;
    hits.reserve(1024);
    finder.All([&hits](size_t at) { hits.push_back(at); });
    if (hits.empty()) return 0;

    const long long oldLength = s.GetLength();
    const long long grow = (long long)replacement.GetLength() - find.GetLength();
    long long count = (long long)hits.size();
    if (grow * count + 1 + oldLength > maxLength) {
        if (!truncate) return -1;
        // Only as many occurrences as fit are replaced, from the start.
        count = (maxLength - oldLength - 1) / grow;
        if (count <= 0) return 0;
    }

    // Built straight into a new string of the final length, which then replaces the text.
    const size_t newLength = (size_t)(oldLength + grow * count);
    // Reserved first (large pages asked for while no byte is written), then appended to
    // piece by piece: no byte is written twice.
    std::string result;
    result.reserve(newLength);
    qm::platform::PrepareLargeBlock(result.data(), newLength + 1);
    const std::string& r = replacement.str();
    size_t src = 0;
    for (long long k = 0; k < count; ++k) {
        const size_t at = hits[(size_t)k];
        result.append(text.data() + src, at - src);
        result.append(r);
        src = at + f.size();
    }
    result.append(text.data() + src, text.size() - src);
    s = CString(std::move(result));
    return (int)count;
}

}  // namespace qm::text

int ReplaceString(CString& s, CString find, CString replacement, int truncate, int caseSensitive) {
    return qm::text::ReplaceStringLimited(s, find, replacement, truncate, caseSensitive, QM_MAX_STRING_LENGTH);
}
