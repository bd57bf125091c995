// qmutil time: the current instant, conversions between the time scales, the n-th weekday
// of a month.
#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "command.h"
#include "utils/common/date_time.h"
#include "utils/common/utils_time.h"
#include "utils/framework/exceptions.h"

namespace {

const char kHelp[] =
    "usage: qmutil time <action> [arguments]\n"
    "\n"
    "actions:\n"
    "  now                          the current instant on every scale\n"
    "  convert <scale> <value>      one instant on every scale; <scale> is one of\n"
    "                                 utc    100-ns ticks since 1601-01-01 UTC (unsigned)\n"
    "                                 unix   microseconds since 1970-01-01 UTC (unsigned)\n"
    "                                 ms     milliseconds since 1601-01-01 UTC (signed)\n"
    "                                 ctime  seconds since 1970-01-01 UTC (signed)\n"
    "                                 ole    automation date, days since 1899-12-30 local\n"
    "  nth-dow <year> <month> <n> <weekday>\n"
    "                               day of month of the n-th weekday (1 = Sunday ... 7 =\n"
    "                               Saturday); n is 1..5, 9 (last) or 10; year from 1900\n"
    "  span                         microseconds taken by one reading of the stopwatch\n"
    "\n"
    "Local times follow the TZ setting. The 'local (ole)' line goes through file times, which\n"
    "apply today's UTC offset to every instant; the CTime line uses the offset the instant\n"
    "itself had. The scale arithmetic is unsigned and wraps outside the range both scales\n"
    "can hold, as the library's does.\n";

const std::int64_t kSecondsFrom1601To1970 = 11644473600LL;

std::uint64_t ParseU64(const std::string& text, const char* what) {
    char* end = nullptr;
    errno = 0;
    unsigned long long v = std::strtoull(text.c_str(), &end, 10);
    if (text.empty() || text[0] < '0' || text[0] > '9' || *end || errno)
        throw qmutil::UsageError(std::string("invalid ") + what + " '" + text + "' (expected an unsigned 64-bit integer)");
    return v;
}

std::int64_t ParseI64(const std::string& text, const char* what) {
    char* end = nullptr;
    errno = 0;
    long long v = std::strtoll(text.c_str(), &end, 10);
    bool startsWell = !text.empty() && ((text[0] >= '0' && text[0] <= '9') || text[0] == '-');
    if (!startsWell || *end || errno)
        throw qmutil::UsageError(std::string("invalid ") + what + " '" + text + "' (expected a signed 64-bit integer)");
    return v;
}

std::string Describe(const COleDateTime& odt) {
    char buf[64];
    if (odt.GetStatus() != COleDateTime::valid) return "invalid";
    std::snprintf(buf, sizeof buf, "%.6f", (double)odt);
    return std::string(buf) + " (" + (const char*)odt.Format("%Y-%m-%d %H:%M:%S") + ")";
}

std::string Describe(const CTime& t) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%" PRId64, (std::int64_t)t.GetTime());
    if (!IsTimeValid(t)) return std::string(buf) + " (cannot be broken down)";
    return std::string(buf) + " (" + (const char*)t.Format("%Y-%m-%d %H:%M:%S %a") + ")";
}

// Every scale of one instant. The CTime line is whole seconds since 1970 of the same instant.
void PrintScales(TimeUTC t) {
    std::printf("TimeUTC       %" PRIu64 "\n", (std::uint64_t)t);
    std::printf("TimeUnix      %" PRIu64 "\n", (std::uint64_t)TimeUTC2TimeUnix(t));
    std::printf("milliseconds  %" PRId64 "\n", (std::int64_t)TimeUTC2MilliSeconds(t));
    std::printf("seconds       %.7f\n", TimeUTC2Seconds(t));
    COleDateTime odt = TimeUTC2ODT(t);
    std::printf("local (ole)   %s\n", Describe(odt).c_str());
    CTime ct((std::int64_t)(t / 10000000ULL) - kSecondsFrom1601To1970);
    std::printf("CTime         %s\n", Describe(ct).c_str());
    CTime back = OleDateTime2Time(odt);
    std::printf("ole -> CTime  %s\n", back.GetTime() ? Describe(back).c_str() : "0 (outside 1971..2999 or invalid)");
}

int RunNow(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 0, "time now");
    PrintScales(GetCurrentTimeUTC());
    CDate today = Today();
    std::printf("today         %04d-%02d-%02d\n", today.GetYear(), today.GetMonth(), today.GetDay());
    std::printf("counter       %.6f s\n", GetTimePrecision());
    return 0;
}

