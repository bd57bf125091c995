#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "tests/reg/reg_env.h"
#include "tests/support/recording_sink.h"
#include "utils/common/FileSystem.h"
#include "utils/common/TempList.h"
#include "utils/platform/files.h"
#include "utils/platform/userfiles.h"

using namespace regtest;

namespace {

std::vector<std::string> Entries(const CTempList& list) {
    std::vector<std::string> out;
    for (POSITION pos = list.GetHeadPosition(); pos;) out.push_back(std::string(list.GetNext(pos)->GetPath()));
    return out;
}

std::string ListBytes(const std::vector<std::string>& paths) {
    std::string out;
    for (const auto& p : paths) out += p + "\r\n";
    return out;
}

}  // namespace

// Each prepared list file against the entries it must give; after construction the file
// holds the same entries, each ended by carriage return and line feed.
TEST(TempList, ReadsPiecesTrimsAndRewritesTheListFile) {
    const std::string a = File("a.tmp"), b = File("b.tmp"), long300(300, 'x');
    struct { std::string content; std::vector<std::string> entries; } cases[] = {
        {a + "\r\n" + b + "\r\n", {a, b}},
        {a + "\n" + b + "\n", {a, b}},
        {a + "\n" + b, {a, b}},
        {"\r\n\n" + a + "\t \x01\r\n\n", {a + "\t "}},
        {a + "\xE9\xFF\n" + b + "\xE9x\n", {a, b + "\xE9x"}},  // bytes of 128 and above count as below 32
        {long300 + "\n", {long300.substr(0, 259), long300.substr(259)}},
        {std::string(259, 'y') + "\n" + b, {std::string(259, 'y'), b}},
        {"", {}},
    };
    for (auto& c : cases) {
        const std::string listFile = File("cases.lst");
        WriteFile(listFile, c.content);
        CTempList list(listFile.c_str());
        EXPECT_EQ(Entries(list), c.entries);
        EXPECT_EQ(ReadFile(listFile), ListBytes(c.entries));
    }
}

// Random additions and destructions against a model: after every change the list file holds
// exactly the model's paths, and a destroyed entry's file is gone from the disk.
TEST(TempList, EveryChangeRewritesTheListInOrder) {
    std::mt19937 rng(3);
    const std::string listFile = File("model.lst");
    auto* list = new CTempList(listFile.c_str());  // a list file that cannot be read: empty
    std::vector<CTempFile*> live;
    std::vector<std::string> model;
    for (int step = 0; step < 120; ++step) {
        if (live.empty() || rng() % 3) {
            std::string path = File("m" + std::to_string(step) + ".tmp");
            WriteFile(path, "x");
            live.push_back(new CTempFile(path.c_str(), list));
            model.push_back(path);
        } else {
            size_t i = rng() % live.size();
            std::string path = std::string(live[i]->GetPath());
            delete live[i];
            live.erase(live.begin() + (long)i);
            model.erase(model.begin() + (long)i);
            EXPECT_FALSE(Exists(path));
        }
        ASSERT_EQ(ReadFile(listFile), ListBytes(model)) << step;
    }
    list->RemoveAll();
    EXPECT_EQ(ReadFile(listFile), "");
    for (const auto& p : model) EXPECT_FALSE(Exists(p));
    list->RemoveAll();  // an empty list leaves the file as it is
    EXPECT_TRUE(Exists(listFile));
    list->SuspendSaving(true);  // batched: one write when resumed
    new CTempFile(File("batch").c_str(), list);
    EXPECT_EQ(ReadFile(listFile), "");
    list->SuspendSaving(false);
    EXPECT_EQ(ReadFile(listFile), ListBytes({File("batch")}));
    delete list;
}

TEST(TempList, RemovingAFileInAHostSubfolderOfTempTakesTheSubfolder) {
    char temp[MAX_PATH + 1] = {};
    qm::platform::TempFolderGet(MAX_PATH, temp);
    const std::string sub = std::string(temp) + "qmreg-sub-" + std::to_string(std::random_device{}() % 100000) + "\\";
    FileSystem::MakePath(sub.c_str());
    const std::string inSub = sub + "a.tmp", direct = std::string(temp) + "qmreg-direct.tmp";
    WriteFile(inSub, "1");
    WriteFile(direct, "2");
    WriteFile(sub + "other.txt", "3");
    {
        CTempList list(File("sub.lst").c_str());
        new CTempFile(inSub.c_str(), &list);
        new CTempFile(direct.c_str(), &list);
    }
    EXPECT_FALSE(Exists(sub));
    EXPECT_FALSE(Exists(direct));
    EXPECT_TRUE(Exists(temp));
}

