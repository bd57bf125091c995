// Path strings, folders, drives and iteration. FileSystem is a namespace of static operations:
// the path algebra works on text alone (apart from the few operations that ask the system
// for a path's long or full form), the rest asks the operating system about paths or changes
// the disk. Paths are Windows paths on every target ("Z:\tmp\a.txt"; see the platform's
// paths service). Folder texts end in a backslash; results that wrap the system are non-zero
// for success, except MakePath, which follows the C runtime (0 for success).
#pragma once

#include "utils/framework/CString.h"
#include "utils/framework/winfile.h"
#include "utils/framework/export.h"

class MFCQMUTILS_API FileSystem {
public:
    // A forward iterator over the entries of one folder that match a pattern. A new iterator
    // already stands on the first entry ("." and ".." are skipped when they come first).
    // Copies share the search handle, and each closes it: do not copy an open search.
    class MFCQMUTILS_API CFileItr {
    public:
        CFileItr(const char* folder, const char* pattern);
        CFileItr(const CFileItr& other);
        CFileItr& operator=(const CFileItr& other);
        ~CFileItr();

        bool First();
        bool Next();
        bool IsValid() const;
        bool IsDirectory() const;
        // The current entry's name, or nullptr when the iterator is not valid.
        const char* operator*() const;
        CString FullPath() const;

    private:
        HANDLE m_hFind;
        CString m_sPattern;
        CString m_sFolder;
        WIN32_FIND_DATAA m_FindData;
        int m_bValid;
    };

    // --- quoting and separators ---
    static CString& AddQuotes(CString& path);
    static int RemoveQuotes(CString& path);
    static CString& EnsureBackslash(CString& path);
    static CString CreateFilePath(const char* folder, const char* fileName);

    // --- splitting and changing parts ---
    static CString ChangeExtension(const CString& path, const CString& extension);
    static CString ChangeFileName(const CString& path, const CString& newName);
    static CString ChangeDir(const CString& path, const CString& newFolder);
    static CString& RemoveExtension(CString& path);
    static CString ExtractDrive(const CString& FileName);
    static CString ExtractExtension(const CString& path);
    static CString ExtractFile(const CString& path);
    static CString ExtractFileName(const CString& path);
    static CString ExtractPath(const CString& path);

    // --- tests, relative and absolute forms ---
    static bool IsFullPath(const CString& path);
    static bool IsPathInFolder(const CString& path, const CString& folder);
    static CString GetAbsolutePath(CString sRelativeFilePath, CString sBaseFilePath);
    static CString GetRelativePath(CString sFilePath, CString sBaseFilePath);

    // --- display and naming ---
    static int CompactPath(const CString& csSrc, CString& csTarget, unsigned int nMaximum);
    static CString IncrementFileName(const CString& path);
    static void MakeUniqueFileName(CString& FileName);
    static char* GetPath(const char* commandText, CString& target, int quote);
    static char* ExpandPathToFull(CString& path);

    // --- existence, forms and network names ---
    static bool FileExists(const char* path);
    static int MakeFull(CString& path);
    static int MakeShort(CString& path);
    static int MakeFullShort(CString& path);
    static int MakeLong(CString& path);
    static CString GetUniversalName(const CString& path);
    static bool ReconnectNetworkDrive(const char* drive, bool interactive, DWORD& error);

    // --- current folder and drives ---
    static CString GetCurrentDirectory();
    static int SetCurrentDirectory(const char* pDir);
    static int GetDrive();
    static int SetDrive(int drive);
    static CString GetDriveCurrent(int drive);
    // A block of drive roots ("A:\", ... each ending in a zero, a second zero at the end) that
    // the caller frees with free(); returns the list's length without the final zero.
    static DWORD GetDriveStrings(char** drives);

    // --- creating and removing ---
    static int MakePath(const char* path);
    static int RemoveFolder(const char* szPath);
    static int RemoveCurrentFolder();
    static int RemoveFile(const char* path);
    static CString SearchEnvironment(const char* pFileName, const char* pVar);
    static CString GetTempFileName();
};

class MFCQMUTILS_API MFCFileSystem {
public:
    // Copies the files (not the subfolders) of source into target, which must end in a
    // backslash: entry names are appended to it as they are. 1 on success, 0 on failure.
    static int CopyDirectory(const char* source, const char* target);
};
