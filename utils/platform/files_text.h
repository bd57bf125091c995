// Text-only helpers of the file services: the runtime's path splitter and joiner, the shell's
// path combiner and shortener, and the Windows wildcard matcher. The POSIX backend is built on
// them; the Windows backend uses the splitter and joiner to check a call before making it.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace qm::platform {

// _splitpath_s / _makepath_s (0, EINVAL or ERANGE; on ERANGE every given output is emptied).
int SplitPathText(const char* path, char* drive, size_t driveSize, char* dir, size_t dirSize, char* fname,
                  size_t fnameSize, char* ext, size_t extSize);
int MakePathText(char* path, size_t size, const char* drive, const char* dir, const char* fname, const char* ext);

// PathCanonicalizeA's result for a path ("." and ".." steps resolved, never above the root).
std::string CanonicalizePathText(const std::string& path);
// PathCombineA's result, or false when it would not fit in MAX_PATH characters.
bool CombinePathText(const char* dir, const char* file, std::string& out);
// PathCompactPathExA's result for maxChars (which counts the terminating zero).
std::string CompactPathText(const char* src, unsigned maxChars);

// FindFirstFileA's matching of a name against a pattern: '*' and '?', "*.*" matching every
// name, a trailing ".*" or "." matching a name without a dot, case-insensitive (code page
// 1252).
bool MatchWildcard(const char* pattern, const char* name);
bool HasWildcards(const char* text);

}  // namespace qm::platform

namespace qm::platform {

// The network mounts of a mount table: (remote name in \\server\share form, mount point).
std::vector<std::pair<std::string, std::string>> NetworkMounts(const std::string& mountTable);

}  // namespace qm::platform
