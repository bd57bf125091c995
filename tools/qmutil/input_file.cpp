#include "input_file.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include "command.h"
#include "utils/common/DIB.h"
#include "utils/framework/CFile.h"

namespace qmutil {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(const std::string& path, const std::string& reason) {
    throw UsageError("'" + path + "': " + reason);
}

std::string Size(std::uintmax_t bytes) {
    if (bytes % (1u << 20) == 0) return std::to_string(bytes >> 20) + " MiB";
    return std::to_string(bytes) + " bytes";
}

// Why something that exists is not a file to read, or "" for a regular file.
std::string NotAFile(const fs::file_status& st) {
    switch (st.type()) {
        case fs::file_type::regular: return "";
        case fs::file_type::directory: return "is a folder, not a file";
        case fs::file_type::fifo: return "is a FIFO, not a regular file";
        case fs::file_type::character:
        case fs::file_type::block: return "is a device, not a regular file";
        case fs::file_type::socket: return "is a socket, not a regular file";
        default: return "is not a regular file";
    }
}

}  // namespace

void CheckInputFile(const std::string& path, std::uintmax_t limit, bool allowEmpty) {
    if (path.empty()) Refuse(path, "no file named");
    std::error_code ec;
    fs::file_status st = fs::status(path, ec);
    if (st.type() == fs::file_type::not_found) Refuse(path, "no such file");
    if (ec) Refuse(path, "cannot be read (" + ec.message() + ")");
    std::string why = NotAFile(st);
    if (!why.empty()) Refuse(path, why);
    std::uintmax_t size = fs::file_size(path, ec);
    if (ec) Refuse(path, "cannot be read (" + ec.message() + ")");
    if (size == 0 && !allowEmpty) Refuse(path, "is empty");
    if (size > limit) Refuse(path, "is larger than " + Size(limit) + " (the limit for this command)");
}

void CheckOutputFile(const std::string& path) {
    std::error_code ec;
    fs::file_status st = fs::status(path, ec);
    if (st.type() == fs::file_type::not_found) return;
    std::string why = NotAFile(st);
    if (!why.empty()) Refuse(path, why);
}

std::string ReadInputFile(const std::string& path, std::uintmax_t limit, bool text) {
    std::ifstream file;
    if (path != "-") {
        CheckInputFile(path, limit);
        file.open(path, std::ios::binary);
        if (!file) Refuse(path, "cannot be opened");
    }
    std::istream& in = path == "-" ? std::cin : file;
    // Read in blocks up to the limit: a file that grows meanwhile (or standard input) is cut off
    // with a refusal rather than read without bound.
    std::string data;
    char block[65536];
    while (in.read(block, sizeof block) || in.gcount() > 0) {
        data.append(block, (size_t)in.gcount());
        if (data.size() > limit) Refuse(path, "holds more than " + Size(limit) + " (the limit for this command)");
    }
    if (in.bad()) Refuse(path, "cannot be read");
    if (text && std::memchr(data.data(), '\0', data.size())) Refuse(path, "is a binary file (it holds NUL bytes), not text");
    return data;
}

void LoadBmpFile(const std::string& path, CDIBitmap& bmp) {
    const std::string bytes = ReadInputFile(path, kMaxPictureBytes, false);
    CMemFile file;
    file.Write(bytes.data(), (UINT)bytes.size());
    file.SeekToBegin();
    if (!bmp.Load(file, true)) throw UsageError("'" + path + "' is not a BMP file the library reads");
}

namespace {
void DropAssert(const char*, const char*, int) {}
void DropTrace(const char*) {}
}  // namespace

QuietLibraryReports::QuietLibraryReports() : m_assert(SetCvAssertSink(&DropAssert)), m_trace(SetCvTraceSink(&DropTrace)) {}

QuietLibraryReports::~QuietLibraryReports() {
    SetCvAssertSink(m_assert);
    SetCvTraceSink(m_trace);
}

}  // namespace qmutil
