#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/utils_text.h"

namespace {

TEST(MergeFieldIntoText, Cases) {
    struct Case { const char* text; const char* marker; const char* value; const char* out; };
    const Case cases[] = {
        {"Dear @1,", "@1", "Ann", "Dear Ann,"}, {"{@1}", "@1", "Ann", "Ann"},  // braces around a plain marker go
        {"@1 and @1", "@1", "Ann", "Ann and Ann"},
        {"@1 x", "@1", "@1@1", "@1@1 x"},                 // the value is not scanned again
        {"@10", "@1", "Ann", "Ann0"}, {"x{NAME}}y", "{name}", "Ann", "xAnny"},  // case ignored; one "}" after it consumed
        {"[{name     }]", "{name", "Ann", "[Ann  ]"},     // five reserved, three used
        {"[{name }]", "{name", "Annabelle", "[Annabelle]"},
        {"[{name x}]", "{name", "Ann", "[{name x}]"},     // no "}" after the spaces: not a field
        {"{{name  }", "{name", "Ann", "Ann"},             // the "{" before the marker is taken back
        {"[{name     }]", "{name", "\x01" "bold\x02" "Ann", "[\x01" "bold\x02" "Ann  ]"},  // runs are not width
        {"[{name     }]", "{name", "Ann\x17", "[Ann  ]"},  // a final line mark is neither written nor width
        {"[{name   }]", "{name", "x\x01\x17", "[x\x01  ]"},  // ...also when an unclosed run holds it
        {"a\x17" "b", "@1", "Ann", "a\x17" "b"}, {"{", "{", "Ann", "Ann"},  // a lone "{" is a plain marker
    };
    for (const Case& c : cases) {
        CString text(c.text);
        MergeFieldIntoText(text, c.marker, c.value);
        EXPECT_EQ(text, c.out) << c.text << " / " << c.marker << " / " << c.value;
    }
}

TEST(MergeFieldIntoText, BlankValueRemovesTheFieldWithBracesAndPadding) {
    struct Case { const char* text; const char* marker; const char* out; };
    const Case cases[] = {
        {"a {@1} b", "@1", "a  b"}, {"[{name    }]", "{name", "[]"},
        {"[{name x}]", "{name", "[{name x}]"},  // still not a field
    };
    for (const char* blank : {"", "  \t", "\x17", " \x01" "cmd\x02\x17", "\x01" "unclosed"}) {
        for (const Case& c : cases) {
            CString text(c.text);
            MergeFieldIntoText(text, c.marker, blank);
            EXPECT_EQ(text, c.out) << c.text;
        }
    }
    qmtest::RecordingAssertSink sink;  // an empty marker is refused
    CString text("abc");
    MergeFieldIntoText(text, "", "x");
    EXPECT_EQ(text, "abc");
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"!marker.IsEmpty()"});
}

TEST(ReplaceFields, FillsNumberedMarkersFromTheLinesAfterTheName) {
    const char* tmpl = "@1 @2 @3|{@4}";
    struct Case { const char* text; const char* out; };
    const Case cases[] = {
        {"head\nNAME:\nAnn\nSmith\nNAME:\nBob\n", "Ann Smith @3|{@4}"},  // stops at the next "name:"
        {"name:\nA\nB", "A @2 @3|{@4}"},               // the last line has no end
        {"name:\nA\x17" "B\x17", "A B @3|{@4}"},      // 0x17 ends a value when no LF follows
        {"name:\nA\x17" "B\n", "A\x17" "B @2 @3|{@4}"},  // ...but an LF further on wins
        {"\x01name:\x02\nname:\nV\n", "V @2 @3|{@4}"},  // a name inside a command run is markup
        {"name:", "@1 @2 @3|{@4}"},                    // no LF after the name
        {"name:\n\n\nX\n", "  X|{@4}"},                  // empty lines are blank values
    };
    for (const Case& c : cases) {
        CString out(tmpl);
        ReplaceFields("name:", c.text, out);
        EXPECT_EQ(out, c.out) << c.text;
    }
}

TEST(ReplaceFields, AtMostNineValuesAndNothingForEmptyInput) {
    std::string text = "n\n";
    for (int i = 1; i <= 12; ++i) text += "v" + std::to_string(i) + "\n";
    CString out("@9 @1");
    ReplaceFields("n", text.c_str(), out);
    EXPECT_EQ(out, "v9 v1");
    // A value whose end is exactly where the name occurs again is not taken.
    CString atLimit("@1");
    ReplaceFields("\x17N", "\x17N\nA\x17N", atLimit);
    EXPECT_EQ(atLimit, "@1");
    CString empty;
    ReplaceFields("n", text.c_str(), empty);
    EXPECT_EQ(empty, "");
    CString untouched("@1");
    ReplaceFields("n", "", untouched);
    ReplaceFields("n", nullptr, untouched);
    ReplaceFields(nullptr, text.c_str(), untouched);
    EXPECT_EQ(untouched, "@1");
}

}  // namespace
