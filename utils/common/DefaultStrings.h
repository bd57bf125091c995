// English defaults for the host string resources that the library only indexes: the e-mail
// header field names, the to-do level names and the desktop alert titles. A host that
// carries these ids in its own string table (or sets them with qm::SetStringResource) overrides the defaults; a host
// without them still gets names a user would expect.
//
//   id   text           e-mail field (EMailFieldNameType value, shown by default?)
//   607  "Reply-To"     4, hidden
//   608  "Bcc"          3, hidden
//   609  "Organization" (not indexed by a field value)
//   610  "Message-ID"   (not indexed by a field value)
//   611  "To"           1, shown
//   612  "Sender"       5, hidden
//   613  "Subject"      7, shown
//   614  "From"         0, shown
//   615  "Date"         6, shown
//   616  "Cc"           2, shown
//   684  "Attachments"  8, hidden
//   685  "Priority"     9, hidden
//
//   id   text           to-do level
//   659  "None"         0
//   660  "Low"          1
//   661  "Normal"       2
//   662  "High"         3
//
//   id   text           desktop alert title
//   700  "Error"        WndUtils::ALERT_ERROR
//   701  "Warning"      WndUtils::ALERT_WARNING
//   702  "Message"      WndUtils::ALERT_MESSAGE
#pragma once

#include "utils/framework/wintypes.h"
#include "utils/framework/export.h"

namespace qm {

enum DefaultStringId : UINT {
    IDS_MAIL_REPLY_TO = 607,
    IDS_MAIL_BCC = 608,
    IDS_MAIL_ORGANIZATION = 609,
    IDS_MAIL_MESSAGE_ID = 610,
    IDS_MAIL_TO = 611,
    IDS_MAIL_SENDER = 612,
    IDS_MAIL_SUBJECT = 613,
    IDS_MAIL_FROM = 614,
    IDS_MAIL_DATE = 615,
    IDS_MAIL_CC = 616,
    IDS_MAIL_ATTACHMENTS = 684,
    IDS_MAIL_PRIORITY = 685,
    IDS_TODO_LEVEL_NONE = 659,
    IDS_TODO_LEVEL_LOW = 660,
    IDS_TODO_LEVEL_NORMAL = 661,
    IDS_TODO_LEVEL_HIGH = 662,
    IDS_ALERT_ERROR = 700,
    IDS_ALERT_WARNING = 701,
    IDS_ALERT_MESSAGE = 702,
};

// Registers the defaults above with qm::SetDefaultStringResource, once per process (later
// calls do nothing). The library calls it at load and again before it loads one of these
// names, so a static build that drops unreferenced objects still has them.
MFCQMUTILS_API void EnsureDefaultStrings();

}  // namespace qm
