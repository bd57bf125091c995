// qmutil clip copy | paste | copy-bmp | paste-bmp: text and pictures on the clipboard. On the
// desktop clipboard of Linux a process serves what it copied only while it runs: copy hands
// the data to a background qmutil that serves it until another program takes the clipboard.
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "command.h"
#include "input_file.h"
#include "utils/common/DIB.h"
#include "utils/common/WndUtils.h"
#include "utils/framework/CFile.h"
#include "utils/platform/host.h"

namespace {

using qmutil::UsageError;
namespace plat = qm::platform;

constexpr DWORD kHelperStartMs = 5000;

const char* const kNoDesktop =
    " (no desktop clipboard: without an X display each qmutil has a clipboard of its own, gone when it ends)";

// Puts the data on the clipboard here, or in a background helper where the data must be
// served by a process; `put` does the work, `helperArgs` start a helper that does it on
// its standard input.
int Put(const std::string& data, const std::function<bool()>& put, const std::vector<std::string>& helperArgs,
        const char* what) {
    if (plat::IsBackgroundHelper()) {
        bool ok = put();
        plat::ReportBackgroundReady(ok, ok ? nullptr : "cannot put the data on the clipboard");
        if (!ok) return 2;
        plat::ServeClipboardUntilReplaced(0);
        return 0;
    }
    if (plat::ClipboardServedByProcess()) {
        std::string why;
        if (!plat::StartBackgroundHelper(helperArgs, data, kHelperStartMs, &why))
            throw UsageError(std::string("cannot copy ") + what + ": " + why);
        std::printf("copied %s (%zu bytes); a background qmutil serves it until another program takes the clipboard\n",
                    what, data.size());
        return 0;
    }
    if (!put()) throw UsageError(std::string("cannot put ") + what + " on the clipboard");
    std::printf("copied %s (%zu bytes)%s\n", what, data.size(), plat::ClipboardIsDesktop() ? "" : kNoDesktop);
    return 0;
}

int Copy(const std::vector<std::string>& args) {
    std::string text;
    if (args.size() == 2 && args[0] == "--file")
        text = qmutil::ReadInputFile(args[1], qmutil::kMaxTextBytes, true);
    else if (args.size() == 1 && args[0] != "--file")
        text = plat::TerminalTextToAnsi(args[0]);
    else
        throw UsageError("usage: qmutil clip copy TEXT | --file F");
    return Put(text, [&] { return WndUtils::SetClipboardText(text.c_str()) != FALSE; }, {"clip", "copy", "--file", "-"},
               "text");
}

int Paste(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 0, "clip paste");
    CString text;
    if (!WndUtils::GetClipboardText(text))
        throw UsageError(std::string("the clipboard holds no text") + (plat::ClipboardIsDesktop() ? "" : kNoDesktop));
    const std::string shown = plat::AnsiToTerminalText(std::string((LPCTSTR)text, (size_t)text.GetLength()));
    std::fwrite(shown.data(), 1, shown.size(), stdout);
    return 0;
}

int CopyBmp(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "clip copy-bmp IN.bmp");
    CDIBitmap bmp;
    qmutil::LoadBmpFile(args[0], bmp);
    std::string bytes;
    if (!plat::IsBackgroundHelper() && plat::ClipboardServedByProcess()) {
        CMemFile file;
        bmp.Save(file, true);
        bytes.resize((size_t)file.GetLength());
        file.SeekToBegin();
        file.Read(bytes.data(), (UINT)bytes.size());
    }
    return Put(bytes, [&] { return bmp.SetToClipboard(nullptr); }, {"clip", "copy-bmp", "-"}, "a picture");
}

int PasteBmp(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "clip paste-bmp OUT.bmp");
    qmutil::CheckOutputFile(args[0]);
    CDIBitmap bmp;
    if (!bmp.GetFromClipboard(nullptr))
        throw UsageError(std::string("the clipboard holds no picture") + (plat::ClipboardIsDesktop() ? "" : kNoDesktop));
    try {
        CFile target(args[0].c_str(), CFile::modeCreate | CFile::modeWrite);
        bmp.Save(target, true);
        target.Close();
    } catch (CException* e) {
        e->Delete();
        throw UsageError("cannot write '" + args[0] + "'");
    }
    std::printf("pasted %d x %d, %d bits per pixel -> %s\n", bmp.GetWidth(), bmp.GetHeight(), (int)bmp.GetBitCount(),
                args[0].c_str());
    return 0;
}

const char* const kServing =
    "  On Linux with an X display the clipboard is the desktop's: copy returns at once and a\n"
    "  background qmutil serves the data until another program takes the clipboard. Without a\n"
    "  display each qmutil has a clipboard of its own, so copy and paste in separate runs cannot\n"
    "  meet.\n";

const std::string kCopyHelp = std::string("usage: qmutil clip copy TEXT | --file F\n"
                                          "  Puts the text (or the text file, '-' for standard input) on the clipboard as CF_TEXT,\n"
                                          "  lone line feeds as CR LF.\n") + kServing;
const std::string kPasteHelp = std::string("usage: qmutil clip paste\n"
                                           "  Prints the clipboard's text (also converted from Unicode or OEM text) as it is held,\n"
                                           "  with CR LF line ends.\n") + kServing;
const std::string kCopyBmpHelp = std::string("usage: qmutil clip copy-bmp IN.bmp\n"
                                             "  Puts the picture on the clipboard as CF_DIB (image/bmp for other programs on Linux).\n") +
                                 kServing;
const std::string kPasteBmpHelp = std::string("usage: qmutil clip paste-bmp OUT.bmp\n"
                                              "  Saves the clipboard's picture (CF_DIB, or image/bmp from other programs) as a BMP.\n") +
                                  kServing;

qmutil::Registrar copy({"clip", "copy", "put text on the clipboard", kCopyHelp.c_str(), Copy, nullptr, 83});
qmutil::Registrar paste({"clip", "paste", "print the clipboard's text", kPasteHelp.c_str(), Paste, nullptr, 83});
qmutil::Registrar copyBmp({"clip", "copy-bmp", "put a BMP picture on the clipboard", kCopyBmpHelp.c_str(), CopyBmp,
                           nullptr, 83});
qmutil::Registrar pasteBmp({"clip", "paste-bmp", "save the clipboard's picture as a BMP", kPasteBmpHelp.c_str(),
                            PasteBmp, nullptr, 83});

}  // namespace
