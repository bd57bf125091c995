#include "tests/support/recording_sink.h"

namespace qmtest {

namespace {
std::vector<AssertReport> g_reports;
std::string g_trace;

void RecordAssert(const char* expression, const char* module, int line) {
    g_reports.push_back({expression ? expression : "", module ? module : "", line});
}

void RecordTrace(const char* text) { g_trace += text ? text : ""; }
}  // namespace

RecordingAssertSink::RecordingAssertSink() : m_previous(SetCvAssertSink(&RecordAssert)) { g_reports.clear(); }
RecordingAssertSink::~RecordingAssertSink() { SetCvAssertSink(m_previous); }
const std::vector<AssertReport>& RecordingAssertSink::Reports() const { return g_reports; }
void RecordingAssertSink::Clear() { g_reports.clear(); }

std::vector<std::string> RecordingAssertSink::Expressions() const {
    std::vector<std::string> out;
    for (const AssertReport& r : g_reports) out.push_back(r.expression);
    return out;
}

RecordingTraceSink::RecordingTraceSink() : m_previous(SetCvTraceSink(&RecordTrace)) { g_trace.clear(); }
RecordingTraceSink::~RecordingTraceSink() { SetCvTraceSink(m_previous); }
std::string RecordingTraceSink::Text() const { return g_trace; }

}  // namespace qmtest
