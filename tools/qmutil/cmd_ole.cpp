// qmutil ole ...: compound files (OLE structured storage): list, extract, pack a folder tree,
// unpack one.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "command.h"
#include "input_file.h"
#include "utils/common/OleStorage.h"
#include "utils/platform/host.h"

namespace {

using Args = std::vector<std::string>;
namespace fs = std::filesystem;

// The most a command reads of one compound file.
constexpr std::uintmax_t kMaxCompoundBytes = 1ull << 30;

class Releaser {
public:
    explicit Releaser(IUnknown* p) : m_p(p) {}
    ~Releaser() {
        if (m_p) m_p->Release();
    }
    Releaser(const Releaser&) = delete;
    Releaser& operator=(const Releaser&) = delete;

private:
    IUnknown* m_p;
};

std::string Hex(HRESULT hr) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "0x%08X", (unsigned)hr);
    return buffer;
}

std::string Why(HRESULT hr) {
    switch (hr) {
    case STG_E_FILEALREADYEXISTS: return "is not a compound file";
    case STG_E_DOCFILECORRUPT:
    case STG_E_READFAULT: return "is a damaged compound file (" + Hex(hr) + ")";
    case STG_E_FILENOTFOUND: return "not found";
    case STG_E_INVALIDNAME: return "is not a valid element name (1 to 31 characters, none of \\ / : !)";
    case STG_E_ACCESSDENIED: return "cannot be opened (access denied)";
    default: return "failed (" + Hex(hr) + ")";
    }
}

[[noreturn]] void Refuse(const std::string& what, HRESULT hr) { throw qmutil::UsageError("'" + what + "': " + Why(hr)); }

// The compound file at a native path, read whole, as a storage in memory.
IStorage* Load(const std::string& path) {
    std::string bytes = qmutil::ReadInputFile(path, kMaxCompoundBytes, false);
    IStream* stream = qm::platform::CreateMemoryStream(bytes.data(), bytes.size());
    if (!stream) throw qmutil::UsageError("'" + path + "': out of memory");
    IStorage* storage = nullptr;
    HRESULT hr = OleStorage::LoadFromStream(stream, &storage);
    stream->Release();
    if (FAILED(hr)) Refuse(path, hr);
    return storage;
}

// A name for printing: bytes below 0x20 and above 0x7E as \xNN.
std::string Printable(const std::string& name) {
    std::string out;
    for (unsigned char c : name) {
        if (c < 0x20 || c >= 0x7F || c == '\\') {
            char buffer[8];
            std::snprintf(buffer, sizeof buffer, "\\x%02X", c);
            out += buffer;
        } else {
            out.push_back((char)c);
        }
    }
    return out;
}

std::string ClassText(const CLSID& c) {
    static const CLSID zero{};
    if (std::memcmp(&c, &zero, sizeof c) == 0) return "";
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "  {%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", (unsigned)c.Data1,
                  c.Data2, c.Data3, c.Data4[0], c.Data4[1], c.Data4[2], c.Data4[3], c.Data4[4], c.Data4[5], c.Data4[6],
                  c.Data4[7]);
    return buffer;
}

void List(IStorage* storage, const std::string& prefix, int depth) {
    std::vector<OleStorageElement> items;
    HRESULT hr = OleStorage::ListElements(storage, items);
    if (FAILED(hr)) Refuse(prefix.empty() ? "/" : prefix, hr);
    for (const auto& e : items) {
        std::string name = (LPCTSTR)e.strName;
        std::string path = prefix + Printable(name);
        if (e.type == STGTY_STORAGE) {
            std::printf("d %12s %s/%s\n", "", path.c_str(), ClassText(e.clsid).c_str());
            IStorage* sub = nullptr;
            hr = OleStorage::OpenSubStorage(storage, name.c_str(), FALSE, &sub);
            if (FAILED(hr)) Refuse(path, hr);
            Releaser keep(sub);
            if (depth < 64) List(sub, path + "/", depth + 1);
        } else {
            std::printf("f %12llu %s\n", (unsigned long long)e.size, path.c_str());
        }
    }
}

