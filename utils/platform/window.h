// Windows, message queues and timers.
//
// Windows: real windows of classes whose window procedure routes every message to the
// handler given at creation; the thread's own message queue, PostMessage, SetTimer.
// POSIX: a window is a record with a handler, owned by the thread that created it. Every
// thread has its own message queue; posting works from any thread and wakes the owner;
// timers are due times that the owner's queue turns into WM_TIMER when nothing is posted,
// as Windows does. Messages are handled only by the owning thread's pump.
#pragma once

#include <functional>

#include "utils/framework/winmsg.h"
#include "utils/framework/export.h"

namespace qm::platform {

// Receives every message of a window made by CreateWindowObject; owner is what was given.
typedef LRESULT (*WindowHandler)(void* owner, HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

// Registers a window class with the given style whose windows route to their handlers.
// True also when the class already exists.
MFCQMUTILS_API bool RegisterWindowClass(const char* className, UINT style, HCURSOR cursor, HBRUSH background,
                                        HICON icon);
// Creates a window owned by the calling thread; WM_NCCREATE and WM_CREATE reach the handler
// before this returns. Null on failure (unknown class, or the handler refused creation).
MFCQMUTILS_API HWND CreateWindowObject(DWORD exStyle, const char* className, const char* windowName, DWORD style,
                                       int x, int y, int width, int height, HWND parent, HMENU menu,
                                       LPVOID createParam, WindowHandler handler, void* owner);
// Sends WM_DESTROY and WM_NCDESTROY, then forgets the window's timers and posted messages.
// Only the owning thread may destroy a window.
MFCQMUTILS_API bool DestroyWindowObject(HWND hwnd);
MFCQMUTILS_API bool IsWindowObject(HWND hwnd);
// What a window does with a message it does not handle.
MFCQMUTILS_API LRESULT DefaultWindowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
// Sends a message to a window of the calling thread (the handler runs before this returns).
// POSIX: a window of another thread is not called; the result is 0.
MFCQMUTILS_API LRESULT SendWindowMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

// Timers: the id that was set (nonzero) or 0 on failure. Setting an existing id restarts it.
MFCQMUTILS_API UINT_PTR SetWindowTimer(HWND hwnd, UINT_PTR id, UINT elapse, TIMERPROC proc);
MFCQMUTILS_API bool KillWindowTimer(HWND hwnd, UINT_PTR id);

// Posting, from any thread. A null window posts to the calling thread's own queue.
MFCQMUTILS_API bool PostWindowMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
MFCQMUTILS_API bool PostThreadQueueMessage(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam);
MFCQMUTILS_API void PostQuit(int exitCode);
// Registered message numbers (0xC000 to 0xFFFF); the same name gives the same number.
MFCQMUTILS_API UINT RegisterMessageName(const char* name);

// The calling thread's queue. Filters as PeekMessage's: a null window takes every message of
// the thread; first = last = 0 takes every message number.
MFCQMUTILS_API bool PeekQueueMessage(MSG* msg, HWND hwnd, UINT first, UINT last, UINT removeFlags);
// Blocks until a message is taken; false when it is WM_QUIT.
MFCQMUTILS_API bool GetQueueMessage(MSG* msg, HWND hwnd, UINT first, UINT last);
// Waits until something is in the queue or a timer is due, or at most ms milliseconds.
MFCQMUTILS_API void WaitForQueueMessage(DWORD ms);
MFCQMUTILS_API bool TranslateQueueMessage(const MSG* msg);
MFCQMUTILS_API LRESULT DispatchQueueMessage(const MSG* msg);

// The pump a host or a test runs on a thread that owns windows. Each dispatches messages as
// they come (WM_QUIT is put back so that an outer loop sees it) and returns:
// - PumpWaitingMessages: once the queue holds nothing more; the number dispatched (a queue
//   refilled as fast as it is emptied keeps it going: prefer the timed pumps then);
// - PumpMessagesFor: once ms milliseconds have passed;
// - PumpMessagesUntil: true as soon as done() holds (checked before each wait), false when
//   timeoutMs milliseconds passed first.
MFCQMUTILS_API int PumpWaitingMessages();
MFCQMUTILS_API void PumpMessagesFor(DWORD ms);
MFCQMUTILS_API bool PumpMessagesUntil(const std::function<bool()>& done, DWORD timeoutMs);

// Milliseconds since the system started, wrapping at 2^32 (GetTickCount). A host or a test
// may install its own tick source (nullptr restores the system's); returns the previous one.
typedef DWORD (*TickSource)();
MFCQMUTILS_API DWORD TickCount();
MFCQMUTILS_API TickSource SetTickSource(TickSource source);
// The system's tick count, whatever source is installed.
MFCQMUTILS_API DWORD SystemTickCount();

// Shows the wait cursor (true) or the normal arrow (false). POSIX: nothing to show.
MFCQMUTILS_API void ShowWaitCursor(bool wait);

}  // namespace qm::platform
