// What a host program may call besides the framework subset and the library's modules: the
// hooks a host needs to run the library, above all on POSIX where no Windows system stands
// behind it. This is the one public header of utils/platform; every other platform header is
// internal to the library (not installed, not exported).
//
// - messages: the pump a thread that owns windows runs, and the tick source;
// - paths: the drive map between Windows paths and native ones (POSIX);
// - errors: the last error the library's file and registry calls leave;
// - the registry: where the current user's hive is kept, and the hive itself (on POSIX the
//   store the library keeps its settings in; on Windows the real registry);
// - the message-box service through which the library shows its messages;
// - the locale pins;
// - COM streams over memory or a file, which the bitmap loaders read;
// - the terminal of a command-line host (width, Escape and Ctrl-C as cancel);
// - the temporary-file list is detached with the call declared beside it in
//   utils/common/TempList.h.
//
// Every call works on both targets; where one is a no-op on Windows, it says so.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "utils/framework/export.h"
#include "utils/framework/objidl.h"
#include "utils/framework/winmsg.h"
#include "utils/framework/winnls.h"
#include "utils/framework/winreg.h"
#include "utils/framework/winsys.h"
#include "utils/framework/wintypes.h"

namespace qm::platform {

// --- Messages and ticks ----------------------------------------------------------------------

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

// Suspends the calling thread (Sleep).
MFCQMUTILS_API void SleepMilliseconds(DWORD ms);

// --- Paths: the drive map --------------------------------------------------------------------

// The native path that a Windows path names (relative paths are taken from the current folder
// of their drive). On Windows the path is returned as it is. False, with the last error set
// (ERROR_PATH_NOT_FOUND for an unmapped drive, ERROR_BAD_NETPATH for a share that is not
// mounted, ERROR_INVALID_NAME for a name Windows cannot hold), when there is none.
MFCQMUTILS_API bool ToNativePath(const char* windowsPath, std::string& nativePath);
// The Windows path for an absolute native path: the drive whose directory covers it most
// closely. False (ERROR_PATH_NOT_FOUND) when no drive covers it. On Windows, unchanged.
MFCQMUTILS_API bool ToWindowsPath(const char* nativePath, std::string& windowsPath);
// Maps a drive letter (A-Z, either case) to an absolute native directory; nullptr or "" removes
// the mapping. False for a bad letter or a relative directory, and always on Windows.
MFCQMUTILS_API bool SetDriveMapping(char letter, const char* nativeDir);
// The native directory of a drive, or "" when the drive is not mapped (Windows: "").
MFCQMUTILS_API std::string DriveMapping(char letter);
// Forgets the mappings made with SetDriveMapping and reads the configuration again (POSIX).
MFCQMUTILS_API void ReloadDriveMappings();

// --- Last error ------------------------------------------------------------------------------

MFCQMUTILS_API DWORD GetLastError();
MFCQMUTILS_API void SetLastError(DWORD code);
// The system's text for an error code (FormatMessageA from the system table), without the
// trailing line break; "" when the system has none.
MFCQMUTILS_API std::string SystemErrorText(DWORD code);

// --- The registry ----------------------------------------------------------------------------
// The registry: the current user's hive (read and write) and the local machine's hive (read
// only). Each call answers as the Win32 call named beside it: same arguments, same result
// codes (ERROR_SUCCESS, ERROR_FILE_NOT_FOUND for a missing key or value, ERROR_MORE_DATA
// when a value does not fit the caller's buffer, ERROR_ACCESS_DENIED, ...).
//
// Windows: advapi32 on the real hives. POSIX: a SQLite database (by default
// $XDG_CONFIG_HOME/MFCQMUtils/registry.db, or the file named by the environment variable
// MFCQMUTILS_REGISTRY) with the registry's semantics: key names are case-insensitive (ASCII
// letters) and nested by backslashes, keys are created on demand, values keep their types,
// every call is one transaction, and several processes may share the store (WAL mode, busy
// timeout). The local machine's hive answers "ProductName" under
// "SOFTWARE\Microsoft\Windows NT\CurrentVersion" (and "...\Windows\CurrentVersion") from the
// system's os-release file and refuses every change.

// RegCreateKeyExA(root, subKey, 0, NULL, REG_OPTION_NON_VOLATILE, access, NULL, result,
// disposition); disposition may be null.
MFCQMUTILS_API LONG RegistryCreateKey(HKEY root, const char* subKey, REGSAM access, HKEY* result,
                                      DWORD* disposition);
// RegOpenKeyExA(root, subKey, 0, access, result): the key must exist.
MFCQMUTILS_API LONG RegistryOpenKey(HKEY root, const char* subKey, REGSAM access, HKEY* result);
// RegCloseKey.
MFCQMUTILS_API LONG RegistryCloseKey(HKEY key);
// RegQueryValueExA(key, name, NULL, type, data, size): with data null only the type and the
// size are given; a buffer smaller than the value gives ERROR_MORE_DATA with *size set to
// the size needed. A null or empty name is the key's default value.
MFCQMUTILS_API LONG RegistryQueryValue(HKEY key, const char* name, DWORD* type, BYTE* data, DWORD* size);
// RegSetValueExA(key, name, 0, type, data, size). A non-empty string value (REG_SZ,
// REG_EXPAND_SZ) is stored with its terminating zero even when size leaves it out.
MFCQMUTILS_API LONG RegistrySetValue(HKEY key, const char* name, DWORD type, const BYTE* data, DWORD size);
// RegDeleteValueA.
MFCQMUTILS_API LONG RegistryDeleteValue(HKEY key, const char* name);
// RegDeleteTreeA(root, subKey): the key, its values and every key below it.
MFCQMUTILS_API LONG RegistryDeleteTree(HKEY root, const char* subKey);
// RegEnumValueA(key, index, name, nameSize, NULL, type, data, size); ERROR_NO_MORE_ITEMS
// past the last value. *nameSize is in characters, without the terminating zero on return.
MFCQMUTILS_API LONG RegistryEnumValue(HKEY key, DWORD index, char* name, DWORD* nameSize, DWORD* type,
                                      BYTE* data, DWORD* size);
// RegEnumKeyExA(key, index, name, nameSize, NULL, NULL, NULL, NULL).
MFCQMUTILS_API LONG RegistryEnumKey(HKEY key, DWORD index, char* name, DWORD* nameSize);

// Points the current user's hive of this process somewhere private, for tests and tools
// that must not touch the user's real settings; nullptr restores the real hive.
// POSIX: location is the database file. Windows: location is a key under the real current
// user's hive that stands in for the hive (RegOverridePredefKey).
MFCQMUTILS_API void SetRegistryStoreLocation(const char* location);

// --- Message boxes ---------------------------------------------------------------------------
// The library shows its messages through a replaceable service: by default a real message box
// on Windows (MessageBoxA, owned by no window) and one line on standard error on POSIX.

// Shows text with the given styles (MB_OK ...); returns the button chosen (IDOK ...).
typedef int (*MessageBoxService)(const char* text, const char* caption, UINT type);

// Installs a service (nullptr restores the default); returns the one installed before.
MFCQMUTILS_API MessageBoxService SetMessageBoxService(MessageBoxService service);
// Shows a message through the installed service.
MFCQMUTILS_API int ShowMessageBox(const char* text, const char* caption, UINT type);

// --- Locale ----------------------------------------------------------------------------------
// The user's locale settings, read item by item as GetLocaleInfoA(LOCALE_USER_DEFAULT, ...)
// reads them, and pinnable so that a host or a test sees fixed values on every target.

// GetLocaleInfoA semantics: copies the item's text with its NUL into buf and returns the
// number of characters copied including the NUL; returns 0 when the item is unknown or buf
// is too small (nothing useful is written then). With bufSize 0 returns the size needed.
MFCQMUTILS_API int GetUserLocaleInfo(LCTYPE item, char* buf, int bufSize);

// Pins an item to a fixed text (nullptr removes the pin); pinned items win over the system.
MFCQMUTILS_API void PinLocaleInfo(LCTYPE item, const char* value);
// Pins every item that the library reads to the en-US values.
MFCQMUTILS_API void PinLocaleToEnglishUS();
MFCQMUTILS_API void UnpinAllLocaleInfo();

// --- Streams ---------------------------------------------------------------------------------
// COM streams over a block of memory or a file, for the picture loaders. Windows:
// SHCreateMemStream and SHCreateStreamOnFileA. POSIX: a minimal IStream (Read, Write, Seek,
// SetSize, Stat; the other methods answer E_NOTIMPL) over memory; a file is read whole.
// The caller releases the stream with Release().

// A read-write stream holding a copy of the bytes, positioned at 0. Null on failure.
MFCQMUTILS_API IStream* CreateMemoryStream(const void* data, size_t size);
// A read-only stream over the file. Null when it cannot be opened.
MFCQMUTILS_API IStream* OpenFileStream(const char* path);

// Standard output as bytes: Windows stops translating line feeds (_setmode _O_BINARY); POSIX
// writes bytes already. For programs that write binary data there.
MFCQMUTILS_API void SetStandardOutputBinary();

// --- The terminal of a command-line host -----------------------------------------------------
// The terminal a command-line host runs in: whether a standard stream is a terminal, its
// width, and a watch that turns Escape (typed on the terminal) and Ctrl-C into an Escape
// key-down message on the watching thread's queue, so that long loops see them through
// EscapeKeyWasPressed.

// stream: 1 standard output, 2 standard error.
MFCQMUTILS_API bool IsTerminalStream(int stream);
// Columns of the terminal on standard error; 80 when unknown.
MFCQMUTILS_API int TerminalColumns();
// Text typed on the command line to the library's ANSI code page, and the library's text to
// what the terminal shows. POSIX converts where the program's character-type locale (after
// its setlocale) is UTF-8, and passes the bytes through under any other locale; Windows hands
// programs their arguments in the ANSI code page already and passes them through.
MFCQMUTILS_API std::string TerminalTextToAnsi(const std::string& typed);
MFCQMUTILS_API std::string AnsiToTerminalText(const std::string& text);

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

// The clipboard of a command-line host. True when the clipboard is the desktop's (Windows;
// POSIX with a reachable X display), false when it lives inside the process.
MFCQMUTILS_API bool ClipboardIsDesktop();
// On the desktop clipboard of POSIX the process itself answers other programs' requests for
// what it put there: waits until another program takes the clipboard (true) or timeoutMs
// pass (0: no limit). Windows keeps the data after the process ends: true at once.
MFCQMUTILS_API bool ServeClipboardUntilReplaced(DWORD timeoutMs);
// True where what a process puts on the desktop clipboard lasts only while the process serves
// it (POSIX with an X display): a command-line host that should leave the data behind hands it
// to a background helper (below).
MFCQMUTILS_API bool ClipboardServedByProcess();

// Background helpers of a command-line host (POSIX): starts this same program again with
// `args`, in a session of its own with its standard output and error on the null device and
// `input` on its standard input, and waits up to timeoutMs for it to call
// ReportBackgroundReady. True when it reported success; otherwise *message (when given) says
// why. Windows: false ("not needed on this system").
MFCQMUTILS_API bool StartBackgroundHelper(const std::vector<std::string>& args, const std::string& input,
                                          DWORD timeoutMs, std::string* message);
// True in a program started by StartBackgroundHelper (until it reported).
MFCQMUTILS_API bool IsBackgroundHelper();
// In such a helper: tells the starter it is ready (ok) or failed (message), and lets it return.
MFCQMUTILS_API void ReportBackgroundReady(bool ok, const char* message);

}  // namespace qm::platform
