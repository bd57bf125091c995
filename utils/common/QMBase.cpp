#include "utils/common/QMBase.h"

#include <cstdio>

CQMWException::CQMWException(const char* message, const char* expression, const char* sourceModule, int line)
    : m_message(message), m_expression(expression), m_sourceModule(sourceModule), m_line(line) {}

void CQMWException::RaiseError(const char* message, const char* expression, const char* sourceModule, int line) {
    throw new CQMWException(message, expression, sourceModule, line);
}

BOOL CQMWException::GetErrorMessage(char* lpszError, UINT nMaxError, UINT* pnHelpContext) const {
    if (pnHelpContext) *pnHelpContext = 0;
    if (!lpszError || !nMaxError) return FALSE;
    if (m_message.IsEmpty())
        std::snprintf(lpszError, nMaxError, "%s(%d): %s", m_sourceModule.GetString(), m_line, m_expression.GetString());
    else
        std::snprintf(lpszError, nMaxError, "%s(%d): %s: %s", m_sourceModule.GetString(), m_line,
                      m_expression.GetString(), m_message.GetString());
    return TRUE;
}
