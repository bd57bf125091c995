// Path algebra: quoting, splitting, joining, relative and absolute forms, compacting for
// display and unique names. Only MakeLong, the attribute test of MakeUniqueFileName and
// ExpandPathToFull ask the system anything.
#include "utils/common/FileSystem.h"

#include <algorithm>
#include <string>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/framework/mbchar.h"
#include "utils/platform/files.h"

#define QM_SOURCE_MODULE "Common\\FileSystem"

namespace {

// The runtime splitter's buffers: drive, folder, name and extension, each with its zero.
constexpr size_t kDrive = 3, kDir = 256, kName = 256, kExt = 256;

struct Parts {
    char drive[kDrive];
    char dir[kDir];
    char fname[kName];
    char ext[kExt];
};

// A component too long for its buffer empties every part, as the runtime does.
void Split(const CString& path, Parts& p) {
    qm::platform::SplitPathS(path, p.drive, kDrive, p.dir, kDir, p.fname, kName, p.ext, kExt);
}

bool IsDriveRoot(const CString& s) {
    return s.GetLength() >= 3 && mbc::IsAlpha((unsigned char)s[0]) && s[1] == ':' && s[2] == '\\';
}

// Adds one to a run of decimal digits of any length (leading zeros dropped).
std::string PlusOne(const std::string& digits) {
    size_t first = digits.find_first_not_of('0');
    std::string n = first == std::string::npos ? "0" : digits.substr(first);
    for (size_t i = n.size(); i-- > 0;) {
        if (n[i] != '9') {
            ++n[i];
            return n;
        }
        n[i] = '0';
    }
    return "1" + n;
}

}  // namespace

CString& FileSystem::AddQuotes(CString& path) {
    if (path.IsEmpty() || path[0] == '"') return path;
    CString quoted = path;
    quoted.Remove('"');
    path = "\"" + quoted + "\"";
    return path;
}

int FileSystem::RemoveQuotes(CString& path) {
    if (path.IsEmpty() || path[0] != '"') return 0;
    path.Delete(0);
    if (!path.IsEmpty() && path[path.GetLength() - 1] == '"') path.Delete(path.GetLength() - 1);
    return 1;
}

CString& FileSystem::EnsureBackslash(CString& path) {
    if (!CVASSERT(!path.IsEmpty())) return path;
    if (path[path.GetLength() - 1] != '\\') path += '\\';
    return path;
}

CString FileSystem::CreateFilePath(const char* folder, const char* fileName) {
    CString result = folder;
    result.TrimRight("\\/");
    result += '\\';
    result += fileName;
    return result;
}

CString FileSystem::ExtractPath(const CString& path) {
    int cut = path.ReverseFind('\\');
    if (cut < 0) cut = path.ReverseFind(':');
    return cut < 0 ? CString() : path.Left(cut + 1);
}

CString FileSystem::ExtractFile(const CString& path) {
    Parts p;
    Split(path, p);
    return CString(p.fname) + p.ext;
}

CString FileSystem::ExtractFileName(const CString& path) {
    CString file = ExtractFile(path);
    int dot = file.ReverseFind('.');
    return dot < 0 ? file : file.Left(dot);
}

CString FileSystem::ExtractExtension(const CString& path) {
    int dot = path.ReverseFind('.');
    return dot < 0 ? CString() : path.Mid(dot + 1);
}

CString& FileSystem::RemoveExtension(CString& path) {
    int dot = path.ReverseFind('.');
    if (dot >= 0) path.Truncate(dot);
    return path;
}

CString FileSystem::ChangeExtension(const CString& path, const CString& extension) {
    CString result = path;
    RemoveExtension(result);
    return result + "." + extension;
}

CString FileSystem::ChangeFileName(const CString& path, const CString& newName) {
    Parts p;
    Split(path, p);
    // The joiner never needs more than the path plus the new name (the split folder already
    // ends in a separator and the split extension starts with its dot).
    std::vector<char> out((size_t)newName.GetLength() + (size_t)path.GetLength() + 1);
    if (qm::platform::MakePathS(out.data(), out.size(), p.drive, p.dir, newName, p.ext) != 0) return CString();
    return CString(out.data());
}

