// Case-insensitive lookup of names in folders, for the POSIX file layer (internal).
//
// A folder's listing is read once and kept, keyed by the folded spelling of each name, with
// the folder's identity and modification time at the time it was read. A lookup compares
// them with the folder as it is now (one stat) and reads the folder again when anything
// changed, so a name another process made after the listing was read is still found. Names
// this process makes are added to the listing as it makes them, so that filling a folder one
// file at a time costs a constant number of system calls per file instead of a read of the
// whole folder. (As before the cache, a file another process makes between a lookup and the
// creation that follows it is not seen by that creation.)
#pragma once

#include <string>

namespace qm::platform::names {

// The byte with ASCII and Latin-1 capitals made small (the folding of every name comparison).
unsigned char Fold(unsigned char c);

// The entry of folder `dir` whose name equals `name` without regard to case, in `match`
// (the first such entry in the folder's own order); false when there is none or the folder
// cannot be read.
bool FindNoCase(const std::string& dir, const std::string& name, std::string& match);

// This process has just made (or opened for writing) `name` in `dir`: a listing read before
// is brought up to date with it instead of being read again.
void Made(const std::string& dir, const std::string& name);

// Drops every listing (for tests and after changes made behind the cache's back by this
// process, such as renames).
void ForgetAll();

}  // namespace qm::platform::names
