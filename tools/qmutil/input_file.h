// Files named on qmutil's command line are checked before they are read: a missing file, a
// folder, a device, a FIFO, an empty or an oversized file (and, for text, one holding NUL
// bytes) is refused with one line naming the file and the reason (UsageError: exit code 2).
#pragma once

#include <cstdint>
#include <string>

#include "utils/common/CVLogger.h"

class CDIBitmap;

namespace qmutil {

// The most a command reads of one text file (FindLinks, ReplaceString, ... on the whole text).
constexpr std::uintmax_t kMaxTextBytes = 64ull << 20;
// The most a command reads of one picture file.
constexpr std::uintmax_t kMaxPictureBytes = 256ull << 20;

// Throws UsageError unless path names an existing regular file of at most limit bytes, not
// empty unless allowEmpty.
void CheckInputFile(const std::string& path, std::uintmax_t limit, bool allowEmpty = false);
// Throws UsageError when path exists and is not a regular file (a list file made when missing).
void CheckOutputFile(const std::string& path);
// The whole file after CheckInputFile; "-" is standard input, read up to the same limit. With
// text set, a file holding a NUL byte is refused as binary.
std::string ReadInputFile(const std::string& path, std::uintmax_t limit, bool text);

// A BMP file (with its file header) read whole into bmp after the checks of ReadInputFile;
// throws UsageError when the library does not read it as a bitmap.
void LoadBmpFile(const std::string& path, CDIBitmap& bmp);

// While alive, the library's assertion and trace reports are dropped: the tool says what went
// wrong in its own words instead (readers report every damaged record they walk).
class QuietLibraryReports {
public:
    QuietLibraryReports();
    ~QuietLibraryReports();
    QuietLibraryReports(const QuietLibraryReports&) = delete;
    QuietLibraryReports& operator=(const QuietLibraryReports&) = delete;

private:
    CvAssertSink m_assert;
    CvTraceSink m_trace;
};

}  // namespace qmutil
