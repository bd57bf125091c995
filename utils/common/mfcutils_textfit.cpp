#include "utils/common/mfcutils_textfit.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/platform/globalmem.h"

#define QM_SOURCE_MODULE "Common\\mfcutils"

namespace {

thread_local unsigned long t_measures = 0;

constexpr int kUnmeasured = INT_MIN;

// Measures prefixes of one text on one context, directly or from a known shorter prefix.
struct Measurer {
    CDC* pDC;
    const char* text;
    int* pTabStop;
    long long avg;
    int* widths;  // each character's width once measured, kUnmeasured before (256 entries)

    long long Direct(int from, int count) {
        ++t_measures;
        return pDC->GetTabbedTextExtent(text + from, count, pTabStop ? 1 : 0, pTabStop).cx;
    }

    long long CharWidth(int i) {
        unsigned char c = (unsigned char)text[i];
        if (c == '\t') return pTabStop ? *pTabStop : 8 * avg;
        if (widths[c] != kUnmeasured) return widths[c];
        ++t_measures;
        int w = 0;
        pDC->GetCharWidth(c, c, &w);
        return widths[c] = w;
    }

    // Extent of characters 0..guess, given the extent of 0..left (left < 0: nothing known).
    // The seam correction (the pair measured together, less each alone) keeps kerning and
    // overhang between the known part and the new part exact.
    long long Prefix(int left, long long leftExtent, int guess) {
        if (!(guess >= left)) CVASSERT_TEXT("xCurrentGuess >= xLeftmostTooShort");
        if (left <= 0) return Direct(0, guess + 1);
        if (guess == left) return leftExtent;
        return leftExtent + Direct(left + 1, guess - left) + Direct(left, 2) - CharWidth(left) - CharWidth(left + 1);
    }
};

struct Fit {
    int last = -1;  // index of the last fitting character, -1: none
    long long extent = 0;
};

class FitSearch {
public:
    FitSearch(Measurer& m, const char* text, int len, long long width, bool wordEnds)
        : m_m(m), m_text(text), m_len(len), m_width(width), m_wordEnds(wordEnds) {}

    Fit Run() {
        int L = -1, R = m_len - 1;
        bool rConfirmed = false;
        long long E = 0;
        long long first = m_width / m_m.avg - 1;
        int g = (int)std::clamp<long long>(first, 0, m_len - 1);
        g = Snap(g, L, R, true);
        while (g >= 0) {
            if (!(g <= R)) CVASSERT_TEXT("xCurrentGuess <= xRightmostTooLong");
            long long w = m_m.Prefix(L, E, g);
            if (w == m_width) return {g, w};  // an exact fit ends the search at once
            long long step = std::max<long long>(1, (w > m_width ? w - m_width : m_width - w) / m_m.avg);
            int next;
            if (w > m_width) {
                R = g;
                rConfirmed = true;
                long long n = std::max<long long>((long long)g - step, (long long)L + 1);
                if (n >= R) break;
                next = Snap((int)n, L, R - 1, true);
            } else {
                L = g;
                E = w;
                int cap = rConfirmed ? R - 1 : R;
                if (L >= cap) break;
                long long n = std::min<long long>((long long)g + step, cap);
                next = Snap((int)n, L, cap, false);
            }
            if (L >= R) break;
            g = next;
        }
        return {L, E};
    }

    bool IsWordEnd(int x) const {
        return x == m_len - 1 || (m_text[x] != ' ' && m_text[x + 1] == ' ');
    }

private:
    // Moves x to a candidate end strictly above lo and at most hi: the nearest one in the
    // preferred direction, else the nearest in the other; -1 when there is none.
    int Snap(int x, int lo, int hi, bool preferLeft) const {
        if (x <= lo || x > hi) return -1;
        if (!m_wordEnds) return x;
        int left = -1, right = -1;
        for (int i = x; i > lo; --i)
            if (IsWordEnd(i)) { left = i; break; }
        if (preferLeft && left >= 0) return left;
        for (int i = x; i <= hi; ++i)
            if (IsWordEnd(i)) { right = i; break; }
        if (!preferLeft && right >= 0) return right;
        return left >= 0 ? left : right;
    }

    Measurer& m_m;
    const char* m_text;
    int m_len;
    long long m_width;
    bool m_wordEnds;
};

// MapWidthToCharPos with the widths of single characters kept in `widths` (256 entries,
// kUnmeasured for a character not measured yet), so that the lines of one text on one
// context share them.
int MapWidth(CDC* pDC, LONG nWidth, const char* pText, int nLen, int* pTabStop, LONG* pExtent,
             TSpacesConsideration spaces, LONG nAvgCharWidth, int* widths) {
    if (pExtent) *pExtent = 0;
    // Without a context or a text nothing can be measured; a length below -1 is taken as 0.
    if (!pDC || !pText) return 0;
    if (nLen == -1) nLen = (int)std::min<size_t>(std::strlen(pText), 0x7FFFFFFF);
    if (nLen <= 0) return 0;
    if (spaces != IgnoreSpaces && spaces != BetterOnSpaces && spaces != OnSpaces) {
        // An unknown rule is reported and treated as breaking anywhere.
        CVASSERT_TEXT("OnSpaces == BetterOnSpaces && xLeftmostTooShort == 0");
        spaces = IgnoreSpaces;
    }
    long long avg = nAvgCharWidth;
    if (avg < 1) {
        TEXTMETRICA tm{};
        pDC->GetTextMetrics(&tm);
        avg = tm.tmAveCharWidth < 1 ? 1 : tm.tmAveCharWidth;
    }
    Measurer m{pDC, pText, pTabStop, avg, widths};
    FitSearch words(m, pText, nLen, nWidth, spaces != IgnoreSpaces);
    Fit fit = words.Run();
    if (spaces != IgnoreSpaces && fit.last >= 0 && !words.IsWordEnd(fit.last))
        CVASSERT_TEXT("xLeftmostTooShort == nLen-1 || pText[xLeftmostTooShort] != ' ' && pText[xLeftmostTooShort+1] == ' '");
    if (spaces == BetterOnSpaces && fit.last < 0) fit = FitSearch(m, pText, nLen, nWidth, false).Run();
    if (fit.last < 0) return 0;
    if (pExtent) *pExtent = (LONG)fit.extent;
    return fit.last + 1;
}

}  // namespace

