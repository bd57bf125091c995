#include "utils/common/DefaultStrings.h"

#include <mutex>

#include "utils/framework/CString.h"

namespace qm {

namespace {

struct DefaultString {
    UINT id;
    const char* text;
};

const DefaultString kDefaults[] = {
    {IDS_MAIL_REPLY_TO, "Reply-To"},
    {IDS_MAIL_BCC, "Bcc"},
    {IDS_MAIL_ORGANIZATION, "Organization"},
    {IDS_MAIL_MESSAGE_ID, "Message-ID"},
    {IDS_MAIL_TO, "To"},
    {IDS_MAIL_SENDER, "Sender"},
    {IDS_MAIL_SUBJECT, "Subject"},
    {IDS_MAIL_FROM, "From"},
    {IDS_MAIL_DATE, "Date"},
    {IDS_MAIL_CC, "Cc"},
    {IDS_MAIL_ATTACHMENTS, "Attachments"},
    {IDS_MAIL_PRIORITY, "Priority"},
    {IDS_TODO_LEVEL_NONE, "None"},
    {IDS_TODO_LEVEL_LOW, "Low"},
    {IDS_TODO_LEVEL_NORMAL, "Normal"},
    {IDS_TODO_LEVEL_HIGH, "High"},
    {IDS_ALERT_ERROR, "Error"},
    {IDS_ALERT_WARNING, "Warning"},
    {IDS_ALERT_MESSAGE, "Message"},
};

// Registration at load, for hosts that call CString::LoadString for these ids themselves.
const bool g_registeredAtLoad = (EnsureDefaultStrings(), true);

}  // namespace

void EnsureDefaultStrings() {
    static std::once_flag once;
    std::call_once(once, [] {
        for (const DefaultString& d : kDefaults) SetDefaultStringResource(d.id, d.text);
    });
}

}  // namespace qm
