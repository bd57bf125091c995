// Bitmap throughput on a 4096 x 4096 24-bit picture (48 MiB of rows), each against a memcpy of
// the same pixel block (file transfer: against reading and writing the same bytes with plain
// C file calls). Targets, as time ratios: adjustments and mirror at most 1.5, a quarter turn
// at most 3, resizing to half at most 2 and to double at most 6 (each with its copy), the
// conversion of 8 bits to 24 and grey at most 2, Load and Save at most 2 of the plain file calls.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/CVLogger.h"
#include "utils/common/DIB.h"

namespace {

const int kSide = 4096;
const char kFile[] = "bench_dib.bmp";

void Quiet(const char*) {}

CDIBitmap& Picture(int bpp = 24) {
    static CDIBitmap pictures[33];
    CDIBitmap& b = pictures[bpp];
    if (!b.IsValid()) {
        b.Create(kSide, kSide, (WORD)bpp);
        std::mt19937 rng(1);
        for (DWORD i = 0; i < b.GetBitsSize(); ++i) b.GetBits()[i] = (BYTE)rng();
        for (DWORD i = 0; i < b.GetColorTableSize() / 4; ++i) b.GetColorTable()[i] = RGBQUAD{(BYTE)i, (BYTE)(3 * i), (BYTE)(7 * i), 0};
    }
    return b;
}

void SetBytes(benchmark::State& state) {
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)Picture().GetBitsSize());
}

void BM_Memcpy(benchmark::State& state) { qmbench::CopyBaseline(state, Picture().GetBits(), Picture().GetBitsSize()); }
BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond);

void BM_AdjustBrightness(benchmark::State& state) {
    CDIBitmap& b = Picture();
    int sign = 1;
    for (auto _ : state) b.AdjustBrightness(sign = -sign);
    SetBytes(state);
}
BENCHMARK(BM_AdjustBrightness)->Unit(benchmark::kMillisecond);

void BM_AdjustContrast(benchmark::State& state) {
    CDIBitmap& b = Picture();
    int sign = 1;
    for (auto _ : state) b.AdjustContrast(5 * (sign = -sign));
    SetBytes(state);
}
BENCHMARK(BM_AdjustContrast)->Unit(benchmark::kMillisecond);

void BM_Mirror(benchmark::State& state) {
    CDIBitmap& b = Picture();
    for (auto _ : state) b.Mirror();
    SetBytes(state);
}
BENCHMARK(BM_Mirror)->Unit(benchmark::kMillisecond);

void BM_Rotate90(benchmark::State& state) {
    CDIBitmap& b = Picture();
    for (auto _ : state) b.Rotate(CDIBitmap::eRotate90);
    SetBytes(state);
}
BENCHMARK(BM_Rotate90)->Unit(benchmark::kMillisecond);

void BM_Resize(benchmark::State& state) {
    // One resize before timing: the process's first block of this size waits while the kernel
    // gathers free memory into huge pages (hundreds of milliseconds on a busy machine, once),
    // and this benchmark library has no warm-up setting, so a single slow first iteration would
    // otherwise be the whole measurement.
    {
        CDIBitmap copy;
        copy.CopyFrom(Picture());
        copy.Resize(CSize((int)state.range(0), (int)state.range(0)));
    }
    for (auto _ : state) {
        CDIBitmap copy;
        copy.CopyFrom(Picture());
        copy.Resize(CSize((int)state.range(0), (int)state.range(0)));
    }
    SetBytes(state);
}
BENCHMARK(BM_Resize)->Arg(kSide / 2)->Arg(kSide * 2)->Unit(benchmark::kMillisecond);

void BM_CopyOnly(benchmark::State& state) {
    for (auto _ : state) {
        CDIBitmap copy;
        copy.CopyFrom(Picture());
    }
    SetBytes(state);
}
BENCHMARK(BM_CopyOnly)->Unit(benchmark::kMillisecond);

void BM_CopyAs24BitsFrom8(benchmark::State& state) {
    CDIBitmap& src = Picture(8);
    for (auto _ : state) {
        CDIBitmap out;
        out.CopyAs24Bits(src);
    }
    SetBytes(state);
}
BENCHMARK(BM_CopyAs24BitsFrom8)->Unit(benchmark::kMillisecond);

void BM_BlackAndWhite(benchmark::State& state) {
    CDIBitmap& b = Picture();
    for (auto _ : state) b.BlackAndWhite();
    SetBytes(state);
}
BENCHMARK(BM_BlackAndWhite)->Unit(benchmark::kMillisecond);

