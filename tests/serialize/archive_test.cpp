#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/framework/CArchive.h"

#if defined(__linux__)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

using Bytes = std::vector<BYTE>;

Bytes Contents(CMemFile& file) {
    ULONGLONG n = file.GetLength();
    BYTE* block = file.Detach();
    Bytes out(block, block + n);
    free(block);
    return out;
}

using qmtest::ThrownCause;

TEST(CArchive, BasicTypesAreLittleEndianWithFixedWidths) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ar << (BYTE)0xAB << (WORD)0x0102 << (short)-2 << (int)0x01020304 << (unsigned int)0xA0B0C0D0u
           << (LONG)-1 << (DWORD)7 << true << 'z' << (LONGLONG)0x0102030405060708LL
           << (ULONGLONG)1 << 1.5f << -2.25;
    }
    Bytes expected{0xAB, 0x02, 0x01, 0xFE, 0xFF, 0x04, 0x03, 0x02, 0x01, 0xD0, 0xC0, 0xB0, 0xA0,
                   0xFF, 0xFF, 0xFF, 0xFF, 0x07, 0x00, 0x00, 0x00, 0x01, 'z',
                   0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01, 0x01, 0, 0, 0, 0, 0, 0, 0,
                   0x00, 0x00, 0xC0, 0x3F, 0, 0, 0, 0, 0, 0, 0x02, 0xC0};
    Bytes got = Contents(file);
    EXPECT_EQ(got, expected);
    CMemFile in(got.data(), (UINT)got.size());
    CArchive ar(&in, CArchive::load);
    // The framework's type names, whatever builtin types they are on this build.
    BYTE b; WORD w; short s; int i; unsigned int u; LONG l; DWORD ul; bool f; char c;
    LONGLONG ll; ULONGLONG ull; float fl; double d;
    ar >> b >> w >> s >> i >> u >> l >> ul >> f >> c >> ll >> ull >> fl >> d;
    EXPECT_EQ(b, 0xAB);
    EXPECT_EQ(w, 0x0102);
    EXPECT_EQ(s, -2);
    EXPECT_EQ(i, 0x01020304);
    EXPECT_EQ(u, 0xA0B0C0D0u);
    EXPECT_EQ(l, -1);
    EXPECT_EQ(ul, 7u);
    EXPECT_TRUE(f);
    EXPECT_EQ(c, 'z');
    EXPECT_EQ(ll, 0x0102030405060708LL);
    EXPECT_EQ(ull, 1u);
    EXPECT_EQ(fl, 1.5f);
    EXPECT_EQ(d, -2.25);
    EXPECT_TRUE(ar.IsBufferEmpty());
}

// A plain long takes its own width, so no build truncates it.
TEST(CArchive, PlainLongKeepsItsFullValue) {
    CMemFile file;
    CArchive(&file, CArchive::store) << LONG_MIN << (unsigned long)ULONG_MAX;
    EXPECT_EQ(file.GetLength(), 2 * sizeof(long));
    file.SeekToBegin();
    long l = 0;
    unsigned long ul = 0;
    CArchive(&file, CArchive::load) >> l >> ul;
    EXPECT_EQ(l, LONG_MIN);
    EXPECT_EQ(ul, ULONG_MAX);
}

TEST(CArchive, ShortDataReadReturnsCountButOperatorThrows) {
    BYTE data[3] = {1, 2, 3};
    CMemFile in(data, 3);
    CArchive ar(&in, CArchive::load);
    BYTE out[8] = {};
    EXPECT_EQ(ar.Read(out, 2), 2u);
    int value = 0;
    EXPECT_EQ(ThrownCause<CArchiveException>([&] { ar >> value; }), CArchiveException::endOfFile);
    EXPECT_EQ(ar.Read(out, 8), 1u);
    EXPECT_EQ(out[0], 3);
    EXPECT_EQ(ar.Read(out, 8), 0u);
}

TEST(CArchive, SmallBufferAndLargeBlocksKeepOrder) {
    CMemFile file(7);
    std::string big(1000, 'x');
    for (size_t i = 0; i < big.size(); ++i) big[i] = (char)('a' + i % 26);
    {
        CArchive ar(&file, CArchive::store, 1);  // raised to the minimum buffer
        for (int i = 0; i < 100; ++i) ar << i;
        ar.Write(big.data(), (UINT)big.size());
        ar << (WORD)0xBEEF;
    }
    EXPECT_EQ(file.GetLength(), 400u + 1000u + 2u);
    file.SeekToBegin();
    CArchive ar(&file, CArchive::load, 1);
    for (int i = 0, v = -1; i < 100; ++i) ASSERT_EQ((ar >> v, v), i);
    std::string back(1000, 0);
    WORD w = 0;
    EXPECT_EQ(ar.Read(&back[0], 1000), 1000u);
    ar >> w;
    EXPECT_EQ(back, big);
    EXPECT_EQ(w, 0xBEEF);
}