CString FileSystem::ChangeDir(const CString& path, const CString& newFolder) {
    Parts p;
    Split(path, p);
    CString name = CString(p.fname) + p.ext;
    // The shell's combiner writes up to MAX_PATH characters whatever the inputs' lengths, so
    // the buffer is never smaller than that.
    size_t capacity = std::max<size_t>((size_t)path.GetLength() + (size_t)newFolder.GetLength() + 1, MAX_PATH + 1);
    std::vector<char> out(capacity, '\0');
    if (!qm::platform::PathJoin(out.data(), newFolder, name)) return CString();
    return CString(out.data());
}

CString FileSystem::ExtractDrive(const CString& FileName) {
    CVASSERT(FileName.GetLength() > 2);
    CString Ret;
    if (FileName.Find(':') != -1) {
        Ret = FileName.Left(3);
        if (Ret.Right(2) != ":\\") CVASSERT_TEXT("Ret.Right(2) == TEXT(\":\\\\\")");
    } else {
        int start = FileName.Find("\\\\");
        if (start == -1) {
            CVASSERT_TEXT("FileName.Find(TEXT (\"\\\\\\\\\")) != -1");
            start = 0;  // no pair of backslashes: copy from the start rather than before it
        }
        int backslashes = 0;
        for (int i = start; i < FileName.GetLength() && backslashes < 4; ++i) {
            char c = FileName[i];
            Ret += c;
            if (c == '\\') ++backslashes;
        }
        if (backslashes < 3) CVASSERT_TEXT("i < 2");
        if (backslashes < 4) Ret += '\\';
    }
    CVASSERT(Ret.GetLength() > 2);
    if (Ret.Right(1) != "\\") CVASSERT_TEXT("Ret.Right(1) == TEXT(\"\\\\\")");
    return Ret;
}

bool FileSystem::IsFullPath(const CString& path) { return path.FindOneOf(":/\\") != -1; }

bool FileSystem::IsPathInFolder(const CString& path, const CString& folder) {
    CString p = path, f = folder;
    p.TrimRight("\\/");
    f.TrimRight("\\/");
    p.MakeLower();
    f.MakeLower();
    return p.Left(f.GetLength()) == f;
}

CString FileSystem::GetRelativePath(CString sFilePath, CString sBaseFilePath) {
    MakeLong(sFilePath);
    MakeLong(sBaseFilePath);
    if (sBaseFilePath.IsEmpty()) return CString();
    CString folder = ExtractPath(sFilePath);
    CString name = ExtractFile(sFilePath);
    CString base = ExtractPath(sBaseFilePath);
    if (folder.Left(base.GetLength()).CompareNoCase(base) == 0 && folder.GetLength() >= base.GetLength())
        return folder.Mid(base.GetLength()) + name;
    // Same drive: the drive-rooted form. The letters are compared as bytes, so "c:" and "C:"
    // are different drives here (kept as it is).
    if (IsDriveRoot(folder) && IsDriveRoot(base) && folder[0] == base[0]) return folder.Mid(2) + name;
    return CString();
}

CString FileSystem::GetAbsolutePath(CString sRelativeFilePath, CString sBaseFilePath) {
    if (sRelativeFilePath.IsEmpty()) return CString();
    MakeLong(sBaseFilePath);
    CString base = ExtractPath(sBaseFilePath);
    if (sRelativeFilePath.Left(2) == "\\\\") return sRelativeFilePath;
    if (sRelativeFilePath[0] == '\\') return base.Left(2) + sRelativeFilePath;
    if (sRelativeFilePath.GetLength() > 1 && sRelativeFilePath[1] == ':') {
        bool wellFormed = mbc::IsAlpha((unsigned char)sRelativeFilePath[0]) && sRelativeFilePath.GetLength() > 2 &&
                          sRelativeFilePath[2] == '\\';
        if (!wellFormed) CVASSERT_TEXT("_istalpha (sRelativeFilePath[0]) && sRelativeFilePath[2] == '\\\\'");
        return sRelativeFilePath;
    }
    return base + sRelativeFilePath;
}

