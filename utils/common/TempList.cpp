#include "utils/common/TempList.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/FileSystem.h"
#include "utils/common/mfcutils_settings.h"
#include "utils/common/utils_files.h"
#include "utils/platform/files.h"
#include "utils/platform/tempfiles.h"
#include "utils/platform/userfiles.h"

#define QM_SOURCE_MODULE "Common\\TempList"

namespace {

std::int64_t ModificationTime(const CString& path) {
    std::int64_t modified = 0;
    if (!qm::platform::QueryFileStatus(path, &modified, nullptr)) return 0;
    return modified;
}

}  // namespace

// ---------------------------------------------------------------------------------------
// CTempFile

CTempFile::CTempFile(const char* pPath, CTempList* pList) {
    SetPath(pPath);
    if (CVASSERT(pList != NULL)) pList->Add(this);
}

CTempFile::CTempFile(const CTempFile& other) = default;
CTempFile& CTempFile::operator=(const CTempFile& other) = default;

CTempFile::~CTempFile() {
    Remove();
    if (m_pList) m_pList->Remove(this);
}

void CTempFile::SetPath(const char* pPath) {
    if (!CVASSERT(NULL != pPath)) pPath = "";
    m_csPath = pPath;
    m_tModified = ModificationTime(m_csPath);
}

bool CTempFile::FileExists() const { return ::FileExists(m_csPath); }

int CTempFile::WasModified() const {
    std::int64_t modified = 0;
    if (!qm::platform::QueryFileStatus(m_csPath, &modified, nullptr)) return -1;
    return modified > m_tModified ? 1 : 0;
}

void CTempFile::UpdateTemp() { m_tModified = ModificationTime(m_csPath); }

unsigned int CTempFile::GetMemSizeEstimate(bool includeObject) const {
    return (unsigned int)m_csPath.GetLength() + (includeObject ? 24u : 0u);
}

void CTempFile::Remove() {
    if (m_csPath.IsEmpty() || !::FileExists(m_csPath)) return;
    qm::platform::DeleteFileA(m_csPath);
    CString folder = FileSystem::ExtractPath(m_csPath);
    char temp[MAX_PATH + 1] = {};
    qm::platform::GetTempPathA(MAX_PATH, temp);
    const int tempLength = (int)std::strlen(temp);
    if (tempLength > 0 && folder.GetLength() != tempLength && folder.Left(tempLength).CompareNoCase(temp) == 0)
        FileSystem::RemoveFolder(folder);
}

void CTempFile::SetList(CTempList* pList, POSITION pos) {
    m_pList = pList;
    m_pos = pos;
}

// ---------------------------------------------------------------------------------------
// CTempList

CTempList::CTempList(const char* pListFileName) : m_csListFileName(pListFileName) {
    // The adopted entries are written once, at the end, and only when the file does not hold
    // exactly them already: a list file that is already in the written form is left untouched
    // (same file, mode and time), and a crash while adopting leaves the old, complete file.
    m_bSavingSuspended = 1;
    LoadTempFiles();
    m_bSavingSuspended = 0;
    if (!IsEmpty() && !FileHoldsList()) SaveTempFiles();
}

bool CTempList::FileHoldsList() const {
    std::string expected;
    for (POSITION pos = GetHeadPosition(); pos;) {
        const CTempFile* pTemp = GetNext(pos);
        if (pTemp) expected.append(pTemp->GetPath().GetString()).append("\r\n");
    }
    FILE* file = qm::platform::OpenFileStream(m_csListFileName, "rb");
    if (!file) return false;
    std::string actual(expected.size() + 1, '\0');
    actual.resize(std::fread(actual.data(), 1, actual.size(), file));
    std::fclose(file);
    return actual == expected;
}

CTempList::~CTempList() { RemoveAll(); }

void CTempList::Add(CTempFile* pTemp) {
    if (!pTemp) return;
    // A file that is already in a list is not added a second time.
    if (!CVASSERT(NULL == pTemp->GetPos())) return;
    POSITION pos = AddTail(pTemp);
    pTemp->SetList(this, pos);
    if (!m_bSavingSuspended) SaveTempFiles();
}

void CTempList::Remove(CTempFile* pTemp) {
    if (!pTemp || !CVASSERT(this == pTemp->GetList())) return;
    if (pTemp->GetPos()) RemoveAt(pTemp->GetPos());
    pTemp->SetList(nullptr, nullptr);
    if (!m_bSavingSuspended) SaveTempFiles();
}

