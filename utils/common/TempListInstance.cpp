#include <new>

#include "utils/common/CVLogger.h"
#include "utils/common/FileSystem.h"
#include "utils/common/TempList.h"

#define QM_SOURCE_MODULE "Common\\TempListInstance"

namespace {

CString InstanceFileName() {
    CString csTempListInstanceFileName = FileSystem::GetCurrentDirectory();
    CVASSERT(0 < csTempListInstanceFileName.GetLength());
    return csTempListInstanceFileName + "tempfiles.lst";
}

// Created when the library is loaded; destroyed (deleting every file it still tracks) when
// it is unloaded.
const bool g_createdAtLoad = (GetTempListInstance(), true);

}  // namespace

CTempList& GetTempListInstance() {
    static CTempList instance(InstanceFileName());
    return instance;
}

void DeleteFileOnExit(const char* pPath) { new (std::nothrow) CTempFile(pPath, &GetTempListInstance()); }

void DeleteTemporaryFiles() { GetTempListInstance().RemoveAll(); }

void DetachTempListInstance(const char* pListFileName) { GetTempListInstance().Detach(pListFileName); }
