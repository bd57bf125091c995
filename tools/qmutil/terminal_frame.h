// qmutil's host frame: the status text, the wait state and a progress bar drawn on standard
// error. On a terminal they share one line that is redrawn in place; otherwise each status
// change and every tenth of the progress is a plain line.
#pragma once

#include <string>

#include "utils/common/mfcutils.h"
#include "utils/framework/CWinApp.h"
#include "utils/platform/host.h"

namespace qmutil {

class TerminalFrame : public CQMWFrame {
public:
    TerminalFrame();
    ~TerminalFrame() override;

    void SetStatusText(const char* text, int reserved) override;
    void BeginProgress(ULONG count, int reserved) override;
    void EndProgress(int reserved) override;
    void StepProgress(int reserved) override;
    // The application's wait cursor, shown as a marker before the text.
    void SetBusy(bool busy);

    // The frame of the running command (null when none).
    static TerminalFrame* Current();

private:
    void Draw(bool force);
    void Clear();

    bool m_terminal;
    bool m_busy = false;
    bool m_drawn = false;
    std::string m_text;
    ULONG m_total = 0;
    ULONG m_done = 0;
    int m_lastTenth = -1;
    int m_lastPercent = -1;
    DWORD m_lastDraw = 0;
    TerminalFrame* m_previous;
};

// Long work of one command: a frame, a progress helper on it and the Escape / Ctrl-C watch.
// Start shows the status text and a progress bar running to count; Step advances it and
// answers whether the user asked to cancel.
class LongWork {
public:
    LongWork(const char* message, ULONG count);
    ~LongWork();
    bool Step();
    bool Cancelled();

private:
    TerminalFrame m_frame;
    CQMWProgressHelper m_progress;
    qm::platform::ConsoleCancelWatch m_watch;
    bool m_cancelled = false;
};

}  // namespace qmutil
