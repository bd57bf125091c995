#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "tests/reg/reg_env.h"
#include "tests/support/recording_sink.h"
#include "utils/common/FileSystem.h"
#include "utils/platform/sysinfo.h"
#include "utils/common/mfcutils.h"
#include "utils/module/MFCQMUtils.h"
#include "utils/platform/messagebox.h"

namespace {

std::vector<std::string> g_boxes;

// Records the message boxes shown during its lifetime.
struct RecordingBoxes {
    qm::platform::MessageBoxService previous = qm::platform::SetMessageBoxService(
        [](const char* text, const char*, UINT) { return g_boxes.push_back(text), 1; });
    RecordingBoxes() { g_boxes.clear(); }
    ~RecordingBoxes() { qm::platform::SetMessageBoxService(previous); }
};

}  // namespace

TEST(FileError, ShowsTheTextForTheErrorNumberWithTheWholeCode) {
    struct { const char* prefix; LONG code; const char* text; } cases[] = {  // text "": nothing shown
        {"Saving: ", 5, ""},
        {"Saving: ", 0, ""},
        {"Saving: ", (LONG)0x80070005,
         "Saving: f.qm\nUnable to access file. It may be read-only or opened by someone else.\nError code: 0x80070005"},
        {nullptr, (LONG)0x80070020,
         "f.qm\nUnable to access file. It may be read-only or opened by someone else.\nError code: 0x80070020"},
        {nullptr, (LONG)0x80070004,
         "f.qm\nToo many files are open.\nClose other files to use this file.\nError code: 0x80070004"},
        {"", (LONG)0x80070008,
         "f.qm\nThere is insufficient memory available.\nClose other files to use this file.\nError code: 0x80070008"},
        {"In %s: ", (LONG)0x80070057, "In f.qm: f.qm\nFailed to read or write the file.\nError code: 0x80070057"},
        // The framework's texts replace the prefix.
        {"Saving: ", (LONG)0x80070002, "f.qm was not found.\nError code: 0x80070002"},
        {"Saving: ", (LONG)0x80030003, "f.qm was not found.\nError code: 0x80030003"},
        {"Saving: ", (LONG)0x80070070, "Disk full while accessing f.qm.\nError code: 0x80070070"},
    };
    for (auto& c : cases) {
        RecordingBoxes boxes;
        FileError(c.prefix, "f.qm", c.code);
        if (!*c.text) {
            EXPECT_TRUE(g_boxes.empty()) << c.code;
        } else {
            ASSERT_EQ(g_boxes.size(), 1u) << c.code;
            EXPECT_EQ(g_boxes[0], c.text);
        }
    }
    RecordingBoxes boxes;
    qmtest::RecordingAssertSink asserts;
    FileError(nullptr, nullptr, -1);
    EXPECT_EQ(asserts.Expressions(), std::vector<std::string>{"pFileName != NULL"});
    EXPECT_EQ(g_boxes.size(), 1u);
}

TEST(SystemDiagnostics, NameVersionMemoryAndSecurity) {
    EXPECT_EQ(GetOSVersionNum(), (int)GetModuleOSVersion().dwMajorVersion);
    EXPECT_EQ(GetOSMinorVersionNum(), (int)GetModuleOSVersion().dwMinorVersion);
    EXPECT_TRUE(IsWinNT());
    EXPECT_FALSE(GetOSName().IsEmpty());
    qmtest::RecordingTraceSink trace;
    TraceMemoryInfo();
    LogSecurityDetails();
    std::regex shape(
        "\\d+ percent of memory is in use\\.\\n"
        " *\\d+ total Kbytes of physical memory\\.\\n"
        " *\\d+ free Kbytes of physical memory\\.\\n"
        " *\\d+ total Kbytes of paging file\\.\\n"
        " *\\d+ free Kbytes of paging file\\.\\n"
        " *[0-9a-f]+ total Kbytes of virtual memory\\.\\n"
        " *[0-9a-f]+ free Kbytes of virtual memory\\.\\n"
        " *[0-9a-f]+ free Kbytes of extended memory\\.\\n"
        "Elevation type: [123]\\n");
    EXPECT_TRUE(std::regex_match(trace.Text(), shape)) << trace.Text();
    // The virtual memory lines are hexadecimal: the total (a constant of the process) read back.
    std::smatch total;
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof status;
    ASSERT_TRUE(qm::platform::QueryMemoryStatus(&status));
    const std::string text = trace.Text();
    ASSERT_TRUE(std::regex_search(text, total, std::regex(" *([0-9a-f]+) total Kbytes of virtual memory")));
    EXPECT_EQ(std::stoull(total[1].str(), nullptr, 16), status.ullTotalVirtual / 1024);
}

// Free space with a size adds the size rounded up to whole clusters. Other programs change
// the free space meanwhile (a parallel build, between most calls), so up to 2,000 rounds look for
// one where the rule holds; a wrong rounding never gives one.
TEST(SystemDiagnostics, FreeDiskSpaceRoundsTheSizeToClusters) {
    const CString path = regtest::Folder().c_str();
    DWORD spc = 0, bps = 0, freeClusters = 0, total = 0;
    ASSERT_TRUE(qm::platform::DiskFreeSpace(FileSystem::ExtractDrive(path), &spc, &bps, &freeClusters, &total));
    const ULONGLONG cluster = (ULONGLONG)spc * bps;
    bool exact = false;
    for (int round = 0; round < 2000 && !exact; ++round) {
        ULONGLONG plain = FreeDiskSpace(path, 0), one = FreeDiskSpace(path, 1), whole = FreeDiskSpace(path, (DWORD)cluster),
                  more = FreeDiskSpace(path, (DWORD)cluster + 1), again = FreeDiskSpace(path, 0);
        exact = plain == again && one == plain + cluster && whole == plain + cluster && more == plain + 2 * cluster;
    }
    EXPECT_TRUE(exact);
    EXPECT_NE(FreeDiskSpace(), 0u);
    EXPECT_EQ(FreeDiskSpace("Q:\\nowhere\\file.txt", 0), ~0ULL);

    qmtest::RecordingTraceSink trace;
    TraceDiskInfo(FileSystem::ExtractDrive(path));
    EXPECT_TRUE(std::regex_match(trace.Text(), std::regex("Disk space for .*: FreeMBsAvailableToCaller = \\d+; "
                                                          "TotalNumberOfMBs = \\d+; TotalNumberOfFreeMBs = \\d+\\n")))
        << trace.Text();
}