TEST(CArchive, ClosedArchiveRefusesWorkAndAbortDropsUnwrittenData) {
    CMemFile file;
    CArchive ar(&file, CArchive::store);
    ar << 1;
    ar.Close();
    EXPECT_EQ(ar.GetFile(), nullptr);
    EXPECT_EQ(file.GetLength(), 4u);
    EXPECT_EQ(ThrownCause<CArchiveException>([&] { ar << 2; }), CArchiveException::genericException);
    CMemFile other;
    {
        CArchive aborted(&other, CArchive::store);
        aborted << 1 << 2;
        aborted.Abort();
        CArchive unflushed(&other, CArchive::store | CArchive::bNoFlushOnDelete);
        unflushed << 1;
    }
    EXPECT_EQ(other.GetLength(), 0u);
}

TEST(CMemFile, FixedBlockReadsItsBytesAndCannotGrow) {
    BYTE block[4] = {9, 8, 7, 6};
    CMemFile f(block, 4);
    BYTE out[8];
    EXPECT_EQ(f.GetLength(), 4u);
    EXPECT_EQ(f.Read(out, 8), 4u);
    EXPECT_EQ(out[3], 6);
    f.SeekToBegin();
    f.Write("ab", 2);
    EXPECT_EQ(block[0], 'a');
    EXPECT_THROW(try { f.Write("xyz", 3); } catch (CMemoryException* e) { e->Delete(); throw 1; }, int);
    f.Seek(1000, CFile::begin);  // far past the end: reading gives nothing, writing fails cleanly
    EXPECT_EQ(f.Read(out, 1), 0u);
    EXPECT_THROW(try { f.Write("q", 1); } catch (CMemoryException* e) { e->Delete(); throw 1; }, int);
    EXPECT_EQ(f.Detach(), block);
    EXPECT_EQ(f.GetLength(), 0u);
}

TEST(CMemFile, GrowsSeeksAndZeroFillsGaps) {
    CMemFile f(4);
    f.Write("abc", 3);
    EXPECT_EQ(f.Seek(5, CFile::current), 8u);
    f.Write("z", 1);
    EXPECT_EQ(f.GetLength(), 9u);
    EXPECT_EQ(f.Seek(-1, CFile::end), 8u);
    EXPECT_EQ(f.Seek(0, CFile::begin), 0u);
    EXPECT_EQ(ThrownCause<CFileException>([&] { f.Seek(-1, CFile::begin); }), CFileException::badSeek);
    EXPECT_EQ(f.GetPosition(), 0u);
    f.SetLength(2);
    EXPECT_EQ(f.GetLength(), 2u);
    f.SetLength(5);
    EXPECT_EQ(Contents(f), (Bytes{'a', 'b', 0, 0, 0}));
}

std::string TempName(const char* tag) {
    const char* dir = std::getenv("TMPDIR");
#if defined(_WIN32)
    if (!dir) dir = std::getenv("TEMP");
#endif
    std::string base = dir && *dir ? dir : ".";
    return base + "/qm_archive_" + tag + "_" + std::to_string((unsigned long)std::rand()) + ".bin";
}

TEST(CFile, ArchiveThroughAFileOnDisk) {
    std::string name = TempName("disk");
    {
        CFile f(name.c_str(), CFile::modeCreate | CFile::modeWrite);
        EXPECT_EQ(f.GetFilePath(), name.c_str());
        EXPECT_EQ(f.GetFileName(), name.substr(name.find_last_of("/\\") + 1).c_str());
        CArchive(&f, CArchive::store) << 12345 << (WORD)7;
        EXPECT_EQ(f.GetLength(), 6u);
    }
    {
        CFile f;
        ASSERT_TRUE(f.Open(name.c_str(), CFile::modeRead));
        CArchive ar(&f, CArchive::load);
        int i = 0;
        WORD w = 0;
        ar >> i >> w;
        EXPECT_EQ(i, 12345);
        EXPECT_EQ(w, 7);
    }
    std::remove(name.c_str());
}

TEST(CFile, SetLengthGrowsWithZerosAndShrinks) {
    const std::string name = TempName("length");
    const UINT grown = 1u << 20;
    {
        CFile f(name.c_str(), CFile::modeCreate | CFile::modeReadWrite);
        f.Write("abc", 3);
        f.SetLength(grown);
        EXPECT_EQ(f.GetLength(), grown);
        EXPECT_EQ(f.GetPosition(), 3u);
        std::vector<char> back(grown, 'x');
        f.SeekToBegin();
        ASSERT_EQ(f.Read(back.data(), grown), grown);
        EXPECT_EQ(std::string(back.data(), 3), "abc");
        EXPECT_EQ(std::count(back.begin(), back.end(), '\0'), (long)grown - 3);
#if defined(__linux__)
        // The grown length has its blocks, where the filesystem reserves blocks at all.
        const std::string probe = name + ".probe";
        const int fd = open(probe.c_str(), O_CREAT | O_RDWR, 0600);
        const bool reserves = fd >= 0 && fallocate(fd, 0, 0, 4096) == 0;
        if (fd >= 0) close(fd);
        unlink(probe.c_str());
        struct stat st {};
        ASSERT_EQ(stat(name.c_str(), &st), 0);
        if (reserves) {
            EXPECT_GE((long long)st.st_blocks * 512, (long long)grown);
        }
#endif
        f.SetLength(2);
        EXPECT_EQ(f.GetLength(), 2u);
    }
    std::remove(name.c_str());
}

}  // namespace
