// Every test of this program runs against a private registry (never the user's own) and in
// a fresh temporary folder, both removed when the program ends.
#pragma once

#include <string>

namespace regtest {

// The fresh folder as the library names it (a Windows path, "Z:\..." on POSIX), with a
// trailing backslash.
const std::string& Folder();
// The same folder as the C++ runtime of the test program names it.
const std::string& NativeFolder();
// A name in the fresh folder (Windows form), e.g. File("a.tmp").
std::string File(const std::string& name);
// Writes or reads a whole file by its Windows-form name.
void WriteFile(const std::string& path, const std::string& bytes);
std::string ReadFile(const std::string& path);
bool Exists(const std::string& path);

}  // namespace regtest
