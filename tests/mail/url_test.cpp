// Paths and file URLs, canonical URLs, percent decoding: one table for both backends.
#include <gtest/gtest.h>
#include <string>

#include "tests/support/recording_sink.h"
#include "utils/common/utils_mail.h"

namespace {

std::string Bytes(const CString& s) { return s.str(); }

struct Conversion { const char* input; const char* expected; };

TEST(Path2Url, DrivesNetworkPathsSpacesPercentAndEightBitBytes) {
    const Conversion cases[] = {
        {"C:\\a.txt", "file://C:/a.txt"}, {"C:\\a b\\c.txt", "file://C:/a%20b/c.txt"},
        {"C:\\100%.txt", "file://C:/100%25.txt"}, {"\\\\server\\share\\a b.txt", "file://server/share/a%20b.txt"},
        {"C:\\caf\xE9.txt", "file://C:/caf%E9.txt"},
        // Code page 1252 bytes above U+00FF are escaped only by the final encoding.
        {"C:\\x\x80y\x9Fz\xFF", "file://C:/x%80y%9Fz%FF"}, {"C:\\dir\\..\\x.txt", "file://C:/x.txt"},
        {"C:\\a_b;c=d&e#f.txt", "file://C:/a%5Fb%3Bc%3Dd%26e%23f.txt"},
        // Already a URL: canonicalised, then encoded.
        {"http://host.test/a b", "http://host.test/a%20b"},
    };
    for (const Conversion& c : cases) EXPECT_EQ(Bytes(Path2Url(c.input)), c.expected) << c.input;
}

TEST(Path2Url, TooLongForTheUrlBufferIsReported) {
    qmtest::RecordingAssertSink sink;
    std::string path = "C:\\" + std::string(1000, ' ');  // escapes to 3000 bytes
    EXPECT_EQ(Path2Url(path.c_str()), "");
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].expression + "|" + sink.Reports()[0].module, "SUCCEEDED(hRes)|Common\\mfcutils");
}

TEST(Url2Path, DecodesOnceInTheSystemAndOnceMore) {
    const Conversion cases[] = {
        {"file:///C|/x", "C:\\x"},
        // Decoded twice: "%2541" becomes "%41" in the system and "A" after it.
        {"file:///C:/100%2541.txt", "C:\\100A.txt"}, {"file://C:/100%2541.txt", "C:\\100%41.txt"},
        // The second decoding drops a "%" near the end and makes a malformed pair a NUL.
        {"file:///C:/a%2", "C:\\a2"}, {"file:///C:/a%2Fb", "C:\\a/b"}, {"http://host/x", ""}, {"", ""},
    };
    for (const Conversion& c : cases) EXPECT_EQ(Bytes(Url2Path(c.input)), c.expected) << c.input;
    EXPECT_EQ(Bytes(Url2Path("file:///C:/a%zzb")), std::string("C:\\a\0b", 6));
}

TEST(Url2Path, PathTooLongForItsBufferGivesEmpty) {
    std::string fits = "file:///C:/" + std::string(2080, 'a');  // 2083 bytes of path
    EXPECT_EQ(Url2Path(fits.c_str()).GetLength(), 2083);
    std::string tooLong = "file:///C:/" + std::string(2081, 'a');
    EXPECT_EQ(Url2Path(tooLong.c_str()), "");
}

TEST(UlrCanonize, LongUrlsFitTheBufferAndFinishInLinearTime) {
    std::string url = "http://h/" + std::string(10000, '"');
    std::string expected = "http://h/";
    for (int i = 0; i < 10000; ++i) expected += "%22";
    EXPECT_EQ(Bytes(UlrCanonize(url.c_str())), expected);
    // Dot segments among very many segments are resolved in one pass over the path.
    std::string deep = "http://h/", deepExpected = "http://h/";
    for (int i = 0; i < 100000; ++i) {
        deep += "a/./";
        deepExpected += "a/";
    }
    EXPECT_EQ(Bytes(UlrCanonize((deep + "b/..").c_str())), deepExpected);
}

TEST(Path2Url, RoundTripsThroughUrl2Path) {
    const char* paths[] = {
        "C:\\a.txt", "C:\\a b\\c d.txt", "C:\\100%.txt", "C:\\a%41", "\\\\server\\share\\a b.txt",
        "C:\\caf\xE9 \x80.txt", "Z:\\tmp\\x_y;z.txt", "C:\\",
    };
    for (const char* p : paths) EXPECT_EQ(Bytes(Url2Path(Path2Url(p))), p) << p;
    // A network path is decoded twice, so an escape-like name does not survive the trip.
    EXPECT_EQ(Bytes(Url2Path(Path2Url("\\\\server\\s\\a%41"))), "\\\\server\\s\\aA");
}

TEST(UlrCanonize, BrowserForm) {
    const Conversion cases[] = {
        {"http://h/a/b/../c", "http://h/a/c"},
        {"http://h/a/b/../../../x", "http://h/../x"}, {"https://h/a b?c d#e f", "https://h/a%20b?c d#e f"},
        {"http://h/a\tb", "http://h/ab"}, {"http://h/caf\xE9?q\xE9", "http://h/caf%E9?q\xE9"},
        {"http://h/%41%7e", "http://h/%41%7e"}, {"file:///C:/a#b?c", "file://C:/a%23b?c"},
        {"file://server/share/../x", "file://server/x"},
    };
    for (const Conversion& c : cases) EXPECT_EQ(Bytes(UlrCanonize(c.input)), c.expected) << c.input;
}

// The names come from the library's default string resources.
TEST(EMailFieldNames, NamesAndDefaultVisibilityByField) {
    const struct { EMailFieldNameType type; const char* name; bool visible; } cases[] = {
        {EMF_From, "From", true},         {EMF_To, "To", true},           {EMF_Cc, "Cc", true},
        {EMF_Bcc, "Bcc", false},          {EMF_ReplyTo, "Reply-To", false}, {EMF_Sender, "Sender", false},
        {EMF_Date, "Date", true},         {EMF_Subject, "Subject", true}, {EMF_Attachments, "Attachments", false},
        {EMF_Priority, "Priority", false},
    };
    for (const auto& c : cases) {
        EXPECT_STREQ(GetEMailFieldName(c.type), c.name);
        EXPECT_EQ(IsEMailFieldNameVisibleByDefault(c.type), c.visible) << c.name;
    }
    qm::SetStringResource(614, "Von");  // loaded once for the process
    EXPECT_STREQ(GetEMailFieldName(EMF_From), "From");
    qm::ClearStringResource(614);
}

TEST(EMailFieldNames, OutOfRangeIsReportedAndAnsweredSafely) {
    qmtest::RecordingAssertSink sink;
    // Cast at each call: an out-of-range value stored in an enum variable and read back is
    // itself undefined, which the sanitizers report.
    for (int bad : {(int)EMF_Last, -1}) {
        EXPECT_STREQ(GetEMailFieldName((EMailFieldNameType)bad), "") << bad;
        EXPECT_FALSE(IsEMailFieldNameVisibleByDefault((EMailFieldNameType)bad)) << bad;
    }
    ASSERT_EQ(sink.Reports().size(), 4u);
    for (const auto& r : sink.Reports()) {
        EXPECT_EQ(r.expression, "idx >= 0 && idx < EMF_Last");
        EXPECT_EQ(r.module, "Common\\mfcutils");
    }
}

}  // namespace
