// qmutil date format | scan | find: dates to text with the library's format language and the
// user's regional settings, and dates read back from text.
#include <cstdio>
#include <string>
#include <vector>

#include "command.h"
#include "utils/common/date.h"

namespace {

// "YYYY-MM-DD" (the year may have 1 to 5 digits) as a valid date, or "today" (UTC).
CDate ParseIsoDate(const std::string& text, const char* what) {
    if (text == "today") {
        CDate today;
        today.SetToday();
        return today;
    }
    int y = 0, m = 0, d = 0;
    size_t i = 0, digits = 0;
    auto number = [&](int& out, size_t maxDigits) {
        digits = 0;
        while (i < text.size() && text[i] >= '0' && text[i] <= '9' && digits < maxDigits) {
            out = out * 10 + (text[i++] - '0');
            ++digits;
        }
        return digits > 0;
    };
    bool ok = number(y, 5) && i < text.size() && text[i++] == '-' && number(m, 2) && i < text.size() &&
              text[i++] == '-' && number(d, 2) && i == text.size() && y <= 32767;
    CDate date(y, m, d);
    if (!ok || !date.IsValid())
        throw qmutil::UsageError(std::string("invalid ") + what + " '" + text + "' (expected a date YYYY-MM-DD or 'today')");
    return date;
}

std::string Iso(const CDate& d) { return std::string(d.Format("%Y-%m-%d")); }

int RunFormat(const std::vector<std::string>& args) {
    if (args.empty() || args.size() > 2) throw qmutil::UsageError("usage: qmutil date format YYYY-MM-DD [FORMAT]");
    CDate date = ParseIsoDate(args[0], "date");
    if (args.size() == 2) {
        std::printf("%s\n", date.Format(args[1].c_str()).GetString());
        return 0;
    }
    std::printf("short: %s\nlong:  %s\n", date.AsString(0).GetString(), date.AsString(1).GetString());
    return 0;
}

int RunScan(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "date scan TEXT");
    WinDateTime::Initialize();
    const char* start = args[0].c_str();
    const char* p = start;
    CDate date = WinDateTime::ScanDate(p);
    if (date.IsNull()) {
        std::printf("no date in the short-date picture \"%s\"\n", WinDateTime::descShortDate.GetString());
        return 1;
    }
    std::printf("%s (read %d characters)\n", Iso(date).c_str(), (int)(p - start));
    return 0;
}

int RunFind(const std::vector<std::string>& args) {
    if (args.size() != 1 && args.size() != 3)
        throw qmutil::UsageError("usage: qmutil date find TEXT [FROM TO]");
    CDate from(1, 1, 1), to(32767, 12, 31);
    if (args.size() == 3) {
        from = ParseIsoDate(args[1], "from date");
        to = ParseIsoDate(args[2], "to date");
    }
    WinDateTime::Initialize();
    const char* p = args[0].c_str();
    long at = CDate::FindDate(p, from, to);
    if (at < 0) {
        std::printf("no date between %s and %s\n", Iso(from).c_str(), Iso(to).c_str());
        return 1;
    }
    const char* found = args[0].c_str() + at;
    CDate date = WinDateTime::ScanDate(found);
    std::printf("%s at offset %ld: \"%s\"\n", Iso(date).c_str(), at,
                args[0].substr((size_t)at, (size_t)(p - args[0].c_str()) - (size_t)at).c_str());
    return 0;
}

void Tour() {
    const char* steps[][3] = {
        {"date format 2012-07-04 \"%A %d %B %Y\"", "2012-07-04", "%A %d %B %Y"},
        {"date format 2005-01-09 \"%a %b %D, '%y (weekday %w)\"", "2005-01-09", "%a %b %D, '%y (weekday %w)"},
        {"date format 2012-07-04", "2012-07-04", nullptr},
    };
    for (const auto& s : steps) {
        qmutil::TourStep(s[0]);
        std::vector<std::string> args{s[1]};
        if (s[2]) args.push_back(s[2]);
        RunFormat(args);
    }
    // The scan and find examples are written in the user's own short form, so that they read
    // back whatever the regional settings are.
    std::string shortText = CDate(2012, 12, 25).AsString(0).GetString();
    std::string line = "date scan " + shortText;
    qmutil::TourStep(line.c_str());
    RunScan({shortText});
    std::string text = "invoice 112/7, paid " + std::string(CDate(2012, 3, 4).AsString(0).GetString());
    line = "date find \"" + text + "\"";
    qmutil::TourStep(line.c_str());
    RunFind({text});
}

const char* const kFormatHelp =
    "usage: qmutil date format YYYY-MM-DD|today [FORMAT]\n"
    "  Renders the date with FORMAT, where %A/%a are the weekday name (full / three letters),\n"
    "  %B/%b the month name, %d/%D the day (two digits / no leading zero), %m the month,\n"
    "  %Y/%y the year (four / two digits), %w the weekday digit (0 = Sunday), %% a percent.\n"
    "  Without FORMAT prints the short and long forms of the user's regional settings.\n";
const char* const kScanHelp =
    "usage: qmutil date scan TEXT\n"
    "  Reads a date typed in the regional short-date picture (e.g. 12/25/2012, or 12/25 for\n"
    "  this year) and prints it as YYYY-MM-DD. Exit code 1 when TEXT is no such date.\n";
const char* const kFindHelp =
    "usage: qmutil date find TEXT [FROM TO]\n"
    "  Finds the first date (short-date picture) in TEXT lying in FROM..TO (YYYY-MM-DD,\n"
    "  inclusive; any date by default) and prints it with its offset. Exit code 1 when none.\n";

qmutil::Registrar g_format({"date", "format", "render a date with a format or the regional forms", kFormatHelp,
                            RunFormat, Tour, 13});
qmutil::Registrar g_scan({"date", "scan", "read a date typed in the regional short-date picture", kScanHelp,
                          RunScan, nullptr, 14});
qmutil::Registrar g_find({"date", "find", "find the first date in a range within a text", kFindHelp, RunFind,
                          nullptr, 15});

}  // namespace
