// Bulk replacement with the process-wide length guard.
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

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
// InString, over counted bytes so an embedded NUL is an ordinary byte). The byte after the
// text must be readable: it is a string's terminating NUL.
class NoCaseFinder {
public:
    NoCaseFinder(std::string_view text, std::string_view f)
        : m_text(text),
          m_f(f),
          m_scan((unsigned char)f[0], f.size() > 1 ? (unsigned char)f[1] : 0, f.size() > 1),
          m_head(f.data(), f.size()) {}

    // First match at or after `from`; npos when none.
    size_t Next(size_t from) const {
        if (m_f.size() > m_text.size()) return std::string_view::npos;
        // Candidates start at most at `last`; with two pattern bytes b[last + 1] is in the text.
        const size_t last = m_text.size() - m_f.size();
        const char* b = m_text.data();
        for (size_t i = m_scan.Next(b, from, last + 1); i <= last; i = m_scan.Next(b, i + 1, last + 1))
            if (MatchesAt(i)) return i;
        return std::string_view::npos;
    }

    // Every match at or after `from` that does not overlap the one before it, left to right,
    // until `found` returns false.
    template <class Found>
    void All(size_t from, Found found) const {
        if (m_f.size() > m_text.size()) return;
        const size_t last = m_text.size() - m_f.size();
        if (from > last) return;
        const char* b = m_text.data();
        size_t allowed = from;  // the first position after the last match
        m_scan.ForEach(b, from, last + 1, [&](size_t i) {
            if (i < allowed || !MatchesAt(i)) return true;
            allowed = i + m_f.size();
            return found(i);
        });
    }

private:
    // Whether the pattern matches at `i` (i + m_f.size() <= m_text.size()).
    bool MatchesAt(size_t i) const {
        const char* b = m_text.data();
        const size_t w = qm::text::detail::BlockMatcher::kWidth;
        // The block compare reads 16 bytes, of which the last may be the byte after the text.
        if (i + w > m_text.size() + 1) return EqualNoCase(b + i, m_f.data(), m_f.size());
        if (!m_head.Matches(b + i)) return false;
        return m_f.size() <= w || EqualNoCase(b + i + w, m_f.data() + w, m_f.size() - w);
    }

    std::string_view m_text, m_f;
    qm::text::detail::PairScanner m_scan;
    qm::text::detail::BlockMatcher m_head;  // the first 16 bytes of the pattern
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

    // Two passes: the first counts the occurrences, since the length guard and the size of
    // the result need the count; the second copies. The first few thousand positions are kept
    // on the stack, so a text with no more hits than that is scanned once; beyond them the
    // copy scans again. Keeping every position costs more than scanning again: an array that
    // grows with the hits (a megabyte for a 16 MiB note) is written, reallocated and read back.
    constexpr size_t kKept = 4096;
    std::uint32_t kept[kKept];  // offsets: a text is shorter than 2 GiB
    size_t nKept = 0;
    const long long oldLength = s.GetLength();
    const long long grow = (long long)replacement.GetLength() - find.GetLength();
    const long long room = maxLength - oldLength - 1;  // bytes the text may still grow by
    const long long fit = room < 0 ? 0 : room / grow;  // occurrences whose growth fits
    long long count = 0;
    finder.All(0, [&](size_t at) {
        if (nKept < kKept) kept[nKept++] = (std::uint32_t)at;
        return ++count <= fit;  // stops at the first that does not fit
    });
    if (count == 0) return 0;
    if (count > fit) {
        if (!truncate) return -1;
        // Only as many occurrences as fit are replaced, from the start.
        count = fit;
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
    long long done = 0;
    auto replaceAt = [&](size_t at) {
        result.append(text.data() + src, at - src);
        result.append(r);
        src = at + f.size();
        return ++done < count;
    };
    size_t k = 0;
    while (k < nKept && replaceAt(kept[k])) ++k;
    if (done < count) finder.All(src, replaceAt);  // the hits past the kept ones
    result.append(text.data() + src, text.size() - src);
    s = CString(std::move(result));
    return (int)count;
}

}  // namespace qm::text

int ReplaceString(CString& s, CString find, CString replacement, int truncate, int caseSensitive) {
    return qm::text::ReplaceStringLimited(s, find, replacement, truncate, caseSensitive, QM_MAX_STRING_LENGTH);
}