void CTempList::RemoveAll() {
    while (!IsEmpty()) {
        CTempFile* pTemp = GetHead();
        // A null entry, or one that does not know its place here, is taken off the list
        // first, so that the loop always shortens the list.
        if (!CVASSERT(pTemp) || pTemp->GetList() != this || pTemp->GetPos() != GetHeadPosition()) {
            RemoveHead();
            if (pTemp && pTemp->GetList() == this) pTemp->SetList(nullptr, nullptr);
            if (!m_bSavingSuspended) SaveTempFiles();
            delete pTemp;
            continue;
        }
        delete pTemp;
    }
}

CTempFile* CTempList::GetFirst() { return IsEmpty() ? nullptr : GetHead(); }

void CTempList::GetUniqueFileName(CString& FileName) {
    char temp[MAX_PATH + 1] = {};
    qm::platform::GetTempPathA(MAX_PATH, temp);
    FileName = CString(temp) + FileSystem::ExtractFile(FileName);
    if (FileSystem::FileExists(FileName)) GenerateAlternateName(FileName);
    CVASSERT(!FileSystem::FileExists (FileName));
}

void CTempList::SuspendSaving(bool bSuspend) {
    bool wasSuspended = m_bSavingSuspended != 0;
    m_bSavingSuspended = bSuspend ? 1 : 0;
    if (wasSuspended && !bSuspend) SaveTempFiles();
}

void CTempList::Detach(const char* pListFileName) {
    // The entries leave without being destroyed through the list: no file is deleted and
    // nothing is written while they go.
    while (!IsEmpty()) {
        CTempFile* pTemp = RemoveHead();
        if (!pTemp) continue;
        pTemp->SetList(nullptr, nullptr);
        pTemp->SetPath("");
        delete pTemp;
    }
    m_csListFileName = pListFileName ? pListFileName : "";
    m_bPersisted = !m_csListFileName.IsEmpty();
}

void CTempList::ReadListFile(const char* pFileName, CStringList& paths) {
    if (!pFileName) return;
    FILE* file = qm::platform::OpenFileStream(pFileName, "r");
    if (!file) return;
    char line[260];
    while (std::fgets(line, sizeof line, file)) {
        size_t n = std::strlen(line);
        while (n > 0 && (signed char)line[n - 1] < 32) --n;
        if (n) paths.AddTail(CString(line, (int)n));
    }
    std::fclose(file);
}

void CTempList::LoadTempFiles() { LoadTempFiles(m_csListFileName); }

void CTempList::LoadTempFiles(const char* pFileName) {
    CStringList paths;
    ReadListFile(pFileName, paths);
    AppendTempFiles(paths);
}

void CTempList::AppendTempFiles(const CStringList& paths) {
    for (POSITION pos = paths.GetHeadPosition(); pos;) new CTempFile(paths.GetNext(pos), this);
}

void CTempList::SaveTempFiles() {
    if (m_bPersisted) SaveTempFiles(m_csListFileName, *this);
}

void CTempList::SaveTempFiles(const char* pFileName) { SaveTempFiles(pFileName, *this); }

void CTempList::SaveTempFiles(const char* pFileName, const CList<CTempFile*, CTempFile*>& list) {
    if (!pFileName || !*pFileName) {
        CVASSERT_TEXT("pFile");
        return;
    }
    // The new list goes to a fresh file beside the old one, which it then replaces.
    CString folder = FileSystem::ExtractPath(pFileName);
    if (folder.IsEmpty()) folder = ".";
    // Made exclusively: a file or link someone else placed under that name is never opened.
    char newName[MAX_PATH + 1] = {};
    FILE* pFile = qm::platform::CreateTempFileStream(folder, "qtl", newName);
    if (!pFile) {
        CVASSERT_TEXT("pFile");
        return;
    }
    bool ok = true;
    for (POSITION pos = list.GetHeadPosition(); pos;) {
        const CTempFile* pTempFile = list.GetNext(pos);
        if (!CVASSERT(pTempFile)) continue;
        if (std::fprintf(pFile, "%s\r\n", pTempFile->GetPath().GetString()) < 0) ok = false;
    }
    if (std::fclose(pFile) != 0) ok = false;
    if (!ok || !qm::platform::MoveFileExA(newName, pFileName, MOVEFILE_REPLACE_EXISTING)) {
        qm::platform::DeleteFileA(newName);
        CVASSERT_TEXT("pFile");
    }
}