int RunList(const Args& a) {
    qmutil::RequireArgs(a, 1, "ole list FILE");
    IStorage* root = Load(a[0]);
    Releaser keep(root);
    CLSID clsid;
    if (SUCCEEDED(OleStorage::GetClass(root, clsid))) std::printf("d %12s /%s\n", "", ClassText(clsid).c_str());
    List(root, "", 0);
    return 0;
}

int RunCat(const Args& a) {
    qmutil::RequireArgs(a, 2, "ole cat FILE PATH   (PATH: storage names and the stream's, joined by /)");
    IStorage* root = Load(a[0]);
    Releaser keepRoot(root);
    // Walk the storages named on the way down; the last name is the stream's.
    std::vector<std::string> parts;
    std::string part;
    for (char c : a[1]) {
        if (c == '/') {
            if (!part.empty()) parts.push_back(part);
            part.clear();
        } else {
            part.push_back(c);
        }
    }
    if (!part.empty()) parts.push_back(part);
    if (parts.empty()) throw qmutil::UsageError("'" + a[1] + "': no stream named");
    IStorage* at = root;
    std::vector<IStorage*> opened;
    std::vector<BYTE> data;
    HRESULT hr = S_OK;
    std::string failed;
    for (std::size_t i = 0; i + 1 < parts.size() && SUCCEEDED(hr); ++i) {
        IStorage* sub = nullptr;
        hr = OleStorage::OpenSubStorage(at, parts[i].c_str(), FALSE, &sub);
        if (FAILED(hr)) failed = parts[i];
        if (sub) opened.push_back(at = sub);
    }
    if (SUCCEEDED(hr)) {
        hr = OleStorage::ReadStream(at, parts.back().c_str(), data);
        if (FAILED(hr)) failed = a[1];
    }
    for (auto it = opened.rbegin(); it != opened.rend(); ++it) (*it)->Release();
    if (FAILED(hr)) Refuse(failed, hr);
    qm::platform::SetStandardOutputBinary();
    if (!data.empty()) std::fwrite(data.data(), 1, data.size(), stdout);
    return 0;
}

// File names for element names and back: %XX for control characters, '%', bytes above 0x7E
// and what a file name cannot hold on either system.
std::string Encode(const std::string& name) {
    std::string out;
    for (unsigned char c : name) {
        if (c < 0x20 || c >= 0x7F || std::strchr("%\\/:*?\"<>|", c)) {
            char buffer[4];
            std::snprintf(buffer, sizeof buffer, "%%%02X", c);
            out += buffer;
        } else {
            out.push_back((char)c);
        }
    }
    // "." and ".." are no element's file names.
    if (out == "." || out == "..") out = out == "." ? "%2E" : "%2E%2E";
    return out;
}

std::string Decode(const std::string& name) {
    std::string out;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] == '%' && i + 2 < name.size() && std::isxdigit((unsigned char)name[i + 1]) &&
            std::isxdigit((unsigned char)name[i + 2])) {
            out.push_back((char)std::stoi(name.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            out.push_back(name[i]);
        }
    }
    return out;
}

std::string ReadWhole(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in.good() && !in.eof()) throw qmutil::UsageError("'" + p.string() + "': cannot be read");
    return bytes;
}

