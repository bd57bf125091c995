// Test helpers: capture what the library reports through its assertion and trace sinks.
#pragma once

#include <string>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/framework/exceptions.h"

namespace qmtest {

struct AssertReport { std::string expression; std::string module; int line; };

// Installs a recording assertion sink for its lifetime (and restores the previous one).
class RecordingAssertSink {
public:
    RecordingAssertSink();
    ~RecordingAssertSink();
    RecordingAssertSink(const RecordingAssertSink&) = delete;
    RecordingAssertSink& operator=(const RecordingAssertSink&) = delete;

    const std::vector<AssertReport>& Reports() const;
    // The reported expression texts, in order.
    std::vector<std::string> Expressions() const;
    void Clear();

private:
    CvAssertSink m_previous;
};

// Installs a recording trace sink for its lifetime.
class RecordingTraceSink {
public:
    RecordingTraceSink();
    ~RecordingTraceSink();
    RecordingTraceSink(const RecordingTraceSink&) = delete;
    RecordingTraceSink& operator=(const RecordingTraceSink&) = delete;
    std::string Text() const;

private:
    CvTraceSink m_previous;
};

// Runs f and returns the cause of the framework exception E it throws (deleted), or -1.
template <class E, class F>
int ThrownCause(F f) {
    try {
        f();
    } catch (E* e) {
        const int cause = (int)e->m_cause;
        e->Delete();
        return cause;
    }
    return -1;
}

// Runs f and returns the SCODE of the COleException it throws (deleted): S_OK when it throws
// nothing, 1 for another framework exception.
template <class F>
SCODE OleFailure(F f) {
    try {
        f();
    } catch (CException* e) {
        auto* ole = dynamic_cast<COleException*>(e);
        const SCODE sc = ole ? ole->m_sc : 1;
        e->Delete();
        return sc;
    }
    return S_OK;
}

}  // namespace qmtest
