// The base module's error: raised where carrying on would leave the caller's data unusable.
// Thrown by pointer, as the framework's exceptions are, so one handler catches both.
#pragma once

#include "utils/framework/CString.h"
#include "utils/framework/exceptions.h"

class MFCQMUTILS_API CQMWException : public CException {
public:
    CQMWException(const char* message, const char* expression, const char* sourceModule, int line);

    // Throws a new CQMWException; does not return.
    [[noreturn]] static void RaiseError(const char* message, const char* expression, const char* sourceModule, int line);

    // "module(line): expression" (with ": message" when there is one).
    BOOL GetErrorMessage(char* lpszError, UINT nMaxError, UINT* pnHelpContext = nullptr) const override;

    const CString& GetMessage() const { return m_message; }
    const CString& GetExpression() const { return m_expression; }
    const CString& GetSourceModule() const { return m_sourceModule; }
    int GetLine() const { return m_line; }

private:
    CString m_message;
    CString m_expression;
    CString m_sourceModule;
    int m_line;
};

// Raises CQMWException with the failed condition's text when the condition does not hold.
#define QM_RAISE_UNLESS(expr) \
    do { if (!(expr)) CQMWException::RaiseError(nullptr, #expr, QM_SOURCE_MODULE, __LINE__); } while (0)
