// qmutil date info | add | add-months: day-number dates.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "command.h"
#include "utils/common/date.h"

namespace {

const char* const kWeekdays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

// "YYYY-MM-DD" (the year may be negative) or "today"; fields are stored as given, so that
// out-of-range months and days can be explored, but each must fit its field.
CDate ParseDate(const std::string& text) {
    if (text == "today") {
        CDate d;
        d.SetToday();
        return d;
    }
    long y = 0, m = 0, d = 0;
    int used = 0;
    if (std::sscanf(text.c_str(), "%ld-%ld-%ld%n", &y, &m, &d, &used) != 3 || used != (int)text.size() ||
        y < -32768 || y > 32767 || m < -128 || m > 127 || d < -128 || d > 127)
        throw qmutil::UsageError("invalid date '" + text + "' (expected YYYY-MM-DD or 'today')");
    return CDate((int)y, (int)m, (int)d);
}

std::string Show(const CDate& d) {
    char buf[48];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", d.GetYear(), d.GetMonth(), d.GetDay());
    return buf;
}

void PrintInfo(const CDate& d) {
    std::printf("date      %s\n", Show(d).c_str());
    std::printf("packed    0x%08X\n", (unsigned)d.AsDWORD());
    std::printf("valid     %s\n", d.IsValid() ? "yes" : d.IsNull() ? "no (null date)" : "no");
    std::printf("scalar    %ld\n", (long)d.GetScalar());
    int w = d.GetDayOfWeek();
    std::printf("weekday   %d (%s)\n", w, w >= 1 && w <= 7 ? kWeekdays[w - 1] : "?");
    std::printf("leap      %s\n", d.IsLeap() ? "yes" : "no");
    std::printf("days      %d in the month\n", d.GetDaysPerMonth());
    std::printf("week      %d (week holding 1 January), %d (first four-day week), %d (first full week); weeks start on Sunday\n",
                d.GetWeekNumber(0, 0), d.GetWeekNumber(1, 0), d.GetWeekNumber(2, 0));
}

int RunInfo(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "date info YYYY-MM-DD");
    PrintInfo(ParseDate(args[0]));
    return 0;
}

int RunAdd(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 2, "date add YYYY-MM-DD DAYS");
    CDate d = ParseDate(args[0]) + (int)qmutil::ParseLong(args[1], "number of days");
    std::printf("%s\n", Show(d).c_str());
    return 0;
}

int RunAddMonths(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 2, "date add-months YYYY-MM-DD MONTHS");
    CDate d = ParseDate(args[0]);
    d.AddMonth((int)qmutil::ParseLong(args[1], "number of months"));
    std::printf("%s%s\n", Show(d).c_str(), d.IsValid() ? "" : "  (not a valid date)");
    return 0;
}

void TourInfo() {
    qmutil::TourStep("date info 2012-07-04");
    PrintInfo(CDate(2012, 7, 4));
}

void TourAdd() {
    const char* steps[][2] = {{"2001-01-31", "30"}, {"2000-03-01", "-1"}, {"2000-01-01", "1000000"}};
    for (auto& s : steps) {
        std::string line = std::string("date add ") + s[0] + " " + s[1];
        qmutil::TourStep(line.c_str());
        RunAdd({s[0], s[1]});
    }
}

void TourAddMonths() {
    qmutil::TourStep("date add-months 2001-05-15 13");
    RunAddMonths({"2001-05-15", "13"});
    qmutil::TourStep("date add-months 2001-01-31 1");
    RunAddMonths({"2001-01-31", "1"});
}

qmutil::Registrar info({"date", "info", "packed word, scalar, weekday, leap year, month length, week numbers",
                        "usage: qmutil date info YYYY-MM-DD|today\n"
                        "  Shows the packed word, day number, weekday, leap year, days in the month and\n"
                        "  the week number under each week rule.\n",
                        RunInfo, TourInfo, 10});
qmutil::Registrar add({"date", "add", "add (or subtract) days",
                       "usage: qmutil date add YYYY-MM-DD DAYS\n  DAYS may be negative.\n", RunAdd, TourAdd, 11});
qmutil::Registrar addMonths({"date", "add-months", "shift by months, without clamping the day",
                             "usage: qmutil date add-months YYYY-MM-DD MONTHS\n"
                             "  The day is kept as it is (31 January + 1 month is 31 February, reported\n"
                             "  as not valid); a shift back past January is refused.\n",
                             RunAddMonths, TourAddMonths, 12});

}  // namespace
