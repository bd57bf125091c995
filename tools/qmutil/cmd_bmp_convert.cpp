// qmutil bmp convert: any picture the system loader reads (PNG, JPEG, GIF, BMP, ...) to a
// BMP file at the screen's colour depth.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "command.h"
#include "input_file.h"
#include "utils/common/DIB.h"
#include "utils/platform/stream.h"

namespace {

int Convert(const std::string& in, const std::string& out) {
    const std::string bytes = qmutil::ReadInputFile(in, qmutil::kMaxPictureBytes, false);
    qmutil::CheckOutputFile(out);
    IStream* stream = qm::platform::CreateMemoryStream(bytes.data(), bytes.size());
    if (!stream) throw qmutil::UsageError("out of memory reading '" + in + "'");
    CDIBitmap bmp;
    int loaded = bmp.CreateFromAnyFile(stream);
    stream->Release();
    if (!loaded) throw qmutil::UsageError("'" + in + "' is not a picture the loader reads");
    try {
        CFile target(out.c_str(), CFile::modeCreate | CFile::modeWrite);
        bmp.Save(target, true);
        target.Close();
    } catch (CException* e) {
        e->Delete();
        throw qmutil::UsageError("cannot write '" + out + "'");
    }
    std::printf("%s: %d x %d, %d bits per pixel -> %s\n", in.c_str(), bmp.GetWidth(), bmp.GetHeight(),
                (int)bmp.GetBitCount(), out.c_str());
    return 0;
}

int Run(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 2, "bmp convert IN OUT.bmp");
    return Convert(args[0], args[1]);
}

void Tour() {
    // A 2 x 2 GIF (red, green / blue, white) written out and converted.
    static const unsigned char gif[] = {
        0x47, 0x49, 0x46, 0x38, 0x39, 0x61, 0x02, 0x00, 0x02, 0x00, 0x81, 0x00, 0x00, 0xff,
        0x00, 0x00, 0x00, 0xff, 0x00, 0x00, 0x00, 0xff, 0xff, 0xff, 0xff, 0x2c, 0x00, 0x00,
        0x00, 0x00, 0x02, 0x00, 0x02, 0x00, 0x00, 0x02, 0x03, 0x44, 0xa8, 0x15, 0x00, 0x3b,
    };
    std::string in = "qmutil-tour.gif", out = "qmutil-tour.bmp";
    std::ofstream(in, std::ios::binary).write((const char*)gif, sizeof gif);
    qmutil::TourStep("bmp convert qmutil-tour.gif qmutil-tour.bmp");
    Convert(in, out);
    std::remove(in.c_str());
    std::remove(out.c_str());
}

qmutil::Registrar convert({"bmp", "convert", "any picture (PNG, JPEG, GIF, BMP, ...) to a BMP file",
                           "usage: qmutil bmp convert IN OUT.bmp\n"
                           "  Reads any picture the system picture loader understands and writes it as a BMP\n"
                           "  with a file header, at the screen's colour depth.\n",
                           Run, Tour, 58});

}  // namespace
