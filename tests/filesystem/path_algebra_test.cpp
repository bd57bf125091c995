// Path strings without the disk (the paths named here do not exist, so MakeLong leaves them).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/FileSystem.h"

namespace {

using Strings = std::vector<std::string>;

TEST(PathAlgebra, SplittingFollowsTheLastSeparatorAndTheLastDot) {
    struct Case {
        const char* path;
        const char* folder;     // ExtractPath
        const char* file;       // ExtractFile
        const char* name;       // ExtractFileName
        const char* extension;  // ExtractExtension
        const char* cut;        // RemoveExtension
    } cases[] = {
        {"C:\\d\\archive.tar.gz", "C:\\d\\", "archive.tar.gz", "archive.tar", "gz", "C:\\d\\archive.tar"},
        {"C:\\v1.2\\readme", "C:\\v1.2\\", "readme", "readme", "2\\readme", "C:\\v1"},
        {"file.txt", "", "file.txt", "file", "txt", "file"},
        {"C:file.txt", "C:", "file.txt", "file", "txt", "C:file"},
        {"a/b/c.txt", "", "c.txt", "c", "txt", "a/b/c"},
        {"C:\\d\\.profile", "C:\\d\\", ".profile", "", "profile", "C:\\d\\"},
        {"\\\\srv\\share\\x", "\\\\srv\\share\\", "x", "x", "", "\\\\srv\\share\\x"},
        {"C:\\d\\", "C:\\d\\", "", "", "", "C:\\d\\"},
        {"", "", "", "", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_STREQ(FileSystem::ExtractPath(c.path), c.folder);
        EXPECT_STREQ(FileSystem::ExtractFile(c.path), c.file);
        EXPECT_STREQ(FileSystem::ExtractFileName(c.path), c.name);
        EXPECT_STREQ(FileSystem::ExtractExtension(c.path), c.extension);
        CString cut = c.path;
        EXPECT_STREQ(FileSystem::RemoveExtension(cut), c.cut);
        // Folder part plus file name gives the path back where the splitter sees the same folder.
        if (std::string(c.path).find('/') == std::string::npos && std::string(c.path).find(':') != 1) {
            EXPECT_STREQ(FileSystem::ExtractPath(c.path) + FileSystem::ExtractFile(c.path), c.path);
        }
    }
    // A name longer than the splitter's 256-character buffer empties every part.
    EXPECT_STREQ(FileSystem::ExtractFile("C:\\d\\" + CString('n', 300) + ".txt"), "");
}

TEST(PathAlgebra, ChangingPartsKeepsTheOthers) {
    EXPECT_STREQ(FileSystem::ChangeExtension("C:\\v1.2\\readme", "md"), "C:\\v1.md");
    EXPECT_STREQ(FileSystem::ChangeExtension("a.txt", ""), "a.");
    EXPECT_STREQ(FileSystem::ChangeExtension("noext", "bak"), "noext.bak");
    EXPECT_STREQ(FileSystem::ChangeFileName("C:\\d\\Report.txt", "New"), "C:\\d\\New.txt");
    EXPECT_STREQ(FileSystem::ChangeFileName("\\\\s\\h\\a.b.c", "z"), "\\\\s\\h\\z.c");
    EXPECT_STREQ(FileSystem::ChangeFileName("plain", "other"), "other");
    EXPECT_STREQ(FileSystem::ChangeDir("C:\\a\\f.txt", "D:\\b"), "D:\\b\\f.txt");
    EXPECT_STREQ(FileSystem::ChangeDir("f.txt", "D:\\b\\..\\c\\.\\"), "D:\\c\\f.txt");
    EXPECT_STREQ(FileSystem::ChangeDir("C:\\a\\f.txt", "D:\\"), "D:\\f.txt");
    EXPECT_STREQ(FileSystem::CreateFilePath("C:\\d\\/\\", "f.txt"), "C:\\d\\f.txt");
    EXPECT_STREQ(FileSystem::CreateFilePath("", "f.txt"), "\\f.txt");
}

TEST(PathAlgebra, QuotesAndBackslashes) {
    struct Case { const char* in; const char* added; const char* removed; int removedResult; } cases[] = {
        {"x\"y", "\"xy\"", "x\"y", 0}, {"", "", "", 0}, {"\"open", "\"open", "open", 1},
        {"\"a\"b\"", "\"a\"b\"", "a\"b", 1}, {"\"", "\"", "", 1},
        {"C:\\Program Files", "\"C:\\Program Files\"", "C:\\Program Files", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.in);
        CString a = c.in, r = c.in;
        EXPECT_STREQ(FileSystem::AddQuotes(a), c.added);
        EXPECT_EQ(FileSystem::RemoveQuotes(r), c.removedResult);
        EXPECT_STREQ(r, c.removed);
    }
    qmtest::RecordingAssertSink sink;
    CString s = "C:/x/", empty, done = "C:\\x\\";
    EXPECT_STREQ(FileSystem::EnsureBackslash(s), "C:/x/\\");
    EXPECT_STREQ(FileSystem::EnsureBackslash(done), "C:\\x\\");
    EXPECT_TRUE(sink.Expressions().empty());
    EXPECT_STREQ(FileSystem::EnsureBackslash(empty), "");
    EXPECT_EQ(sink.Expressions(), Strings{"!path.IsEmpty()"});
    EXPECT_EQ(sink.Reports()[0].module, "Common\\FileSystem");
}

TEST(PathAlgebra, LooseTestsAreKept) {
    EXPECT_TRUE(FileSystem::IsFullPath("a\\b"));
    EXPECT_TRUE(FileSystem::IsFullPath("a/b"));
    EXPECT_TRUE(FileSystem::IsFullPath("c:"));
    EXPECT_FALSE(FileSystem::IsFullPath("abc"));
    EXPECT_TRUE(FileSystem::IsPathInFolder("C:\\ABC\\x", "c:\\ab\\"));  // no separator check
    EXPECT_TRUE(FileSystem::IsPathInFolder("C:\\a\\", "C:\\A"));
    EXPECT_TRUE(FileSystem::IsPathInFolder("anything", ""));
    EXPECT_FALSE(FileSystem::IsPathInFolder("C:\\a", "C:\\b"));
    EXPECT_FALSE(FileSystem::IsPathInFolder("C:\\a", "C:\\a\\b"));
}

TEST(PathAlgebra, ExtractDriveReportsMalformedRoots) {
    const std::string shortText = "FileName.GetLength() > 2";
    const std::string colonText = "Ret.Right(2) == TEXT(\":\\\\\")";
    const std::string pairText = "FileName.Find(TEXT (\"\\\\\\\\\")) != -1";
    const std::string endText = "Ret.Right(1) == TEXT(\"\\\\\")";
    struct Case { const char* path; const char* drive; Strings reports; } cases[] = {
        {"C:\\dir\\f", "C:\\", {}}, {"\\\\server\\share\\dir\\f.txt", "\\\\server\\share\\", {}},
        {"\\\\server\\share", "\\\\server\\share\\", {}}, {"x\\\\server\\share\\a\\b", "\\\\server\\share\\", {}},
        {"\\\\server", "\\\\server\\", {"i < 2"}},
        {"C:x", "C:x", {colonText, endText}},
        {"ab", "ab\\", {shortText, pairText, "i < 2"}},
        {"", "\\", {shortText, pairText, "i < 2", "Ret.GetLength() > 2"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        qmtest::RecordingAssertSink sink;
        EXPECT_STREQ(FileSystem::ExtractDrive(c.path), c.drive);
        EXPECT_EQ(sink.Expressions(), c.reports);
    }
}

TEST(PathAlgebra, RelativeForms) {
    const char* cases[][3] = {  // file, base, relative form
        {"C:\\A\\B\\c.txt", "C:\\A\\x.doc", "B\\c.txt"},
        {"C:\\A\\B\\c.txt", "c:\\a\\x.doc", "B\\c.txt"},  // the prefix ignores case
        {"C:\\A\\B\\c.txt", "c:\\other\\x.doc", ""},      // the drive letters do not
        {"C:\\A\\c.txt", "C:\\A\\B\\x.doc", "\\A\\c.txt"},  // never ".." steps
        {"C:\\A\\B\\c.txt", "C:\\Other\\x.doc", "\\A\\B\\c.txt"}, {"C:\\A\\B\\c.txt", "D:\\A\\x.doc", ""},
        {"C:\\A\\B\\c.txt", "", ""}, {"C:\\A\\c.txt", "C:\\A\\x.doc", "c.txt"}, {"\\\\s\\h\\f.txt", "C:\\A\\x.doc", ""},
        {"C:\\A\\B\\c.txt", "x.doc", "C:\\A\\B\\c.txt"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c[0]) + " | " + c[1]);
        EXPECT_STREQ(FileSystem::GetRelativePath(c[0], c[1]), c[2]);
    }
}

TEST(PathAlgebra, AbsoluteForms) {
    const std::string badDrive = "_istalpha (sRelativeFilePath[0]) && sRelativeFilePath[2] == '\\\\'";
    struct Case { const char* relative; const char* base; const char* absolute; Strings reports; } cases[] = {
        {"sub\\f.txt", "C:\\A\\x.doc", "C:\\A\\sub\\f.txt", {}}, {"\\f.txt", "C:\\A\\x.doc", "C:\\f.txt", {}},
        {"\\\\s\\h\\f.txt", "C:\\A\\x.doc", "\\\\s\\h\\f.txt", {}}, {"", "C:\\A\\x.doc", "", {}},
        {"..\\f", "C:\\A\\x.doc", "C:\\A\\..\\f", {}}, {"\\f.txt", "\\\\s\\h\\x.doc", "\\\\\\f.txt", {}},
        {"D:\\f", "C:\\A\\x.doc", "D:\\f", {}},
        {"C:file", "C:\\A\\x.doc", "C:file", {badDrive}}, {"1:", "C:\\A\\x.doc", "1:", {badDrive}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.relative);
        qmtest::RecordingAssertSink sink;
        EXPECT_STREQ(FileSystem::GetAbsolutePath(c.relative, c.base), c.absolute);
        EXPECT_EQ(sink.Expressions(), c.reports);
    }
}

TEST(PathAlgebra, CompactPathShortensLikeTheShell) {
    const char* path = "C:\\some\\long\\folder\\name\\file.txt";  // 33 characters
    struct Case { const char* source; unsigned maximum; const char* compact; } cases[] = {
        {path, 33, path}, {path, 100, path},
        {path, 32, "C:\\some\\long\\folder...\\file.txt"}, {path, 20, "C:\\some...\\file.txt"},
        {path, 13, "...\\file.txt"}, {path, 12, "...\\file..."}, {path, 10, "...\\fi..."}, {path, 4, "..."},
        {"verylongfilename.txt", 8, "very..."}, {"verylongfilename.txt", 3, ".."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.maximum));
        CString target = "stale";
        EXPECT_EQ(FileSystem::CompactPath(c.source, target, c.maximum), 1);
        EXPECT_STREQ(target, c.compact);
        EXPECT_LE((unsigned)target.GetLength(), std::max(c.maximum, (unsigned)std::strlen(c.source)));
    }
}

TEST(PathAlgebra, IncrementFileNameCountsOnInDecimal) {
    const char* cases[][2] = {
        {"C:\\d\\Report.txt", "C:\\d\\Report1.txt"}, {"Report9.txt", "Report10.txt"}, {"Report007.txt", "Report8.txt"},
        {"x.txt", "x1.txt"}, {"C:\\v1.2\\99", "C:\\v1.2\\100"},
        {"n99999999999999999999999.t", "n100000000000000000000000.t"}, {"000", "1"},
    };
    for (const auto& c : cases) EXPECT_STREQ(FileSystem::IncrementFileName(c[0]), c[1]) << c[0];
}

TEST(PathAlgebra, GetPathTakesTheFirstPathOfACommandLine) {
    const std::string longPath = "C:\\" + std::string(1000, 'p');
    struct Case { std::string command; int quote; std::string target; size_t stop; } cases[] = {
        {"a b", 0, "", 1},  // a one-character path is dropped without the quote flag
        {"a b", 1, "\"a\"", 1},
        {"\"C:\\Program Files\\x.exe\" -n", 0, "C:\\Program Files\\x.exe", 24},
        {"\"C:\\Program Files\\x.exe\" -n", 1, "\"C:\\Program Files\\x.exe\"", 24},
        {"", 1, "", 0}, {"\tx", 0, "", 0}, {"ab\tc", 0, "ab", 2}, {"C:\\a\"b c\"d e", 0, "C:\\ab cd", 10},
        {longPath + " x", 0, longPath, longPath.size()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command.substr(0, 40));
        CString target = "stale";
        char* stop = FileSystem::GetPath(c.command.c_str(), target, c.quote);
        EXPECT_EQ(std::string(target), c.target);
        EXPECT_EQ(stop, c.command.c_str() + c.stop);
    }
}

}  // namespace
