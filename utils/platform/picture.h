// The system picture loader: a picture read from a COM stream (OleLoadPicture asking for
// IPicture on Windows; stb_image elsewhere, for PNG, JPEG, GIF, BMP and PNM), its extent in 0.01 mm, and rendering it onto a device context.
#pragma once

#include <cstdint>

#include "utils/framework/objidl.h"
#include "utils/framework/wingdc.h"

namespace qm::platform {

struct Picture;

// Null when the stream holds no picture the loader reads.
Picture* PictureLoad(IStream* stream);
// The most pixels (width x height) of a picture PictureLoad decodes; a larger one is refused
// before it is decoded. Returns the previous limit. 16 Mi pixels by default on POSIX; a program
// that only needs small pictures (a fuzzer, a thumbnail reader) lowers it. Windows: the
// system loader keeps its own limits and the value is only recorded.
std::uint64_t SetPictureLoadLimit(std::uint64_t pixels);
// Width and height in HIMETRIC units (0.01 mm).
bool PictureExtent(Picture* picture, LONG* width, LONG* height);
// IPicture::Render: the source rectangle in HIMETRIC with its origin at the bottom left (so
// a source from y = height with a negative height draws the picture upright).
bool PictureRender(Picture* picture, HDC hdc, int x, int y, int cx, int cy, LONG xSrc, LONG ySrc, LONG cxSrc,
                   LONG cySrc);
void PictureRelease(Picture* picture);

}  // namespace qm::platform
