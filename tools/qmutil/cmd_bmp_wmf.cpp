// qmutil bmp to-wmf | from-wmf: BMP files to and from placeable Windows metafiles holding the
// picture as one DIB record.
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "command.h"
#include "input_file.h"
#include "utils/common/CVLogger.h"
#include "utils/common/DIB.h"
#include "utils/common/OleUtils.h"
#include "utils/framework/CFile.h"

namespace {

using qmutil::UsageError;

void Write(const std::string& path, const std::function<void(CFile&)>& body) {
    try {
        CFile target(path.c_str(), CFile::modeCreate | CFile::modeWrite);
        body(target);
        target.Close();
    } catch (CException* e) {
        e->Delete();
        throw UsageError("cannot write '" + path + "'");
    }
}

int ToWmf(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 2, "bmp to-wmf IN.bmp OUT.wmf");
    qmutil::QuietLibraryReports quiet;
    CDIBitmap bmp;
    qmutil::LoadBmpFile(args[0], bmp);
    if (bmp.GetWidth() > 32767 || bmp.GetHeight() > 32767)
        throw UsageError("'" + args[0] + "' is larger than a metafile can describe (32767 pixels a side)");
    qmutil::CheckOutputFile(args[1]);
    CMemFile wmf;
    if (!OleUIMetafileWriteBitmap(bmp, wmf)) throw UsageError("cannot make a metafile of '" + args[0] + "'");
    std::vector<BYTE> bytes((size_t)wmf.GetLength());
    wmf.SeekToBegin();
    wmf.Read(bytes.data(), (UINT)bytes.size());
    Write(args[1], [&](CFile& f) { f.Write(bytes.data(), (UINT)bytes.size()); });
    std::printf("%s: %d x %d -> %s (%zu bytes)\n", args[0].c_str(), bmp.GetWidth(), bmp.GetHeight(), args[1].c_str(),
                bytes.size());
    return 0;
}

int FromWmf(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 2, "bmp from-wmf IN.wmf OUT.bmp");
    qmutil::QuietLibraryReports quiet;
    const std::string bytes = qmutil::ReadInputFile(args[0], qmutil::kMaxPictureBytes, false);
    qmutil::CheckOutputFile(args[1]);
    CMemFile file;
    file.Write(bytes.data(), (UINT)bytes.size());
    file.SeekToBegin();
    CDIBitmap bmp;
    if (!OleUIMetafileReadBitmap(bmp, file)) throw UsageError("'" + args[0] + "' is not a metafile holding a picture");
    Write(args[1], [&](CFile& f) { bmp.Save(f, true); });
    std::printf("%s: %d x %d, %d bits per pixel -> %s\n", args[0].c_str(), bmp.GetWidth(), bmp.GetHeight(),
                (int)bmp.GetBitCount(), args[1].c_str());
    return 0;
}

qmutil::Registrar toWmf({"bmp", "to-wmf", "a BMP as a placeable Windows metafile (.wmf)",
                         "usage: qmutil bmp to-wmf IN.bmp OUT.wmf\n"
                         "  Writes the picture as a placeable metafile: a 22-byte header (bounding box, units per\n"
                         "  inch from the picture's resolution or 96) and one DIB record over a window of the\n"
                         "  picture's size. At most 32767 pixels a side.\n",
                         ToWmf, nullptr, 59});
qmutil::Registrar fromWmf({"bmp", "from-wmf", "the first picture of a Windows metafile as a BMP",
                           "usage: qmutil bmp from-wmf IN.wmf OUT.bmp\n"
                           "  Reads a metafile, with or without the placeable header, and saves the first DIB its\n"
                           "  records carry as a BMP file.\n",
                           FromWmf, nullptr, 59});

}  // namespace
