// The terminal a command-line host runs in: whether a standard stream is a terminal, its
// width, and a watch that turns Escape (typed on the terminal) and Ctrl-C into an Escape
// key-down message on the watching thread's queue, so that long loops see them through
// EscapeKeyWasPressed.
#pragma once

#include <atomic>

#include "utils/framework/winmsg.h"
#include "utils/framework/export.h"

namespace qm::platform {

// stream: 1 standard output, 2 standard error.
MFCQMUTILS_API bool IsTerminalStream(int stream);
// Columns of the terminal on standard error; 80 when unknown.
MFCQMUTILS_API int TerminalColumns();

class MFCQMUTILS_API ConsoleCancelWatch {
public:
    // Starts watching for the calling thread; the terminal's settings and the interrupt
    // handling are restored by the destructor. One watch at a time.
    ConsoleCancelWatch();
    ~ConsoleCancelWatch();
    ConsoleCancelWatch(const ConsoleCancelWatch&) = delete;
    ConsoleCancelWatch& operator=(const ConsoleCancelWatch&) = delete;

    // True once Escape or Ctrl-C was seen (also when its key message was taken by a pump).
    bool Cancelled() const;

private:
    void* m_impl;
};

}  // namespace qm::platform