TEST(TempFile, NoticesOutsideChangesAndEstimatesItsSize) {
    const std::string path = File("watched.txt");
    WriteFile(path, "1");
    CTempList list(File("watch.lst").c_str());
    auto* file = new CTempFile(path.c_str(), &list);
    EXPECT_EQ(file->WasModified(), 0);
    std::filesystem::path native = regtest::NativeFolder() + "watched.txt";
    std::filesystem::last_write_time(native, std::filesystem::last_write_time(native) + std::chrono::seconds(10));
    EXPECT_EQ(file->WasModified(), 1);
    file->UpdateTemp();
    EXPECT_EQ(file->WasModified(), 0);
    std::filesystem::remove(native);
    EXPECT_EQ(file->WasModified(), -1);
    EXPECT_FALSE(file->FileExists());
    file->SetPath("C:\\t\\a.tmp");
    EXPECT_EQ(file->GetMemSizeEstimate(false), 10u);
    EXPECT_EQ(file->GetMemSizeEstimate(true), 34u);
    qmtest::RecordingAssertSink asserts;
    CTempFile orphan("C:\\t\\b.tmp", nullptr);
    list.Add(file);  // already listed: refused
    EXPECT_EQ(asserts.Expressions(), (std::vector<std::string>{"pList != NULL", "NULL == pTemp->GetPos()"}));
    EXPECT_EQ(list.GetCount(), 1);
}

// The test program detached the process-wide list at start; detaching again lets go of what
// was registered without deleting it or writing the file it came from.
TEST(TempList, ProcessWideListDetachesWithoutDeletingOrRewriting) {
    const std::string a = File("exit-a.tmp"), b = File("exit-b.tmp"), first = File("first.lst"), second = File("second.lst");
    WriteFile(a, "a");
    WriteFile(b, "b");
    DetachTempListInstance(first.c_str());
    DeleteFileOnExit(a.c_str());
    EXPECT_EQ(ReadFile(first), ListBytes({a}));
    DetachTempListInstance(second.c_str());
    EXPECT_TRUE(GetTempListInstance().IsEmpty());
    EXPECT_TRUE(Exists(a));
    EXPECT_EQ(ReadFile(first), ListBytes({a}));
    EXPECT_FALSE(Exists(second));
    DeleteFileOnExit(b.c_str());
    EXPECT_EQ(ReadFile(second), ListBytes({b}));
    DeleteTemporaryFiles();
    EXPECT_FALSE(Exists(b));
    EXPECT_TRUE(Exists(a));
    EXPECT_EQ(ReadFile(second), "");
    DetachTempListInstance();  // in memory only: no file is written for what follows
    DeleteFileOnExit(a.c_str());
    EXPECT_EQ(ReadFile(second), "");
    EXPECT_EQ(GetTempListInstance().GetListFileName(), CString());
    DeleteTemporaryFiles();
    EXPECT_FALSE(Exists(a));
}

namespace {

// Runs a program of the test's folder (this program when name is empty) with `arguments`, its
// current folder set to `folder`; its exit code.
int RunIn(const std::string& folder, const std::string& name, const std::string& arguments) {
    char exe[MAX_PATH + 1] = {};
    if (qm::platform::GetExecutableFileName(exe, MAX_PATH) == 0) return -1;
    std::string program = exe;
    if (!name.empty()) program = std::string(FileSystem::ExtractPath(exe)) + name;
    std::string native;
    if (!qm::platform::ToNativePath(program.c_str(), native)) return -1;
#if defined(_WIN32)
    if (!name.empty()) native += ".exe";
    const std::string command = "\"\"" + native + "\" " + arguments + " >NUL\"";
#else
    const std::string command = "'" + native + "' " + arguments + " >/dev/null";
#endif
    const CString previous = FileSystem::GetCurrentDirectory();
    if (!FileSystem::SetCurrentDirectory(folder.c_str())) return -1;
    int rc = std::system(command.c_str());
    FileSystem::SetCurrentDirectory(previous);
    return rc;
}

}  // namespace

// A host that keeps the load-time adoption, started in a folder that holds a list file, adopts
// its entries and deletes them when it ends; a test program started there leaves the files
// and the list file as they were.
TEST(TempList, OnlyAnAdoptingHostActsOnTheListOfItsStartFolder) {
    const std::string folder = File("adopt\\"), a = folder + "left-a.tmp", b = folder + "left-b.tmp";
    const std::string list = folder + "tempfiles.lst", listed = ListBytes({a, b});
    FileSystem::MakePath(folder.c_str());
    WriteFile(a, "a");
    WriteFile(b, "b");
    WriteFile(list, listed);
    EXPECT_EQ(RunIn(folder, "", "--gtest_list_tests"), 0);
    EXPECT_TRUE(Exists(a));
    EXPECT_TRUE(Exists(b));
    EXPECT_EQ(ReadFile(list), listed);
    EXPECT_EQ(RunIn(folder, "qm_adopting_host", ""), 0);
    EXPECT_FALSE(Exists(a));
    EXPECT_FALSE(Exists(b));
    EXPECT_EQ(ReadFile(list), "");
}
