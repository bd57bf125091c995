#include "utils/common/utils_time.h"

#include "utils/common/CVLogger.h"
#include "utils/common/date_time.h"

#define QM_SOURCE_MODULE "Common\\utils"

CTime NowTime() { return CTime::GetCurrentTime(); }

COleDateTime NowTimeODT() {
    // Whole seconds: the ticks below the second are cut before the local conversion.
    const TimeUTC ticksPerSecond = 10000000ULL;
    TimeUTC now = GetCurrentTimeUTC();
    return TimeUTC2ODT(now - now % ticksPerSecond);
}

namespace {

bool LocalFields(const CTime& time, struct tm& fields) { return time.GetLocalTm(&fields) != nullptr; }

COleDateTime FromLocalFields(const struct tm& t) {
    return COleDateTime(t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
}

COleDateTime InvalidDate() {
    COleDateTime odt;
    odt.SetStatus(COleDateTime::invalid);
    return odt;
}

}  // namespace

COleDateTime Time2OleDateTime(const CTime& time) {
    struct tm t {};
    return LocalFields(time, t) ? FromLocalFields(t) : InvalidDate();
}

COleDateTime TimeToOle(const CTime& time) {
    struct tm t {};
    bool bTimeOk = LocalFields(time, t);
    CVASSERT(bTimeOk);
    return bTimeOk ? FromLocalFields(t) : InvalidDate();
}

CTime OleDateTime2Time(const COleDateTime& odt) {
    SYSTEMTIME st{};
    if (odt.GetStatus() != COleDateTime::valid || !odt.GetAsSystemTime(st)) return CTime();
    if (st.wYear < 1971 || st.wYear > 2999 || st.wMonth < 1 || st.wMonth > 12 || st.wDay < 1 || st.wDay > 31)
        return CTime();
    return CTime(st.wYear, st.wMonth, st.wDay, st.wHour, st.wMinute, st.wSecond);
}

CTime OleToTime(const COleDateTime& odt) {
    SYSTEMTIME st{};
    bool bTimeOk = odt.GetStatus() == COleDateTime::valid && odt.GetAsSystemTime(st);
    CVASSERT(bTimeOk);
    // A value that could not be broken down has no fields to convert: it gives the zero time
    // (the year test below would otherwise read fields that were never filled).
    if (!bTimeOk || st.wYear < 1900) return CTime();
    return CTime(st.wYear, st.wMonth, st.wDay, st.wHour, st.wMinute, st.wSecond);
}

COleDateTime ExtractDate(const COleDateTime& odt) {
    SYSTEMTIME st{};
    if (odt.GetStatus() != COleDateTime::valid || !odt.GetAsSystemTime(st)) return InvalidDate();
    return COleDateTime(st.wYear, st.wMonth, st.wDay, 0, 0, 0);
}

CTime ExtractDate(const CTime& time) {
    struct tm t {};
    if (!LocalFields(time, t)) return CTime();
    return CTime(t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, 0, 0, 0);
}

CTime ExtractTOD(const CTime& time) {
    // A time the runtime cannot break down has no hour: CTime rejects hour -1 with the
    // framework's general failure, as it does for any field out of range.
    return CTime(1994, 7, 13, time.GetHour(), time.GetMinute(), 0);
}

bool IsTimeValid(const CTime& time) {
    struct tm t {};
    return LocalFields(time, t);
}
