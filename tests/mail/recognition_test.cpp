// Links and e-mail addresses found in note text.
#include <gtest/gtest.h>
#include <cctype>
#include <cstring>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/utils_mail.h"

namespace {

struct UrlCase { const char* text; bool valid; int len; int isMail; };  // isMail -1: untouched

const UrlCase kUrlCases[] = {
    // A final "." is dropped and takes a counted dot with it.
    {"http://www.host.test/a.", true, 22, -1}, {"http://host.test/a.", false, 0, -1},
    {"http://localhost", false, 0, -1}, {"http://a/b.c", false, 0, -1},  // a slash before any dot
    {"http://a.b\x01" "cmd\x02", true, 10, -1}, {"ftp.host.test/pub", true, 17, -1}, {"news:comp.lang", true, 14, -1},
    {"Mk:@MSITStore:help.chm::/a.htm", true, 30, -1},
    // Trailing punctuation runs are stripped together.
    {"www.host.test).", true, 13, 0}, {"www.", false, 0, 0},
    // E-mail step.
    {"mailto:jd@host.test", true, 19, 1},
    {"mailto:@host.test", true, 17, 1},  // empty mailbox accepted after the prefix
    {"@host.test", false, 0, -1},  // "@" cannot start a link at all
    // "file://" runs to a space, comma, "?", "#" or ";".
    {"file://C:\\a b", true, 11, 0}, {"file://", false, 0, 0}, {"", false, 0, -1},
};

TEST(IsValidURL, RecognisesLinksAtTheStartOfText) {
    for (const UrlCase& c : kUrlCases) {
        SCOPED_TRACE(c.text);
        int len = -7;
        bool isMail = true;
        bool ok = IsValidURL(c.text, len, isMail);
        EXPECT_EQ(ok, c.valid);
        if (c.valid) EXPECT_EQ(len, c.len);
        else EXPECT_EQ(len, -7) << "len must stay untouched on failure";
        bool other = false;  // -1: untouched, whatever the caller had
        IsValidURL(c.text, len, other);
        if (c.isMail >= 0) {
            EXPECT_EQ(isMail, c.isMail == 1);
        } else {
            EXPECT_TRUE(isMail);
            EXPECT_FALSE(other);
        }
    }
}

TEST(IsValidURL, LongAndControlFilledTextStaysInBounds) {
    int len = 3;
    bool isMail = true;
    EXPECT_FALSE(IsValidURL(nullptr, len, isMail));
    EXPECT_EQ(len, 3);
    EXPECT_TRUE(isMail);
    std::string text = "http://a.b/";
    text.append(200000, 'x');
    EXPECT_TRUE(IsValidURL(text.c_str(), len, isMail));
    EXPECT_EQ(len, (int)text.size());
    std::string mail(100000, 'm');
    mail += "@";
    mail.append(100000, '.');
    EXPECT_FALSE(IsValidURL(mail.c_str(), len, isMail));
    // Which links leave the application is the host's decision.
    EXPECT_FALSE(IsExternalLink("http://host.test/"));
    EXPECT_FALSE(IsExternalLink(nullptr));
}

TEST(IsLooksLikeEmailAddress, PlausibilityRules) {
    const struct { const char* text; bool expected; } cases[] = {
        {"jd@host.test", true},   {"jd@host.test\t", true}, {"a.@", true},  {"j d@host.test", false},
        {"", false},              {"jdhost.test", false},   {".jd@host.test", false},
        {"jd@host.test.", false}, {"jd@host", false},       {"a@b@c.d", false},
    };
    for (const auto& c : cases) EXPECT_EQ(IsLooksLikeEmailAddress(c.text), c.expected) << c.text;
    qmtest::RecordingAssertSink sink;
    EXPECT_FALSE(IsLooksLikeEmailAddress(nullptr));
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"ptr_address"});
}

std::set<std::string> Collect(const CString& text) {
    CStringSet found;
    EXPECT_EQ(CollectEMails(text, found), 0);
    std::set<std::string> out;
    for (const CString& s : found) out.insert(s.str());
    return out;
}

TEST(CollectEMails, KeepsWhatTheSetHeld) {
    CStringSet found;  // what the set held is kept; an embedded NUL ends the text
    found.Add("old@entry.test");
    CollectEMails(CString("a@b.c\0x@y.z", 11), found);
    EXPECT_EQ(found.GetCount(), 2);
    EXPECT_TRUE(found.Contains("old@entry.test"));
    EXPECT_TRUE(found.Contains("a@b.c"));
}

// The address scan written plainly, without the shortcuts that keep CollectEMails linear.
bool ModelInSet(unsigned char c, const char* set) { return c && std::strchr(set, c); }

bool ModelHost(const unsigned char* s, int& len) {
    const char* stop = "<>\"{}|^`\n\r\t \x17\x01\x02;";
    int i = 0, dots = 0;
    bool slash = false;
    for (; s[i] >= 33 && !ModelInSet(s[i], stop); ++i) {
        if (s[i] == '.') dots++;
        if (s[i] == '/' || s[i] == '\\') {
            if (!dots) return false;
            slash = true;
            break;
        }
    }
    if (slash || !dots) return false;
    while (i > 0 && ModelInSet(s[i - 1], "()<>.,;'[]")) {
        if (s[i - 1] == '.') dots--;
        i--;
    }
    len = i;
    return dots > 0;
}

