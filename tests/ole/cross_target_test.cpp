// Compound files between the targets: each target reads the sample as written by the POSIX
// build (libgsf) and by the Windows build (ole32, under Wine); on POSIX libgsf's own `gsf`
// tool lists and extracts what we write.
#include <gtest/gtest.h>

#include <cstdio>
#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string>

#include "tests/filesystem/fs_fixture.h"
#include "tests/ole/storage_samples.h"
#include "utils/platform/host.h"

namespace {

void ExpectSampleBytes(const std::vector<BYTE>& bytes) {
    ASSERT_FALSE(bytes.empty());
    IStream* stream = qm::platform::CreateMemoryStream(bytes.data(), bytes.size());
    IStorage* stg = nullptr;
    ASSERT_EQ(OleStorage::LoadFromStream(stream, &stg), S_OK);
    stream->Release();
    qmtest::StorageReleaser keep(stg);
    qmtest::ExpectSample(stg);
}

TEST(CrossTarget, ReadsTheSamplesWrittenOnPosixAndOnWindows) {
    for (const char* name : {"/sample_posix.cfb", "/sample_windows.cfb"}) {
        SCOPED_TRACE(name);
        ExpectSampleBytes(qmtest::ReadNative(QM_OLE_DATA_DIR + std::string(name)));
    }
}

class SampleFile : public qmtest::TempFolderTest {};

// Writes the sample file named by QM_OLE_SAMPLE_OUT (run with --gtest_also_run_disabled_tests).
TEST_F(SampleFile, DISABLED_WriteSampleFile) {
    const char* out = std::getenv("QM_OLE_SAMPLE_OUT");
    ASSERT_NE(out, nullptr);
    qmtest::WriteSample(out);
}

#if !defined(_WIN32)
std::string RunCommand(const std::string& command) {
    std::string out;
    FILE* p = popen(command.c_str(), "r");
    if (!p) return out;
    char buffer[4096];
    std::size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, p)) > 0) out.append(buffer, n);
    pclose(p);
    return out;
}

TEST_F(SampleFile, GsfToolReadsOurFile) {
    qmtest::WriteSample(At("ours.cfb"));
    // Z:\ is the file system's root.
    std::string native = "/" + std::string((LPCTSTR)At("ours.cfb")).substr(3);
    for (auto& c : native)
        if (c == '\\') c = '/';
    std::string list = RunCommand("LC_ALL=C.UTF-8 gsf list '" + native + "' 2>&1");
    // One line per element: kind, size, path (empty storages show as files: not checked).
    std::vector<std::string> lines;
    std::istringstream in(list);
    std::string kind, size, name;
    std::getline(in, name);  // the file's own name
    while (in >> kind >> size && std::getline(in >> std::ws, name)) lines.push_back(kind + " " + size + " " + name);
    for (const char* line : {"d 0 *root*", "d 0 \xC3\xA9t\xC3\xA9", "f 0 empty", "f 4095 small", "f 4096 regular",
                             "f 5000 larger", "f 8 \xC3\xA9t\xC3\xA9/inside"})
        EXPECT_NE(std::find(lines.begin(), lines.end(), line), lines.end()) << line << "\n" << list;
    for (const auto& s : qmtest::kSampleStreams) {
        std::string bytes = RunCommand("LC_ALL=C.UTF-8 gsf cat '" + native + "' " + s.name);
        auto expected = qmtest::Pattern(s.size, (unsigned)s.size);
        EXPECT_EQ(std::vector<BYTE>(bytes.begin(), bytes.end()), expected) << s.name;
    }
    EXPECT_EQ(RunCommand("LC_ALL=C.UTF-8 gsf cat '" + native + "' '\xC3\xA9t\xC3\xA9/inside'"), "contents");
}
#endif

}  // namespace
