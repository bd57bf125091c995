#include "utils/platform/locale.h"

#include <cstring>
#include <map>
#include <mutex>
#include <string>

namespace qm::platform {

namespace {

std::mutex g_pinLock;
std::map<LCTYPE, std::string>& Pins() {
    static std::map<LCTYPE, std::string> pins;
    return pins;
}

struct EnglishItem {
    LCTYPE item;
    const char* text;
};

const EnglishItem kEnglishUS[] = {
    {LOCALE_SDECIMAL, "."},        {LOCALE_STHOUSAND, ","},
    {LOCALE_IDIGITS, "2"},         {LOCALE_SCURRENCY, "$"},
    {LOCALE_ICURRDIGITS, "2"},     {LOCALE_SDATE, "/"},
    {LOCALE_STIME, ":"},           {LOCALE_SSHORTDATE, "M/d/yyyy"},
    {LOCALE_SLONGDATE, "dddd, MMMM d, yyyy"},
    {LOCALE_IDATE, "0"},           {LOCALE_ILDATE, "0"},
    {LOCALE_ITIME, "0"},           {LOCALE_ITLZERO, "0"},
    {LOCALE_S1159, "AM"},          {LOCALE_S2359, "PM"},
    {LOCALE_STIMEFORMAT, "h:mm:ss tt"},
    {LOCALE_SDAYNAME1 + 0, "Monday"},    {LOCALE_SDAYNAME1 + 1, "Tuesday"},
    {LOCALE_SDAYNAME1 + 2, "Wednesday"}, {LOCALE_SDAYNAME1 + 3, "Thursday"},
    {LOCALE_SDAYNAME1 + 4, "Friday"},    {LOCALE_SDAYNAME1 + 5, "Saturday"},
    {LOCALE_SDAYNAME1 + 6, "Sunday"},
    {LOCALE_SABBREVDAYNAME1 + 0, "Mon"}, {LOCALE_SABBREVDAYNAME1 + 1, "Tue"},
    {LOCALE_SABBREVDAYNAME1 + 2, "Wed"}, {LOCALE_SABBREVDAYNAME1 + 3, "Thu"},
    {LOCALE_SABBREVDAYNAME1 + 4, "Fri"}, {LOCALE_SABBREVDAYNAME1 + 5, "Sat"},
    {LOCALE_SABBREVDAYNAME1 + 6, "Sun"},
    {LOCALE_SMONTHNAME1 + 0, "January"},   {LOCALE_SMONTHNAME1 + 1, "February"},
    {LOCALE_SMONTHNAME1 + 2, "March"},     {LOCALE_SMONTHNAME1 + 3, "April"},
    {LOCALE_SMONTHNAME1 + 4, "May"},       {LOCALE_SMONTHNAME1 + 5, "June"},
    {LOCALE_SMONTHNAME1 + 6, "July"},      {LOCALE_SMONTHNAME1 + 7, "August"},
    {LOCALE_SMONTHNAME1 + 8, "September"}, {LOCALE_SMONTHNAME1 + 9, "October"},
    {LOCALE_SMONTHNAME1 + 10, "November"}, {LOCALE_SMONTHNAME1 + 11, "December"},
    {LOCALE_SABBREVMONTHNAME1 + 0, "Jan"},  {LOCALE_SABBREVMONTHNAME1 + 1, "Feb"},
    {LOCALE_SABBREVMONTHNAME1 + 2, "Mar"},  {LOCALE_SABBREVMONTHNAME1 + 3, "Apr"},
    {LOCALE_SABBREVMONTHNAME1 + 4, "May"},  {LOCALE_SABBREVMONTHNAME1 + 5, "Jun"},
    {LOCALE_SABBREVMONTHNAME1 + 6, "Jul"},  {LOCALE_SABBREVMONTHNAME1 + 7, "Aug"},
    {LOCALE_SABBREVMONTHNAME1 + 8, "Sep"},  {LOCALE_SABBREVMONTHNAME1 + 9, "Oct"},
    {LOCALE_SABBREVMONTHNAME1 + 10, "Nov"}, {LOCALE_SABBREVMONTHNAME1 + 11, "Dec"},
};

}  // namespace

int CopyLocaleText(const char* text, char* buf, int bufSize) {
    int needed = (int)std::strlen(text) + 1;
    if (bufSize == 0) return needed;
    if (!buf || bufSize < needed) return 0;
    std::memcpy(buf, text, (size_t)needed);
    return needed;
}

const char* EnglishUSLocaleInfo(LCTYPE item) {
    for (const EnglishItem& e : kEnglishUS)
        if (e.item == item) return e.text;
    return nullptr;
}

int GetUserLocaleInfo(LCTYPE item, char* buf, int bufSize) {
    {
        std::lock_guard<std::mutex> lock(g_pinLock);
        auto it = Pins().find(item);
        if (it != Pins().end()) return CopyLocaleText(it->second.c_str(), buf, bufSize);
    }
    return NativeUserLocaleInfo(item, buf, bufSize);
}

void PinLocaleInfo(LCTYPE item, const char* value) {
    std::lock_guard<std::mutex> lock(g_pinLock);
    if (value)
        Pins()[item] = value;
    else
        Pins().erase(item);
}

void PinLocaleToEnglishUS() {
    std::lock_guard<std::mutex> lock(g_pinLock);
    for (const EnglishItem& e : kEnglishUS) Pins()[e.item] = e.text;
}

void UnpinAllLocaleInfo() {
    std::lock_guard<std::mutex> lock(g_pinLock);
    Pins().clear();
}

}  // namespace qm::platform
