#include "terminal_frame.h"

#include <cstdio>

#include "utils/platform/host.h"

namespace qmutil {

namespace {

TerminalFrame* g_current = nullptr;

// qmutil's application object: its wait cursor is the frame's busy marker.
class TerminalApp : public CWinApp {
public:
    TerminalApp() : CWinApp("qmutil") {}
    void DoWaitCursor(int nCode) override {
        CWinApp::DoWaitCursor(nCode);
        if (g_current) g_current->SetBusy(m_nWaitCursorCount > 0);
    }
} g_app;

constexpr int kProgressNumber = 1;

}  // namespace

TerminalFrame::TerminalFrame() : m_terminal(qm::platform::IsTerminalStream(2)), m_previous(g_current) { g_current = this; }

TerminalFrame::~TerminalFrame() {
    if (m_terminal && m_drawn) Clear();
    g_current = m_previous;
}

TerminalFrame* TerminalFrame::Current() { return g_current; }

void TerminalFrame::SetStatusText(const char* text, int) {
    m_text = text ? text : "";
    if (m_terminal)
        Draw(true);
    else
        std::fprintf(stderr, "qmutil: %s\n", m_text.c_str());
}

void TerminalFrame::BeginProgress(ULONG count, int) {
    m_total = count;
    m_done = 0;
    m_lastTenth = m_lastPercent = -1;
    if (m_terminal) Draw(true);
}

void TerminalFrame::EndProgress(int) {
    m_total = 0;
    if (m_terminal) Draw(true);
}

void TerminalFrame::StepProgress(int) {
    if (m_done < m_total) ++m_done;
    if (m_terminal) {
        Draw(false);
        return;
    }
    int tenth = m_total ? (int)((unsigned long long)m_done * 10 / m_total) : 0;
    if (tenth != m_lastTenth) {
        m_lastTenth = tenth;
        std::fprintf(stderr, "qmutil: %s %d%%\n", m_text.c_str(), tenth * 10);
    }
}

void TerminalFrame::SetBusy(bool busy) {
    m_busy = busy;
    if (m_terminal) Draw(true);
}

void TerminalFrame::Clear() {
    std::fprintf(stderr, "\r\033[K");
    std::fflush(stderr);
    m_drawn = false;
}

void TerminalFrame::Draw(bool force) {
    int percent = m_total ? (int)((unsigned long long)m_done * 100 / m_total) : -1;
    DWORD now = qm::platform::SystemTickCount();
    // Redrawing every step would cost more than the work; a new percentage or 100 ms is enough.
    if (!force && percent == m_lastPercent && now - m_lastDraw < 100) return;
    m_lastPercent = percent;
    m_lastDraw = now;
    int columns = qm::platform::TerminalColumns();
    std::string line = m_busy ? "* " : "  ";
    if (m_total) {
        const int width = 20;
        int filled = percent * width / 100;
        line += "[" + std::string((size_t)filled, '#') + std::string((size_t)(width - filled), '.') + "] ";
        char pct[8];
        std::snprintf(pct, sizeof pct, "%3d%% ", percent);
        line += pct;
    }
    line += m_text;
    if ((int)line.size() >= columns) line.resize(columns > 1 ? (size_t)columns - 1 : 0);
    std::fprintf(stderr, "\r\033[K%s", line.c_str());
    std::fflush(stderr);
    m_drawn = true;
}

LongWork::LongWork(const char* message, ULONG count) {
    m_progress.SetQMWFrame(&m_frame);
    m_progress.Start(message, 0, count, kProgressNumber);
}

LongWork::~LongWork() { m_progress.End(); }

bool LongWork::Step() {
    m_progress.Update(kProgressNumber);
    return !Cancelled();
}

bool LongWork::Cancelled() {
    if (!m_cancelled && (EscapeKeyWasPressed() || m_watch.Cancelled())) m_cancelled = true;
    return m_cancelled;
}

}  // namespace qmutil
