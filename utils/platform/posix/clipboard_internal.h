// What the POSIX clipboard's two backends share: the in-process store (clipboard.cpp) keeps
// the blocks and the clipboard's rules; the X11 backend (clipboard_xcb.cpp) puts a snapshot of
// them on the desktop's CLIPBOARD selection and fetches what other programs put there.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "utils/framework/wintypes.h"

namespace qm::platform::xclip {

// Whether the desktop clipboard is in use: decided at first use (DISPLAY set, not empty, and
// a connection made within a second), or by UseDisplay.
bool Active();
// Stops the worker and decides again with this display (null or "": the in-process clipboard).
void UseDisplay(const char* display);
// Whether this process owns the selection now.
bool Owned();
// Takes the selection, offering each target (by atom name) with its type and bytes; returns
// once the server confirmed the ownership (at most a second).
struct Offer {
    std::string type;  // the type atom of the reply (e.g. UTF8_STRING for TEXT)
    std::string data;
};
bool Own(std::map<std::string, Offer> offers);
// The targets the owner offers (its TARGETS answer); empty when none or no answer in time.
std::vector<std::string> Targets();
// The owner's data for a target. *type gets the reply's type atom name (owners may answer
// another type than the one asked for).
enum class FetchResult { Ok, Refused, NoAnswer };
FetchResult Fetch(const char* target, std::string* data, std::string* type);
// Waits until another program takes the selection (true) or timeoutMs pass (0: no limit).
bool ServeUntilReplaced(DWORD timeoutMs);

}  // namespace qm::platform::xclip