int MapWidthToCharPos(CDC* pDC, LONG nWidth, const char* pText, int nLen, int* pTabStop, LONG* pExtent,
                      TSpacesConsideration spaces, LONG nAvgCharWidth) {
    int widths[256];
    std::fill(std::begin(widths), std::end(widths), kUnmeasured);
    return MapWidth(pDC, nWidth, pText, nLen, pTabStop, pExtent, spaces, nAvgCharWidth, widths);
}

int WordWrapString(CString& S, int nWidth, CDC* pDC, int* pTabStop) {
    CVASSERT(S.GetLength() < 16000);
    // Line feeds are dropped: the text is copied run by run between them.
    const std::string& in = S.str();
    std::string src;
    src.reserve(in.size());
    for (size_t pos = 0; pos < in.size();) {
        const void* lf = std::memchr(in.data() + pos, '\n', in.size() - pos);
        size_t end = lf ? (size_t)(static_cast<const char*>(lf) - in.data()) : in.size();
        src.append(in, pos, end - pos);
        pos = end + 1;
    }
    if (src.empty()) {
        S.Empty();
        return 0;
    }
    // The context's average character width, asked once for all the lines (as each
    // measurement would ask it).
    LONG avg = -1;
    if (pDC) {
        TEXTMETRICA tm{};
        pDC->GetTextMetrics(&tm);
        avg = tm.tmAveCharWidth < 1 ? 1 : tm.tmAveCharWidth;
    }
    int widths[256];
    std::fill(std::begin(widths), std::end(widths), kUnmeasured);
    // The lines are written straight into the result, each after a '\r' but the first.
    std::string out;
    out.reserve(src.size() + src.size() / 8 + 16);
    int lines = 0;
    auto line = [&](const char* p, size_t n) {
        if (lines++) out += '\r';
        out.append(p, n);
    };
    size_t pos = 0;
    for (;;) {
        const void* cr = std::memchr(src.data() + pos, '\r', src.size() - pos);
        size_t eol = cr ? (size_t)(static_cast<const char*>(cr) - src.data()) : src.size();
        const char* seg = src.data() + pos;
        int rem = (int)(eol - pos);
        if (rem == 0) line(seg, 0);
        while (rem > 0) {
            int n = MapWidth(pDC, nWidth, seg, rem, pTabStop, nullptr, IgnoreSpaces, avg, widths);
            if (n >= rem) {
                line(seg, (size_t)rem);
                break;
            }
            // Break after the last space at or before the first character that does not fit
            // (the space ends the broken line); in a word with no space, cut where it stops
            // fitting; at least one character per line.
            int piece = -1;
            for (int i = n; i >= 0; --i)
                if (seg[i] == ' ') { piece = i + 1; break; }
            if (piece < 0) piece = n;
            if (piece < 1) piece = 1;
            line(seg, (size_t)piece);
            seg += piece;
            rem -= piece;
        }
        if (eol >= src.size()) break;
        pos = eol + 1;
    }
    S = CString(out);
    return lines;
}

CString GetTextFromHandle(HGLOBAL h, LONG nSize) {
    CString s;
    if (!h || nSize <= 0) return s;
    const char* p = (const char*)qm::platform::GlobalMemLock(h);
    if (!p) return s;
    // A size beyond the block is cut to the block, so that nothing past it is read.
    SIZE_T have = qm::platform::GlobalMemSize(h);
    LONG n = (SIZE_T)nSize > have ? (LONG)have : nSize;
    char* buf = s.GetBuffer(n + 1);
    if (!buf) {
        CVASSERT_TEXT("lpzsText");
        qm::platform::GlobalMemUnlock(h);
        return s;
    }
    std::memcpy(buf, p, (size_t)n);
    buf[n] = 0;
    s.ReleaseBuffer();
    qm::platform::GlobalMemUnlock(h);
    return s;
}

void AddTabsAtTheBeginningOfLines(CString& s, int nTabs) {
    if (nTabs < 1) return;
    const std::string tabs((size_t)nTabs, '\t');
    const std::string& in = s.str();
    std::string out = tabs;
    for (size_t i = 0; i < in.size(); ++i) {
        out += in[i];
        bool lineEnd = in[i] == '\n' || (in[i] == '\r' && (i + 1 >= in.size() || in[i + 1] != '\n'));
        if (lineEnd) out += tabs;
    }
    s = CString(out);
}

CString ReplaceTabsWithSpaces(const char* s) {
    CString r(s);
    r.Replace('\t', ' ');
    return r;
}

unsigned int GetStringDiskSizeEstimate(const CString& str) {
    const CString* volatile p = &str;
    if (!p) {
        CVASSERT_TEXT("&str != NULL");
        return 4;
    }
    return (unsigned int)p->GetLength() + 4;
}

namespace qm {
unsigned long TextFitMeasureCount() { return t_measures; }
}  // namespace qm
