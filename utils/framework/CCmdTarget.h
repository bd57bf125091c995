// The framework's command target: the root of the classes that receive messages, with the
// message-map tables that route a message to a member function, and the wait cursor.
#pragma once

#include "utils/framework/CObject.h"
#include "utils/framework/winmsg.h"

class CCmdTarget;
typedef void (CCmdTarget::*AFX_PMSG)(void);

// One row of a message map. A registered message keeps 0xC000 in nMessage and the address
// of the variable holding its number in nSig.
struct AFX_MSGMAP_ENTRY {
    UINT nMessage;
    UINT nCode;
    UINT nID;
    UINT nLastID;
    UINT_PTR nSig;
    AFX_PMSG pfn;
};

struct AFX_MSGMAP {
    const AFX_MSGMAP* (*pfnGetBaseMap)();
    const AFX_MSGMAP_ENTRY* lpEntries;
};

// Handler signatures of the message-map rows.
enum AfxSig : UINT_PTR {
    AfxSig_end = 0,
    AfxSig_lwl,   // LRESULT (WPARAM, LPARAM)
    AfxSig_vw,    // void (UINT_PTR)
    AfxSig_vv,    // void ()
};

#define afx_msg

#define DECLARE_MESSAGE_MAP()                         \
protected:                                            \
    static const AFX_MSGMAP* GetThisMessageMap();     \
    const AFX_MSGMAP* GetMessageMap() const override;

#define BEGIN_MESSAGE_MAP(theClass, baseClass)                                     \
    const AFX_MSGMAP* theClass::GetMessageMap() const { return GetThisMessageMap(); } \
    const AFX_MSGMAP* theClass::GetThisMessageMap() {                              \
        typedef theClass ThisClass;                                                \
        typedef baseClass TheBaseClass;                                            \
        static_assert(sizeof(ThisClass) > 0);                                      \
        static const AFX_MSGMAP_ENTRY _messageEntries[] = {

#define END_MESSAGE_MAP()                                                               \
        {0, 0, 0, 0, AfxSig_end, (AFX_PMSG)0}};                                         \
        static const AFX_MSGMAP messageMap = {&TheBaseClass::GetThisMessageMap, &_messageEntries[0]}; \
        return &messageMap;                                                             \
    }

class MFCQMUTILS_API CCmdTarget : public CObject {
public:
    CCmdTarget();
    ~CCmdTarget() override;

    // The application's wait cursor (counted: begin and end nest; restore shows it again).
    void BeginWaitCursor();
    void EndWaitCursor();
    void RestoreWaitCursor();

protected:
    static const AFX_MSGMAP* GetThisMessageMap();
    virtual const AFX_MSGMAP* GetMessageMap() const;
};
