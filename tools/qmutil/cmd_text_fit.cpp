// qmutil text fit | wrap: fitting text to a pixel width and wrapping it, measured on a memory
// device context with a chosen font.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "command.h"
#include "input_file.h"
#include "utils/common/mfcutils.h"

namespace {

using Args = std::vector<std::string>;

struct Options {
    std::vector<std::string> positional;
    long width = -1;
    std::string face = "DejaVu Sans";
    long height = -13;
    TSpacesConsideration rule = IgnoreSpaces;
};

Options Parse(const Args& args, const char* usage) {
    Options o;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        auto value = [&](const char* what) -> const std::string& {
            if (i + 1 >= args.size()) throw qmutil::UsageError(std::string(a) + " needs " + what + " (usage: " + usage + ")");
            return args[++i];
        };
        if (a == "--width") o.width = qmutil::ParseLong(value("a width in pixels"), "width");
        else if (a == "--font") o.face = value("a face name");
        else if (a == "--height") o.height = qmutil::ParseLong(value("a height in pixels"), "height");
        else if (a == "--rule") {
            const std::string& r = value("ignore, better or on-spaces");
            if (r == "ignore") o.rule = IgnoreSpaces;
            else if (r == "better") o.rule = BetterOnSpaces;
            else if (r == "on-spaces") o.rule = OnSpaces;
            else throw qmutil::UsageError("unknown rule '" + r + "' (ignore, better or on-spaces)");
        } else if (a.size() > 2 && a.compare(0, 2, "--") == 0) {
            throw qmutil::UsageError("unknown option '" + a + "' (usage: " + usage + ")");
        } else {
            o.positional.push_back(a);
        }
    }
    if (o.positional.size() != 1 || o.width < 0)
        throw qmutil::UsageError(std::string("usage: ") + usage);
    if (o.height == 0 || o.height < -1000 || o.height > 1000)
        throw qmutil::UsageError("height must be between -1000 and 1000 and not 0");
    return o;
}

// A memory device context with the requested font; the height is lfHeight (negative: the
// em size in pixels, positive: the cell height).
struct Measure {
    explicit Measure(const Options& o) {
        dc.CreateCompatibleDC(nullptr);
        font.CreateFont((int)o.height, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                        CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH, o.face.c_str());
        old = dc.SelectObject(&font);
    }
    ~Measure() { dc.SelectObject(old); }
    CDC dc;
    CFont font;
    CFont* old = nullptr;
};

const char* const kFitUsage = "qmutil text fit TEXT --width PX [--font FACE] [--height PX] [--rule ignore|better|on-spaces]";
const char* const kWrapUsage = "qmutil text wrap FILE --width PX [--font FACE] [--height PX]";

int Fit(const Options& o) {
    Measure m(o);
    const std::string& t = o.positional[0];
    LONG extent = 0;
    unsigned long before = qm::TextFitMeasureCount();
    int n = MapWidthToCharPos(&m.dc, o.width, t.c_str(), (int)t.size(), nullptr, &extent, o.rule, -1);
    unsigned long measures = qm::TextFitMeasureCount() - before;
    std::printf("fits      %d of %d characters\n", n, (int)t.size());
    std::printf("text      \"%s\"\n", t.substr(0, (size_t)n).c_str());
    std::printf("extent    %ld px of %ld (whole text %ld px)\n", (long)extent, o.width,
                (long)m.dc.GetTabbedTextExtent(t.c_str(), (int)t.size(), 0, nullptr).cx);
    std::printf("measures  %lu\n", measures);
    return 0;
}

int RunFit(const Args& args) { return Fit(Parse(args, kFitUsage)); }

int Wrap(const Options& o, const std::string& text) {
    Measure m(o);
    CString s(text.c_str(), (int)text.size());
    int lines = WordWrapString(s, (int)o.width, &m.dc);
    std::printf("%d line%s at %ld px\n", lines, lines == 1 ? "" : "s", o.width);
    const std::string& out = s.str();
    size_t start = 0;
    for (int i = 0; i < lines; ++i) {
        size_t end = out.find('\r', start);
        if (end == std::string::npos) end = out.size();
        std::string line = out.substr(start, end - start);
        std::printf("%5ld | %s\n", (long)m.dc.GetTabbedTextExtent(line.c_str(), (int)line.size(), 0, nullptr).cx,
                    line.c_str());
        start = end + 1;
    }
    return 0;
}

int RunWrap(const Args& args) {
    Options o = Parse(args, kWrapUsage);
    const std::string& path = o.positional[0];
    // The word wrap takes texts below 16000 characters.
    const std::string text = qmutil::ReadInputFile(path, 15999, true);
    return Wrap(o, text);
}

void TourFit() {
    qmutil::TourStep("text fit \"The quick brown fox jumps\" --width 120 --rule on-spaces");
    RunFit({"The quick brown fox jumps", "--width", "120", "--rule", "on-spaces"});
    qmutil::TourStep("text fit \"The quick brown fox jumps\" --width 120");
    RunFit({"The quick brown fox jumps", "--width", "120"});
}

void TourWrap() {
    qmutil::TourStep("text wrap note.txt --width 160 --font \"DejaVu Sans Mono\"");
    Options o;
    o.width = 160;
    o.face = "DejaVu Sans Mono";
    Wrap(o, "Call the printer about the toner.\r\nMeeting notes: bring the calendar, the ticklers and "
            "the to-do list; an extraordinarilylongwordthatcannotfit gets cut.");
}

qmutil::Registrar fit({"text", "fit", "how many characters of a text fit a pixel width",
                       "usage: qmutil text fit TEXT --width PX [--font FACE] [--height PX] [--rule ignore|better|on-spaces]\n"
                       "  Prints how many leading characters fit, their extent and the number of\n"
                       "  measurements made. --height is the font height as lfHeight (negative: em size,\n"
                       "  default -13); --rule: break anywhere (ignore, default), prefer word ends\n"
                       "  (better) or only at word ends (on-spaces).\n",
                       RunFit, TourFit, 65});
qmutil::Registrar wrap({"text", "wrap", "wrap a text file to a pixel width",
                        "usage: qmutil text wrap FILE|- --width PX [--font FACE] [--height PX]\n"
                        "  Prints the wrapped lines, each with its extent in pixels.\n",
                        RunWrap, TourWrap, 66});

}  // namespace