void Pack(const fs::path& folder, IStorage* storage, int depth) {
    if (depth > 64) throw qmutil::UsageError("'" + folder.string() + "': folders nested too deep");
    std::error_code ec;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) entries.push_back(*it);
    if (ec) throw qmutil::UsageError("'" + folder.string() + "': cannot be listed (" + ec.message() + ")");
    for (const auto& entry : entries) {
        std::string name = Decode(entry.path().filename().string());
        const std::string where = entry.path().string();
        if (!OleStorage::IsValidElementName(name.c_str())) Refuse(where, STG_E_INVALIDNAME);
        if (entry.is_directory(ec)) {
            IStorage* sub = nullptr;
            HRESULT hr = OleStorage::CreateSubStorage(storage, name.c_str(), &sub, TRUE);
            if (hr == STG_E_FILEALREADYEXISTS) throw qmutil::UsageError("'" + where + "': another name differs only in case");
            if (FAILED(hr)) Refuse(where, hr);
            Releaser keep(sub);
            Pack(entry.path(), sub, depth + 1);
        } else if (entry.is_regular_file(ec)) {
            qmutil::CheckInputFile(where, kMaxCompoundBytes, true);
            std::string bytes = ReadWhole(entry.path());
            IStream* stream = nullptr;
            HRESULT hr = OleStorage::CreateStream(storage, name.c_str(), &stream, TRUE);
            if (hr == STG_E_FILEALREADYEXISTS) throw qmutil::UsageError("'" + where + "': another name differs only in case");
            if (FAILED(hr)) Refuse(where, hr);
            ULONG written = 0;
            hr = bytes.empty() ? S_OK : stream->Write(bytes.data(), (ULONG)bytes.size(), &written);
            stream->Release();
            if (FAILED(hr)) Refuse(where, hr);
        } else {
            throw qmutil::UsageError("'" + where + "': is not a regular file or folder");
        }
    }
}

int RunPack(const Args& a) {
    qmutil::RequireArgs(a, 2, "ole pack FOLDER OUT");
    std::error_code ec;
    if (!fs::is_directory(a[0], ec)) throw qmutil::UsageError("'" + a[0] + "': is not a folder");
    qmutil::CheckOutputFile(a[1]);
    IStorage* root = nullptr;
    HRESULT hr = OleStorage::CreateInMemory(&root);
    if (FAILED(hr)) Refuse(a[1], hr);
    Releaser keep(root);
    Pack(a[0], root, 0);
    IStream* out = qm::platform::CreateMemoryStream(nullptr, 0);
    if (!out) throw qmutil::UsageError("'" + a[1] + "': out of memory");
    Releaser keepOut(out);
    hr = OleStorage::SaveToStream(root, out);
    if (FAILED(hr)) Refuse(a[1], hr);
    STATSTG st{};
    out->Stat(&st, STATFLAG_NONAME);
    std::string bytes((std::size_t)st.cbSize.QuadPart, '\0');
    LARGE_INTEGER zero{};
    out->Seek(zero, STREAM_SEEK_SET, nullptr);
    ULONG got = 0;
    if (!bytes.empty()) out->Read(bytes.data(), (ULONG)bytes.size(), &got);
    std::ofstream file(a[1], std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), (std::streamsize)got);
    file.close();
    if (!file) throw qmutil::UsageError("'" + a[1] + "': cannot be written");
    std::printf("packed %s into %s (%u bytes)\n", a[0].c_str(), a[1].c_str(), (unsigned)got);
    return 0;
}

void Unpack(IStorage* storage, const fs::path& folder, int depth) {
    std::error_code ec;
    fs::create_directories(folder, ec);
    if (ec) throw qmutil::UsageError("'" + folder.string() + "': cannot be created (" + ec.message() + ")");
    std::vector<OleStorageElement> items;
    HRESULT hr = OleStorage::ListElements(storage, items);
    if (FAILED(hr)) Refuse(folder.string(), hr);
    for (const auto& e : items) {
        std::string name = (LPCTSTR)e.strName;
        fs::path target = folder / Encode(name);
        if (e.type == STGTY_STORAGE) {
            IStorage* sub = nullptr;
            hr = OleStorage::OpenSubStorage(storage, name.c_str(), FALSE, &sub);
            if (FAILED(hr)) Refuse(target.string(), hr);
            Releaser keep(sub);
            if (depth < 64) Unpack(sub, target, depth + 1);
        } else {
            std::vector<BYTE> data;
            hr = OleStorage::ReadStream(storage, name.c_str(), data);
            if (FAILED(hr)) Refuse(target.string(), hr);
            std::ofstream file(target, std::ios::binary | std::ios::trunc);
            if (!data.empty()) file.write((const char*)data.data(), (std::streamsize)data.size());
            file.close();
            if (!file) throw qmutil::UsageError("'" + target.string() + "': cannot be written");
        }
    }
}

