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
#include "utils/platform/host.h"

namespace qm::platform {

// Receives every message of a window made by CreateWindowObject; owner is what was given.
typedef LRESULT (*WindowHandler)(void* owner, HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

// Registers a window class with the given style whose windows route to their handlers.
// True also when the class already exists.
bool RegisterWindowClass(const char* className, UINT style, HCURSOR cursor, HBRUSH background,
                         HICON icon);
// Creates a window owned by the calling thread; WM_NCCREATE and WM_CREATE reach the handler
// before this returns. Null on failure (unknown class, or the handler refused creation).
HWND CreateWindowObject(DWORD exStyle, const char* className, const char* windowName, DWORD style,
                        int x, int y, int width, int height, HWND parent, HMENU menu,
                        LPVOID createParam, WindowHandler handler, void* owner);
// Sends WM_DESTROY and WM_NCDESTROY, then forgets the window's timers and posted messages.
// Only the owning thread may destroy a window.
bool DestroyWindowObject(HWND hwnd);
bool IsWindowObject(HWND hwnd);
// What a window does with a message it does not handle.
LRESULT DefaultWindowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
// Sends a message to a window of the calling thread (the handler runs before this returns).
// POSIX: a window of another thread is not called; the result is 0.
LRESULT SendWindowMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

// Timers: the id that was set (nonzero) or 0 on failure. Setting an existing id restarts it.
UINT_PTR SetWindowTimer(HWND hwnd, UINT_PTR id, UINT elapse, TIMERPROC proc);
bool KillWindowTimer(HWND hwnd, UINT_PTR id);

// Posting, from any thread. A null window posts to the calling thread's own queue.
bool PostWindowMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
bool PostThreadQueueMessage(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam);
void PostQuit(int exitCode);
// Registered message numbers (0xC000 to 0xFFFF); the same name gives the same number.
UINT RegisterMessageName(const char* name);

// The calling thread's queue. Filters as PeekMessage's: a null window takes every message of
// the thread; first = last = 0 takes every message number.
bool PeekQueueMessage(MSG* msg, HWND hwnd, UINT first, UINT last, UINT removeFlags);
// Blocks until a message is taken; false when it is WM_QUIT.
bool GetQueueMessage(MSG* msg, HWND hwnd, UINT first, UINT last);
// Waits until something is in the queue or a timer is due, or at most ms milliseconds.
void WaitForQueueMessage(DWORD ms);
bool TranslateQueueMessage(const MSG* msg);
LRESULT DispatchQueueMessage(const MSG* msg);


// Shows the wait cursor (true) or the normal arrow (false). POSIX: nothing to show.
void ShowWaitCursor(bool wait);

}  // namespace qm::platform
