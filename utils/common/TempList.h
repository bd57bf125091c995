// The process-wide list of temporary files. Every change to a list is written at once to its
// list file (one full path per line, each ended by carriage return and line feed), so that
// files a program left behind are found again, adopted and deleted by the next run.
//
// The list file is written as a new file in the same folder that is then renamed over the
// old one, so that a crash at any moment leaves either the old or the new list, complete.
#pragma once

#include <cstdint>

#include "utils/framework/CList.h"
#include "utils/framework/CString.h"
#include "utils/module/export.h"

class CTempList;

// One tracked file; it deletes its file when it is destroyed.
class MFCQMUTILS_API CTempFile {
public:
    // Sets the path (as SetPath) and adds itself to the list ("pList != NULL").
    CTempFile(const char* pPath, CTempList* pList);
    // Copies all four fields, list and position included.
    CTempFile(const CTempFile& other);
    CTempFile& operator=(const CTempFile& other);
    // Remove(), then leaves its list.
    virtual ~CTempFile();
    // Records the current modification time again (0 when the status cannot be read).
    virtual void UpdateTemp();
    // The path's length, plus 24 with includeObject.
    virtual unsigned int GetMemSizeEstimate(bool includeObject) const;

    // Stores the path and records its modification time ("NULL != pPath").
    void SetPath(const char* pPath);
    const CString& GetPath() const { return m_csPath; }
    bool FileExists() const;
    // -1 when the status cannot be read; 1 when the file changed after the recorded time.
    int WasModified() const;
    // Deletes the file; a file in its own subfolder of the temporary folder takes the
    // subfolder with it.
    void Remove();
    void SetList(CTempList* pList, POSITION pos);
    CTempList* GetList() const { return m_pList; }
    POSITION GetPos() const { return m_pos; }

private:
    POSITION m_pos = nullptr;
    CTempList* m_pList = nullptr;
    CString m_csPath;
    std::int64_t m_tModified = 0;
};

// The persisted list; it owns every CTempFile it holds.
class MFCQMUTILS_API CTempList : public CList<CTempFile*, CTempFile*> {
public:
    // Reads the list file and adopts its entries.
    explicit CTempList(const char* pListFileName);
    ~CTempList() override;
    CTempList(const CTempList&) = delete;
    CTempList& operator=(const CTempList&) = delete;

    void Add(CTempFile* pTemp);
    // Takes the file out of the list without destroying it or touching the disk.
    void Remove(CTempFile* pTemp);
    // Destroys every file object from the head (each deletes its file).
    void RemoveAll();
    // The temporary folder + the name-and-extension part, made unique when something exists.
    void GetUniqueFileName(CString& FileName);

    const CString& GetListFileName() const { return m_csListFileName; }
    // Batch changes: while suspended, changes are not written; resuming writes the list once.
    // Saving is never suspended unless a caller asks for it.
    void SuspendSaving(bool bSuspend);
    bool IsSavingSuspended() const { return m_bSavingSuspended != 0; }

    // Lets go of every entry without deleting its file and without writing any list file,
    // then writes from now on to pListFileName, or to no file at all when it is null or empty
    // (the list is then kept in memory only). The file named before is left as it was.
    void Detach(const char* pListFileName);

    // The entries of a list file by the reading rules (259-character pieces, trailing bytes
    // below 32 as signed values trimmed, empty lines dropped); empty when it cannot be read.
    static void ReadListFile(const char* pFileName, CStringList& paths);

protected:
    CTempFile* GetFirst();
    void LoadTempFiles();
    void LoadTempFiles(const char* pFileName);
    void SaveTempFiles();
    void SaveTempFiles(const char* pFileName);
    void SaveTempFiles(const char* pFileName, const CList<CTempFile*, CTempFile*>& list);
    void AppendTempFiles(const CStringList& paths);

private:
    // Whether the list file holds exactly this list in the written form.
    bool FileHoldsList() const;

    CString m_csListFileName;
    int m_bSavingSuspended = 0;
    // False after Detach without a file: changes are kept in memory only.
    bool m_bPersisted = true;
};

// Registers a file on the process-wide list; it is deleted at DeleteTemporaryFiles or when
// the library is unloaded.
MFCQMUTILS_API void DeleteFileOnExit(const char* pPath);
// Deletes every file on the process-wide list.
MFCQMUTILS_API void DeleteTemporaryFiles();
// The process-wide list, created at load from "tempfiles.lst" in the folder then current.
MFCQMUTILS_API CTempList& GetTempListInstance();
// Detaches the process-wide list from the list file it adopted at load: every adopted entry is
// let go (no file is deleted, the adopted list file is not written again), and from then on the
// list holds only what this run registers, written to pListFileName or, when that is null,
// kept in memory only. A host that does not make its own data folder current before loading
// the library calls this first thing in main, so that a "tempfiles.lst" that happens to lie in
// whatever folder it was started from is never acted on.
MFCQMUTILS_API void DetachTempListInstance(const char* pListFileName = nullptr);