int RunConvert(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 2, "time convert <utc|unix|ms|ctime|ole> <value>");
    const std::string& scale = args[0];
    const std::string& value = args[1];
    TimeUTC t = 0;
    if (scale == "utc") {
        t = ParseU64(value, "TimeUTC");
    } else if (scale == "unix") {
        t = TimeUnix2TimeUTC(ParseU64(value, "TimeUnix"));
    } else if (scale == "ms") {
        t = MilliSeconds2TimeUTC(ParseI64(value, "milliseconds"));
    } else if (scale == "ctime") {
        std::int64_t secs = ParseI64(value, "CTime seconds");
        // Whole seconds from 1601 must fit the tick count: about 58 000 years either way.
        if (secs < -kSecondsFrom1601To1970 || secs > (std::int64_t)(UINT64_MAX / 10000000ULL) - kSecondsFrom1601To1970)
            throw qmutil::UsageError("CTime seconds '" + value + "' lie outside the TimeUTC range");
        t = (TimeUTC)(secs + kSecondsFrom1601To1970) * 10000000ULL;
    } else if (scale == "ole") {
        COleDateTime odt(qmutil::ParseDouble(value, "automation date"));
        t = ODT2TimeUTC(odt);
        if (t == 0) throw qmutil::UsageError("automation date '" + value + "' cannot be converted (valid range is 1601..9999)");
    } else {
        throw qmutil::UsageError("unknown scale '" + scale + "' (expected utc, unix, ms, ctime or ole)");
    }
    PrintScales(t);
    return 0;
}

int RunNthDow(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 4, "time nth-dow <year> <month> <n> <weekday>");
    int year = (int)qmutil::ParseLong(args[0], "year");
    int month = (int)qmutil::ParseLong(args[1], "month");
    int n = (int)qmutil::ParseLong(args[2], "n");
    int weekday = (int)qmutil::ParseLong(args[3], "weekday");
    if (year < 1900) throw qmutil::UsageError("year " + args[0] + " is before 1900");
    if (month < 1 || month > 12) throw qmutil::UsageError("month " + args[1] + " is outside 1..12");
    if (!((n >= 1 && n <= 5) || n == 9 || n == 10)) throw qmutil::UsageError("n " + args[2] + " is not 1..5, 9 or 10");
    if (weekday < 1 || weekday > 7) throw qmutil::UsageError("weekday " + args[3] + " is outside 1 (Sunday)..7 (Saturday)");
    int day = 0;
    try {
        day = DayOfNthDOW(year, month, n, weekday);
    } catch (CException* e) {
        e->Delete();
        throw qmutil::UsageError("the library refused the date");
    }
    static const char* const kNames[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
    std::printf("%d  (%04d-%02d-%02d, %s)\n", day, year, month, day, kNames[weekday - 1]);
    return 0;
}

int RunSpan(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 0, "time span");
    GetSpan(true);
    double reading = GetTimePrecision();
    int span = GetSpan(false);
    std::printf("counter reading %.9f s; span of one reading: %d us\n", reading, span);
    return 0;
}

int Run(const std::vector<std::string>& args) {
    if (args.empty()) throw qmutil::UsageError("missing action (see qmutil time --help)");
    std::vector<std::string> rest(args.begin() + 1, args.end());
    if (!rest.empty() && (rest[0] == "--help" || rest[0] == "-h")) {
        std::printf("%s", kHelp);
        return 0;
    }
    const std::string& action = args[0];
    if (action == "now") return RunNow(rest);
    if (action == "convert") return RunConvert(rest);
    if (action == "nth-dow") return RunNthDow(rest);
    if (action == "span") return RunSpan(rest);
    throw qmutil::UsageError("unknown action '" + action + "' (see qmutil time --help)");
}

void Step(const char* line, const std::vector<std::string>& args) {
    qmutil::TourStep(line);
    std::fflush(stdout);
    Run(args);
}

void Tour() {
    Step("time convert utc 116444736000000000", {"convert", "utc", "116444736000000000"});
    Step("time convert ole 36526.5", {"convert", "ole", "36526.5"});
    Step("time nth-dow 2012 2 9 4", {"nth-dow", "2012", "2", "9", "4"});
    Step("time nth-dow 2012 2 5 5", {"nth-dow", "2012", "2", "5", "5"});
}

const qmutil::Registrar kRegistrar(qmutil::Command{
    "time", nullptr, "instants on every time scale, the n-th weekday of a month", kHelp, Run, Tour, 20});

}  // namespace