void BM_Save(benchmark::State& state) {
    CDIBitmap& b = Picture();
    for (auto _ : state) {
        CFile f(kFile, CFile::modeCreate | CFile::modeWrite);
        b.Save(f, true);
        f.Close();
    }
    SetBytes(state);
}
BENCHMARK(BM_Save)->Unit(benchmark::kMillisecond);

void BM_Load(benchmark::State& state) {
    for (auto _ : state) {
        CFile f(kFile, CFile::modeRead);
        CDIBitmap b;
        if (!b.Load(f, true)) state.SkipWithError("load failed");
    }
    SetBytes(state);
}
BENCHMARK(BM_Load)->Unit(benchmark::kMillisecond);

// The same bytes with plain C file calls: header and rows written, or the whole file read.
void BM_PlainWrite(benchmark::State& state) {
    CDIBitmap& b = Picture();
    for (auto _ : state) {
        FILE* f = std::fopen(kFile, "wb");
        std::fwrite(b.GetInfoHeader(), 1, b.GetInfoLength() + 14, f);
        std::fwrite(b.GetBits(), 1, b.GetBitsSize(), f);
        std::fclose(f);
    }
    SetBytes(state);
}
BENCHMARK(BM_PlainWrite)->Unit(benchmark::kMillisecond);

// Reading goes into a new block each time, as any reader of a picture must.
void BM_PlainRead(benchmark::State& state) {
    size_t n = Picture().GetBitsSize() + Picture().GetInfoLength() + 14;
    for (auto _ : state) {
        std::unique_ptr<BYTE[]> to(new BYTE[n]);
        FILE* f = std::fopen(kFile, "rb");
        benchmark::DoNotOptimize(std::fread(to.get(), 1, n, f));
        std::fclose(f);
    }
    SetBytes(state);
}
BENCHMARK(BM_PlainRead)->Unit(benchmark::kMillisecond);

const bool kRatios = [] {
    SetCvTraceSink(&Quiet);
    qmbench::AddRatio("AdjustBrightness / memcpy", "BM_AdjustBrightness", "BM_Memcpy", "<= 1.5");
    qmbench::AddRatio("AdjustContrast / memcpy", "BM_AdjustContrast", "BM_Memcpy", "<= 1.5");
    qmbench::AddRatio("Mirror / memcpy", "BM_Mirror", "BM_Memcpy", "<= 1.5");
    qmbench::AddRatio("Rotate(90) / memcpy", "BM_Rotate90", "BM_Memcpy", "<= 3");
    qmbench::AddRatio("Resize to half (with its copy) / memcpy", "BM_Resize/2048", "BM_Memcpy", "<= 2");
    qmbench::AddRatio("Resize to double (with its copy) / memcpy", "BM_Resize/8192", "BM_Memcpy", "<= 6");
    qmbench::AddRatio("the copy alone / memcpy", "BM_CopyOnly", "BM_Memcpy", "report");
    qmbench::AddRatio("Save / plain fwrite", "BM_Save", "BM_PlainWrite", "<= 2");
    qmbench::AddRatio("Load / plain fread", "BM_Load", "BM_PlainRead", "<= 2");
    qmbench::AddRatio("CopyAs24Bits of 8 bits / memcpy", "BM_CopyAs24BitsFrom8", "BM_Memcpy", "<= 2");
    qmbench::AddRatio("BlackAndWhite / memcpy", "BM_BlackAndWhite", "BM_Memcpy", "<= 2");
    return true;
}();

// With QM_BENCH_PICTURE=<prefix> in the environment, the 24-bit and 8-bit pictures are also
// saved as <prefix>_24.bmp and <prefix>_8.bmp, so that another program (bench/pillow.py) can
// run the same operations on the same pictures.
void SavePictures(const char* prefix) {
    for (int bpp : {24, 8}) {
        std::string name = std::string(prefix) + "_" + std::to_string(bpp) + ".bmp";
        CFile f(name.c_str(), CFile::modeCreate | CFile::modeWrite);
        Picture(bpp).Save(f, true);
        f.Close();
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (const char* prefix = std::getenv("QM_BENCH_PICTURE")) SavePictures(prefix);
    int rc = qmbench::RunAndReport(argc, argv);
    std::remove(kFile);
    return rc;
}
