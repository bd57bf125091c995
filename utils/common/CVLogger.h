// Assertion and trace reporting. Every family reports a failed precondition with the literal
// text of the check, its source module and line, then carries on with its own fallback.
// The reports go to replaceable sinks; the default sinks write one line to the debug output.
#pragma once

#include "utils/framework/export.h"

typedef void (*CvAssertSink)(const char* expression, const char* sourceModule, int line);
typedef void (*CvTraceSink)(const char* text);

MFCQMUTILS_API void _cvassert_(const char* expression, const char* sourceModule, int line);
MFCQMUTILS_API void _cvtrace_(const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

// Install a sink (nullptr restores the default); returns the sink that was installed before.
MFCQMUTILS_API CvAssertSink SetCvAssertSink(CvAssertSink sink);
MFCQMUTILS_API CvTraceSink SetCvTraceSink(CvTraceSink sink);

// Checks a precondition: evaluates to true when it holds, otherwise reports its text with the
// module named by QM_SOURCE_MODULE (defined by each source file) and evaluates to false.
#define CVASSERT(expr) ((expr) ? true : (_cvassert_(#expr, QM_SOURCE_MODULE, __LINE__), false))
// Reports an assertion text that is not the literal expression (e.g. "0" for "never here").
#define CVASSERT_TEXT(text) _cvassert_(text, QM_SOURCE_MODULE, __LINE__)
