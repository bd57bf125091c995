// Whole-row kernels of the bitmap operations (not exported). Each computes, for a run of
// pixels, exactly what the per-pixel primitives would; callers fall back to the primitives
// wherever a rule needs them (odd depths, masks, short pixel blocks).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "utils/framework/wintypes.h"
#include "utils/platform/cpu.h"

namespace qm::dib {

// `width` pixels of depth 1, 4, 8 (through `palette`, 0x00RRGGBB per index), 16 (5-5-5),
// 24 or 32 bits written as 3-byte blue-green-red pixels; exactly 3 * width bytes of `out`
// are written.
// `channels`, when given for 8 bits, holds the palette's blue, green and red bytes as three
// tables of 256 (for the 64-byte kernels).
void RowTo24(const BYTE* in, BYTE* out, std::size_t width, int bpp, const std::uint32_t* palette,
             const BYTE* channels = nullptr);

// Each pixel of 3 or 4 bytes becomes grey (blue + green + red) / 3 in its three colour
// bytes; a fourth byte becomes 0. `scratch` holds at least width * pixelBytes bytes.
void GreyRow(BYTE* row, std::size_t width, std::size_t pixelBytes, BYTE* scratch);

// Reverses the order of the `width` pixels of `pixelBytes` bytes at the start of `row`;
// `scratch` holds at least width * pixelBytes + 8 bytes.
void MirrorRow(BYTE* row, std::size_t width, std::size_t pixelBytes, BYTE* scratch);

// out[i] = the 3-byte pixel at byte offset offsets[i] of `in`, for i < count; `inBytes`
// bytes of `in` may be read.
void GatherRow24(BYTE* out, const BYTE* in, std::size_t inBytes, const std::uint32_t* offsets, std::size_t count);

// A quarter turn of a square picture of whole-byte pixels (1, 3 or 4 bytes) in its own
// block. Clockwise, storage pixel (x, y) takes the old pixel (side - 1 - y, x); counter-
// clockwise, the old pixel (y, side - 1 - x). Padding bytes are not written.
void QuarterTurnInPlace(BYTE* bits, std::uint64_t stride, int side, std::size_t pixelBytes, bool clockwise);

}  // namespace qm::dib

namespace qm::dib {

// Kernels on 64-byte vectors, for processors that have them (checked once, at first use).
using qm::platform::HasByteShuffle512;
// p[i] = table[p[i]] for i < n.
void MapBytes512(BYTE* p, std::size_t n, const BYTE* table);
// The first pixels of MirrorRow for 3-byte pixels from a copy of the row (with 8 spare bytes);
// returns how many pixels of `out` were written.
std::size_t MirrorRow24_512(BYTE* out, const BYTE* in, std::size_t width);
// The first pixels of GreyRow for 3-byte pixels from a copy of the row; returns how many
// pixels were written.
std::size_t GreyRow24_512(BYTE* row, const BYTE* copy, std::size_t width);


// The first pixels of RowTo24 for 8 bits, 64 at a time; returns how many were written.
std::size_t Palette8To24_512(BYTE* out, const BYTE* in, std::size_t width, const BYTE* channels);

// 16 rows of `width` 3-byte pixels from 16 columns, in blocks of 16 x 16 pixels: pixel i of
// output row q (at out + q * outStep) is pixel q of input row i (at in + i * inStep); either
// step may be negative. 64 bytes are read from each input row. Returns how many pixels of
// each output row were written (16 per whole block), no byte past them.
std::size_t Transpose24x16_512(const BYTE* in, std::ptrdiff_t inStep, BYTE* out, std::ptrdiff_t outStep, std::size_t width);

// Byte indexes for GatherRow24_512: for each run of 16 target pixels whose source pixels lie
// within 128 bytes, where that window starts and which of its bytes each target byte takes.
// When the offsets repeat every 64 target pixels shifted by the same number of bytes and the
// first 64 take their bytes from within 128 (growing by 1.5 or more, as doubling does), the
// whole row goes in blocks of 64 pixels (192 bytes, three full permutations) with one set of
// indexes instead.
// A target block at least this large is not read again while it is written: rows written
// with streaming stores bypass the caches (and do not read each line before writing it).
constexpr std::uint64_t kStreamedTarget = std::uint64_t(8) << 20;

struct GatherPlan {
    std::size_t targets = 0;  // the count planned for
    std::size_t runs = 0;     // leading runs that have a window
    std::vector<std::uint32_t> start;
    std::vector<BYTE> index;  // 64 per run
    std::size_t blocks = 0;   // whole repeating blocks of 64 (0: the runs are used)
    std::uint32_t blockStart = 0, blockStep = 0;
    std::vector<BYTE> blockIndex;  // 192
    // Or the whole row in pieces of 64 target bytes, each from one 128-byte source window
    // (0: not planned). Set `stream` for a target too large to stay cached: pieces that start
    // on a cache line then go straight to memory.
    std::size_t pieces = 0;
    std::vector<std::uint32_t> pieceStart;
    std::vector<BYTE> pieceIndex;  // 64 per piece
    bool stream = false;
};
void PlanGather24(const std::uint32_t* offsets, std::size_t count, GatherPlan& plan);
// GatherRow24 for the planned runs whose window lies inside the `inBytes` readable bytes;
// returns how many target pixels were written (16 per run, from the first). With repeating
// blocks the pixels are also written to the `copies` - 1 rows that follow `out` at `outStride`
// bytes from each other (a row read once for every target row that samples it). `ahead`, if
// not 0, is how many bytes past `in` the next input row to gather starts: that row's windows
// are prefetched as this row's are read (pieces only).
std::size_t GatherRow24_512(BYTE* out, const BYTE* in, std::size_t inBytes, const GatherPlan& plan,
                            std::size_t copies = 1, std::size_t outStride = 0, std::size_t ahead = 0);

}  // namespace qm::dib
