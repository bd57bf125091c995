// Root of the framework's class tree.
#pragma once

#include "utils/framework/export.h"

class MFCQMUTILS_API CObject {
public:
    virtual ~CObject();

protected:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;
};