int FileSystem::CompactPath(const CString& csSrc, CString& csTarget, unsigned int nMaximum) {
    csTarget.Empty();
    CVASSERT(0 <= csSrc.GetLength());
    if (nMaximum >= (unsigned)csSrc.GetLength()) {
        csTarget = csSrc;
        return 1;
    }
    // nMaximum is below the source's length here, so the buffer stays small.
    std::vector<char> out((size_t)nMaximum + 2, '\0');
    BOOL bCompact = qm::platform::PathCompact(out.data(), csSrc, nMaximum, 0);
    CVASSERT(bCompact);
    csTarget = out.data();
    return bCompact;
}

CString FileSystem::IncrementFileName(const CString& path) {
    std::string name = ExtractFileName(path).str();
    size_t digits = name.size();
    while (digits > 0 && mbc::IsDigit((unsigned char)name[digits - 1])) --digits;
    // Any number of digits is incremented as text, so a long run cannot overflow.
    std::string number = digits < name.size() ? PlusOne(name.substr(digits)) : "1";
    return ChangeFileName(path, CString(name.substr(0, digits) + number));
}

void FileSystem::MakeUniqueFileName(CString& FileName) {
    if (qm::platform::FileGetAttributes(FileName) == INVALID_FILE_ATTRIBUTES) return;
    int idxBase = FileName.ReverseFind('\\') + 1;
    CVASSERT(idxBase < FileName.GetLength());
    CString folder = FileName.Left(idxBase);
    CString name = FileName.Mid(idxBase);
    int dot = name.Find('.');
    CString base = dot < 0 ? name : name.Left(dot);
    CString ext = dot < 0 ? CString() : name.Mid(dot);
    CString original = base;
    int len = base.GetLength();
    base.TrimRight();
    bool numbered = len >= 2 && original[len - 2] == ' ' && mbc::IsDigit((unsigned char)original[len - 1]);
    if (!numbered) base += " 1";
    FileName = folder + base + ext;
    int pos = folder.GetLength() + base.GetLength() - 1;
    // The one character advances through the codes ("9" is followed by "A"). It stops at the
    // last code (255) rather than wrap around, so the search always ends; the path then names
    // the last candidate tried.
    for (;;) {
        unsigned char c = (unsigned char)FileName[pos];
        if (c == 0xFF) break;
        FileName.SetAt(pos, (char)(c == '9' ? 'A' : c + 1));
        if (qm::platform::FileGetAttributes(FileName) == INVALID_FILE_ATTRIBUTES) break;
    }
}

// The path is collected in a growing string, so a path longer than the 260 characters of the
// original buffer is taken whole instead of overrunning it.
char* FileSystem::GetPath(const char* commandText, CString& target, int quote) {
    if (!commandText) {
        target.Empty();
        return nullptr;
    }
    std::string out;
    if (quote) out += '"';
    bool inQuotes = false;
    const char* p = commandText;
    for (; (unsigned char)*p >= 32; ++p) {
        if (*p == '"') {
            inQuotes = !inQuotes;
            continue;
        }
        if (*p == ' ' && !inQuotes) break;
        out += *p;
    }
    if (out.size() == 1) {
        target.Empty();
    } else {
        if (quote) out += '"';
        target = CString(out);
    }
    return const_cast<char*>(p);
}

char* FileSystem::ExpandPathToFull(CString& path) {
    CString copy = path;
    char buffer[MAX_PATH];
    char* filePart = nullptr;
    DWORD n = qm::platform::PathGetFull(copy, MAX_PATH, buffer, &filePart);
    if (n == 0 || n >= MAX_PATH) {
        path.Empty();
        return path.GetBuffer();
    }
    path = buffer;
    // A full path that ends in a backslash has no name: the result points at its end.
    int offset = filePart ? (int)(filePart - buffer) : path.GetLength();
    return path.GetBuffer() + offset;
}