bool ModelEMail(const unsigned char* s, int& len) {
    int p = 0;
    while (p < 7 && s[p] && (s[p] | 0x20) == (unsigned char)"mailto:"[p]) ++p;
    if (p < 7) p = 0;
    const int start = p;
    if (s[p] < 33) return false;
    while (s[p] != '@') {
        if (s[p] < 33 || ModelInSet(s[p], ",\n\r\t /\\#?%;'\"<>[]():")) return false;
        p++;
    }
    if (start == 0 && p == 0) return false;
    int h = 0;
    if (!ModelHost(s + p + 1, h)) return false;
    len = p + 1 + h;
    return true;
}

std::set<std::string> ModelCollect(const std::string& text) {
    const char* delims = " ,.'()\"?!\t\r:;$-+=&`/\\_|[]{}<>~#%^*";
    std::set<std::string> out;
    size_t i = 0;
    while (i < text.size()) {
        if (ModelInSet((unsigned char)text[i], delims)) {
            i++;
            continue;
        }
        int len = 0;
        if (ModelEMail((const unsigned char*)text.c_str() + i, len)) out.insert(text.substr(i, len)), i += len;
        else
            while (i < text.size() && !ModelInSet((unsigned char)text[i], delims)) i++;
    }
    return out;
}

TEST(CollectEMails, AgreesWithAPlainModelOnRandomText) {
    std::mt19937 rng(20261122);
    const char alphabet[] = "abA.@_-, x\r\n/()<>:;m\x17";  // 0x17 ends a host but delimits no word
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        int n = (int)(rng() % 40);
        for (int k = 0; k < n; ++k) text += alphabet[rng() % (sizeof(alphabet) - 1)];
        if (rng() % 5 == 0) text.insert(rng() % (text.size() + 1), "mailto:");
        ASSERT_EQ(Collect(CString(text.c_str())), ModelCollect(text)) << "text: " << text;
    }
    // Long stretches without "@" between a few addresses: the scan moves over them, and must
    // still stop at every start that can reach the next "@" (with or without "mailto:").
    for (int round = 0; round < 1000; ++round) {
        std::string text;
        int n = 50 + (int)(rng() % 250);
        for (int k = 0; k < n; ++k) {
            char c = alphabet[rng() % (sizeof(alphabet) - 1)];
            text += c == '@' ? 'b' : c;
        }
        for (int k = (int)(rng() % 4); k > 0; --k) text.insert(rng() % (text.size() + 1), rng() % 2 ? "@" : "mailto:");
        if (rng() % 3 == 0) text.insert(rng() % (text.size() + 1), "a.b@c.d");
        ASSERT_EQ(Collect(CString(text.c_str())), ModelCollect(text)) << "text: " << text;
    }
}

// The plain search FindLinks must agree with: IsValidURL tried afresh at every word start.
std::vector<std::string> PlainLinks(const std::string& text) {
    std::vector<std::string> out;
    for (size_t i = 0; i < text.size();) {
        const unsigned char prev = i ? (unsigned char)text[i - 1] : ' ';
        const bool word = prev < 0x80 && !std::isalnum(prev) && !(prev && std::strchr("_.-@:/\\%", prev));
        int len = 0;
        bool isMail = false;
        if (word && IsValidURL(text.c_str() + i, len, isMail) && len > 0) {
            out.push_back(std::to_string(i) + "+" + std::to_string(len) + (isMail ? "m" : "l"));
            i += (size_t)len;
        } else {
            ++i;
        }
    }
    return out;
}

std::vector<std::string> Found(const std::string& text) {
    std::vector<CLinkMatch> found;
    FindLinks(text.c_str(), text.size(), found);
    std::vector<std::string> out;
    for (const CLinkMatch& m : found)
        out.push_back(std::to_string(m.offset) + "+" + std::to_string(m.length) + (m.isMail ? "m" : "l"));
    return out;
}

TEST(FindLinks, AgreesWithIsValidUrlAtEveryWordStart) {
    std::mt19937 rng(1122);
    const char alphabet[] = "a1.@/\\!:-_ ,()<>\t.aa";
    const char* const pieces[] = {"http://", "www.", "mailto:", "news:", "file://", "ftp.", "Mk:@MSITStore:", "\x01x\x02"};
    for (int round = 0; round < 4000; ++round) {
        std::string text;
        const int n = (int)(rng() % 60);
        for (int k = 0; k < n; ++k) {
            if (rng() % 6 == 0) text += pieces[rng() % std::size(pieces)];
            else text += alphabet[rng() % (sizeof(alphabet) - 1)];
        }
        ASSERT_EQ(Found(text), PlainLinks(text)) << "text: " << text;
    }
    std::vector<CLinkMatch> found{{1, 1, true}};
    EXPECT_EQ(FindLinks(nullptr, 5, found), 0u);
    EXPECT_TRUE(found.empty());
}

// Runs where every word restarts a long walk over the same bytes: the bytes walked stay linear.
TEST(FindLinks, CraftedRunsTakeLinearWork) {
    for (const char* unit : {"a!", "a@a!", "news:a!", "news:a.b/!", "mailto:a!", "www.a!", "a.@a.!", "http://.a!", "_@a.b/,"}) {
        std::string text;
        while (text.size() < 1000000) text += unit;
        std::vector<CLinkMatch> found;
        EXPECT_LE(FindLinks(text.c_str(), text.size(), found), 12 * text.size()) << unit;
        CStringSet addresses;
        size_t steps = 0;
        CollectEMails(CString(text.c_str()), addresses, &steps);
        EXPECT_LE(steps, 12 * text.size()) << unit;
    }
}

}  // namespace
