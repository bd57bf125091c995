// qmutil text links|emails|addresses: links and e-mail addresses in a file, and address lists.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "command.h"
#include "input_file.h"
#include "terminal_frame.h"
#include "utils/common/utils_mail.h"

namespace {

std::string ReadFile(const std::string& path) { return qmutil::ReadInputFile(path, qmutil::kMaxTextBytes, true); }

// Texts above this size show progress (one step per block) and can be cancelled.
constexpr size_t kLongText = 256 * 1024;
constexpr size_t kBlock = 64 * 1024;

// Prints "offset<TAB>length<TAB>kind<TAB>text" for every link and address in text; false
// when the user cancelled. The search is linear in the text, however it is made; what is
// left for the steps of a long text is printing its links block by block.
bool PrintLinks(const std::string& text) {
    std::unique_ptr<qmutil::LongWork> work;
    if (text.size() > kLongText) work = std::make_unique<qmutil::LongWork>("Looking for links", (ULONG)(text.size() / kBlock + 1));
    std::vector<CLinkMatch> found;
    FindLinks(text.c_str(), text.size(), found);
    size_t nextStep = kBlock;
    for (const CLinkMatch& m : found) {
        while (work && m.offset >= nextStep) {
            nextStep += kBlock;
            if (!work->Step()) return false;
        }
        std::printf("%lu\t%d\t%s\t%s\n", (unsigned long)m.offset, m.length, m.isMail ? "email" : "link",
                    text.substr(m.offset, (size_t)m.length).c_str());
    }
    return true;
}

void PrintEMails(const std::string& text) {
    CStringSet found;
    CollectEMails(CString(text.data(), (int)text.size()), found);
    for (const CString& address : found) std::printf("%s\n", address.GetString());
}

void PrintAddresses(const std::string& list) {
    std::map<CString, CString> pairs;
    ExtractEMailAddresses(CString(list.data(), (int)list.size()), pairs);
    for (const auto& pair : pairs) std::printf("%s\t%s\n", pair.first.GetString(), pair.second.GetString());
}

int RunLinks(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "text links FILE");
    if (PrintLinks(ReadFile(args[0]))) return 0;
    std::fprintf(stderr, "qmutil: cancelled\n");
    return 1;
}

int RunEMails(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "text emails FILE");
    PrintEMails(ReadFile(args[0]));
    return 0;
}

int RunAddresses(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "text addresses \"LIST\"");
    PrintAddresses(args[0]);
    return 0;
}

const char kSampleNote[] =
    "Minutes: see http://www.example.test/minutes.html (draft).\r"
    "Questions to Jane <jane.doe@example.test> or mailto:desk@example.test; "
    "the archive is at ftp.example.test/pub, the old one at www.example.test).\r";

void Tour() {
    std::string shown = kSampleNote;
    for (char& c : shown)
        if (c == '\r') c = '\n';
    std::printf("\nnote.txt (CR line ends):\n%s", shown.c_str());
    qmutil::TourStep("text links note.txt");
    PrintLinks(kSampleNote);
    qmutil::TourStep("text emails note.txt");
    PrintEMails(kSampleNote);
    const char* list = "\"Doe, Jane\" <jane.doe@example.test>, bob@example.test; Ann (home) <ann@example.test>";
    qmutil::TourStep("text addresses '\"Doe, Jane\" <jane.doe@example.test>, bob@example.test; Ann (home) <ann@example.test>'");
    PrintAddresses(list);
}

const char kLinksHelp[] =
    "usage: qmutil text links FILE\n"
    "Prints every link and e-mail address found in FILE, one a line:\n"
    "  OFFSET<TAB>LENGTH<TAB>link|email<TAB>TEXT\n"
    "Links start with a known scheme (http://, https://, ftp://, ftp., news:, ...), file:// or\n"
    "www.; trailing punctuation is not part of a link.\n"
    "A file above 256 KiB shows its progress on standard error; Escape or Ctrl-C cancels.\n";

const char kEMailsHelp[] =
    "usage: qmutil text emails FILE\n"
    "Prints every distinct e-mail address found in FILE, one a line, in byte order.\n";

const char kAddressesHelp[] =
    "usage: qmutil text addresses \"LIST\"\n"
    "Splits an address list (items separated by \",\" or \";\") and prints each distinct\n"
    "address with the display name it was first given:\n"
    "  ADDRESS<TAB>NAME\n"
    "Comments in parentheses are removed from addresses.\n";

qmutil::Registrar g_links({"text", "links", "list the links and e-mail addresses in a file", kLinksHelp, RunLinks,
                           Tour, 60});
qmutil::Registrar g_emails({"text", "emails", "list the e-mail addresses in a file", kEMailsHelp, RunEMails,
                            nullptr, 61});
qmutil::Registrar g_addresses({"text", "addresses", "split an address list into addresses and names",
                               kAddressesHelp, RunAddresses, nullptr, 62});

}  // namespace