int RunUnpack(const Args& a) {
    qmutil::RequireArgs(a, 2, "ole unpack FILE FOLDER");
    IStorage* root = Load(a[0]);
    Releaser keep(root);
    std::error_code ec;
    if (fs::exists(a[1], ec) && !fs::is_directory(a[1], ec)) throw qmutil::UsageError("'" + a[1] + "': is not a folder");
    Unpack(root, a[1], 0);
    std::printf("unpacked %s into %s\n", a[0].c_str(), a[1].c_str());
    return 0;
}

// Packs a small folder of notes, lists the file and prints one stream; the files are made in
// the current folder and removed afterwards.
void Tour() {
    const fs::path folder = "qmutil-tour-notes", file = "qmutil-tour-notes.dat";
    std::error_code ec;
    try {
        fs::create_directories(folder / "Calendar", ec);
        std::ofstream(folder / "readme.txt", std::ios::binary) << "Notes packed by the tour.\n";
        std::ofstream(folder / "Calendar" / "2012-07-04.txt", std::ios::binary) << "Fireworks at nine.\n";
        qmutil::TourStep("ole pack qmutil-tour-notes qmutil-tour-notes.dat");
        RunPack({folder.string(), file.string()});
        qmutil::TourStep("ole list qmutil-tour-notes.dat");
        RunList({file.string()});
        qmutil::TourStep("ole cat qmutil-tour-notes.dat Calendar/2012-07-04.txt");
        std::fflush(stdout);
        RunCat({file.string(), "Calendar/2012-07-04.txt"});
    } catch (const qmutil::UsageError& e) {
        std::printf("(skipped: %s)\n", e.what());
    }
    fs::remove_all(folder, ec);
    fs::remove(file, ec);
}

qmutil::Registrar g_list({"ole", "list", "the storages and streams of a compound file, with sizes",
                          "usage: qmutil ole list FILE\n"
                          "  One line per element, depth first in directory order: d (storage) or f\n"
                          "  (stream), the stream's size, the path joined by /, and a storage's class id\n"
                          "  when it has one. Bytes outside printable ASCII show as \\xNN.\n",
                          RunList, Tour, 86});
qmutil::Registrar g_cat({"ole", "cat", "the bytes of one stream of a compound file",
                         "usage: qmutil ole cat FILE PATH\n"
                         "  PATH names the storages on the way and the stream, joined by /\n"
                         "  (names without case). The bytes go to standard output as they are.\n",
                         RunCat, nullptr, 0});
qmutil::Registrar g_pack({"ole", "pack", "a folder tree into a compound file",
                          "usage: qmutil ole pack FOLDER OUT\n"
                          "  Files become streams, folders storages. %XX in a file name stands for that\n"
                          "  byte (as unpack writes them). A name that cannot be an element's (more than\n"
                          "  31 characters, one of \\ / : !, or one that differs from another only in case)\n"
                          "  is refused. Class ids and times are not kept.\n",
                          RunPack, nullptr, 0});
qmutil::Registrar g_unpack({"ole", "unpack", "a compound file into a folder tree",
                            "usage: qmutil ole unpack FILE FOLDER\n"
                            "  Streams become files, storages folders. Bytes a file name cannot hold\n"
                            "  (control characters, %, bytes above 0x7E, \\ / : * ? \" < > |) are written\n"
                            "  as %XX, which pack reads back. Class ids and times are not kept.\n",
                            RunUnpack, nullptr, 0});

}  // namespace
