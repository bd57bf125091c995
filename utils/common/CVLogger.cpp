#include "utils/common/CVLogger.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "utils/platform/debugout.h"

namespace {

void DefaultAssertSink(const char* expression, const char* sourceModule, int line) {
    char text[1024];
    std::snprintf(text, sizeof text, "%s(%d): assertion failed: %s\n", sourceModule ? sourceModule : "?", line,
                  expression ? expression : "");
    qm::platform::WriteDebugOutput(text);
}

void DefaultTraceSink(const char* text) { qm::platform::WriteDebugOutput(text); }

// The runtime's "I64" length modifier ("%I64d", "%*I64x") written as "ll", which every
// target's formatter understands.
std::string PortableFormat(const char* format) {
    std::string out;
    for (const char* p = format; *p;) {
        out += *p;
        if (*p++ != '%') continue;
        while (*p && std::strchr("-+ #0123456789.*", *p)) out += *p++;
        if (p[0] == 'I' && p[1] == '6' && p[2] == '4') {
            out += "ll";
            p += 3;
        } else if (*p == '%') {
            out += *p++;
        }
    }
    return out;
}

std::atomic<CvAssertSink> g_assertSink{&DefaultAssertSink};
std::atomic<CvTraceSink> g_traceSink{&DefaultTraceSink};

}  // namespace

void _cvassert_(const char* expression, const char* sourceModule, int line) {
    g_assertSink.load()(expression, sourceModule, line);
}

void _cvtrace_(const char* format, ...) {
    if (!format) return;
    std::string portable;
    if (std::strstr(format, "I64")) {
        portable = PortableFormat(format);
        format = portable.c_str();
    }
    va_list args, probe;
    va_start(args, format);
    va_copy(probe, args);
    int n = std::vsnprintf(nullptr, 0, format, probe);
    va_end(probe);
    std::string text(n > 0 ? (size_t)n : 0, '\0');
    if (n > 0) std::vsnprintf(&text[0], (size_t)n + 1, format, args);
    va_end(args);
    g_traceSink.load()(text.c_str());
}

CvAssertSink SetCvAssertSink(CvAssertSink sink) { return g_assertSink.exchange(sink ? sink : &DefaultAssertSink); }

CvTraceSink SetCvTraceSink(CvTraceSink sink) { return g_traceSink.exchange(sink ? sink : &DefaultTraceSink); }
