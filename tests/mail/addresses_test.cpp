// Address lists, single addresses and postal address blocks.
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "utils/common/utils_mail.h"

namespace {

TEST(GetAddress, ItemShapesAndTheRestOfTheList) {
    const struct { const char* list; bool removeComments; const char* address, *name, *rest; } cases[] = {
        {"\"Doe, Jane\" <jd@host>, bob@x.test", false, "jd@host", "Doe, Jane", " bob@x.test"},
        // A separator before any "@" belongs to the name.
        {"Smith, John <js@host>", false, "js@host", "Smith, John", nullptr},
        // The byte just before "<" is dropped from the name, whatever it is.
        {"Jane<jd@host>", false, "jd@host", "Jan", nullptr},
        {"A <x> B <jd@host>", false, "jd@host", "A x B", nullptr},
        {"\"A \\\"B\\\" C\" <a@b>", false, "a@b", "A \"B\" C", nullptr},
        // An escaped separator does not end the item.
        {"x@y\\,z, c@d", false, "x@y\\,z", "", " c@d"},
        // ">" without "<": no address. "<" without ">": the item as it is.
        {"a > b", false, "", "", nullptr}, {"name <a@b", false, "name <a@b", "", nullptr},
        {"jd@host (Jane Doe)", true, "jd@host", "", nullptr},
        {"Jane <jd@host (work)>", true, "jd@host", "Jane", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.list);
        CString name = "stale";
        const char* next = "stale";
        EXPECT_EQ(GetAddress(c.list, name, &next, c.removeComments), c.address);
        EXPECT_EQ(name, c.name);
        EXPECT_EQ(next ? next : "<null>", std::string(c.rest ? c.rest : "<null>"));
    }
    CString name = "stale";
    const char* next = "stale";
    EXPECT_EQ(GetAddress(nullptr, name, &next, true), "");
    EXPECT_TRUE(name.IsEmpty());
    EXPECT_EQ(next, nullptr);
    EXPECT_EQ(GetAddress("a@b, c@d", name, nullptr, false), "a@b");
}

TEST(ExtractEMailAddresses, MapKeepsTheFirstNameOfEachAddress) {
    std::map<CString, CString> out;
    out[CString("old@entry")] = "Old";
    ExtractEMailAddresses(CString("Jane <jd@host>, bob@x.test; \"Other\" <jd@host>; Ann (home) <ann@h.t>"), out);
    std::string got;
    for (auto& kv : out) got += kv.first.str() + "=" + kv.second.str() + ";";
    EXPECT_EQ(got, "ann@h.t=Ann (home);bob@x.test=;jd@host=Jane;");
    ExtractEMailAddresses(CString(""), out);
    EXPECT_TRUE(out.empty());
}

TEST(ExtractEMailAddresses, VectorCutsAtSemicolonsOnly) {
    std::vector<CString> out = {CString("stale")};
    ExtractEMailAddresses(CString("jd@host.test;a@bc;John Smith <js@host>;a@b.c, d@e.f;  x  ;bob@x.test"), out);
    std::string got;
    for (auto& s : out) got += s.str() + ";";
    // "a@bc" (4 bytes) is ignored; "," does not separate; "  x  " is 5 bytes and gives "x".
    EXPECT_EQ(got, "jd@host.test;js@host;d@e.f;x;bob@x.test;");
    ExtractEMailAddresses(CString("long@enough.test;abcd"), out);
    EXPECT_EQ(out.size(), 1u);  // the last piece is measured like the others
    ExtractEMailAddresses(CString(";;;;"), out);
    EXPECT_TRUE(out.empty());
}

TEST(GetMailAddress, LastWordWithoutAngleBrackets) {
    const struct { const char* item; const char* expected; } cases[] = {
        {"John Smith <js@host>", "js@host"}, {"  js@host  ", "js@host"}, {"<a>", "a"}, {"name js@host>", "js@host"},
    };
    for (const auto& c : cases) EXPECT_EQ(GetMailAddress(c.item), c.expected) << c.item;
}

TEST(CreateEMailReference, QuotedNameAndAngleAddress) {
    const struct { const char* address; const char* name; bool ok; const char* out; } cases[] = {
        {"jd@host", "Jane Doe", true, "\"Jane Doe\" <jd@host>"}, {"jd@host", "", true, "jd@host"},
        {"", "Jane", false, "\"Jane\""},  // the quoted name stays
        {nullptr, nullptr, false, ""},
    };
    for (const auto& c : cases) {
        CString out = "stale";
        EXPECT_EQ(CreateEMailReference(c.address, c.name, out), c.ok) << c.out;
        EXPECT_EQ(out, c.out);
    }
}

TEST(ExtractAddress, BlockShapes) {
    const struct { const char* text; int found; const char* out; } cases[] = {
        {"Dear Sir\r\rJohn Smith\r12 Main Street\rSpringfield 12345\r\rThanks", 1,
         "John Smith\r12 Main Street\rSpringfield 12345\r"},
        // Later lines that do not start with a letter or digit are dropped.
        {"John Smith\r-- Main Street\rTown 12345", 1, "John Smith\rTown 12345\r"},
        {"Anna Berg\x17Kungsgatan 12\x17" "111 22 Stockholm 111", 1, "Anna Berg\rKungsgatan 12\r111 22 Stockholm 111\r"},
        // Too few or too many lines, lines too short on average, no code at the end.
        {"John Smith\rSpringfield 12345", 0, ""},
        {"Line one 1\rLine two 2\rLine three\rLine four\rLine five\rLine six\rLine 7777", 0, ""},
        {"John Smith\r12 Main Street\rSpringfield", 0, ""},
        // A line starting with "." ends the block and may start the next one.
        {"Line one x\rLine two 2\r.\rJohn Smith\r12 Main Street\rTown 12345", 1,
         ".\rJohn Smith\r12 Main Street\rTown 12345\r"},
        {"Line one x\rLine two 2\r\rJohn Smith\r12 Main Street\rTown 12345", 1,
         "John Smith\r12 Main Street\rTown 12345\r"},
        {"\r\r\r \x17\x01\x02", 0, ""},
    };
    for (const auto& c : cases) {
        CString text = c.text, out = "stale";
        EXPECT_EQ(ExtractAddress(text, out), c.found) << c.text;
        EXPECT_EQ(out, c.out) << c.text;
    }
}

TEST(ExtractAddress, AClosingApostropheBecomesASpaceInTheCallersText) {
    CString text = "Jane Roe\rOld Road 4\rTown of Kent'";
    CString out;
    ASSERT_EQ(ExtractAddress(text, out), 1);
    EXPECT_EQ(text, "Jane Roe\rOld Road 4\rTown of Kent ");
    EXPECT_EQ(out, text + "\r");
}

// (length - lines) / lines must lie in 7..255: three lines of 7 and of 257 bytes fail.
TEST(ExtractAddress, AverageLineLengthBounds) {
    for (int lineLength : {7, 8, 256, 257}) {
        std::string line(lineLength - 1, 'a');
        CString text((line + "1\r" + line + "1\r" + line + "1").c_str()), out;
        EXPECT_EQ(ExtractAddress(text, out), lineLength == 8 || lineLength == 256 ? 1 : 0) << lineLength;
    }
}

}  // namespace
