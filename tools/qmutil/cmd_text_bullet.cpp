// qmutil text bullet / text todo-levels: list labels and the to-do level names and menu.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "command.h"
#include "utils/common/BulletsAndNumbering.h"
#include "utils/common/mfcutils.h"

namespace {

struct StyleName {
    const char* name;
    int type;
};

const StyleName kStyles[] = {
    {"decimal", 1}, {"upper", 2},   {"lower", 3},   {"ROMAN", 4},   {"roman", 5},   {"bullet1", 17},
    {"bullet2", 18}, {"bullet3", 19}, {"bullet4", 20}, {"bullet5", 21}, {"bullet6", 22}, {"bullet7", 23},
};

const char kBulletHelp[] =
    "usage: qmutil text bullet N STYLE [PREFIX [SUFFIX]]\n"
    "\n"
    "Prints the list label for number N (a 32-bit integer) in STYLE, with an optional\n"
    "one-character PREFIX and SUFFIX (\"\" for none).\n"
    "\n"
    "STYLE is a number or a name:\n"
    "  1  decimal   4, -12\n"
    "  2  upper     D, AA ... ten letters at most (1 to 260), else *\n"
    "  3  lower     d, aa\n"
    "  4  ROMAN     IV, MCMXCIV (1 to 9999), else *\n"
    "  5  roman     iv, mcmxciv\n"
    "  17-23  bullet1 .. bullet7: a symbol byte, printed as \\xNN with the font that draws it\n"
    "         (0x40 the general symbol font, 0x80 the pictograph font)\n"
    "\n"
    "examples:\n"
    "  qmutil text bullet 1994 ROMAN      MCMXCIV\n"
    "  qmutil text bullet 4 roman '(' ')' (iv)\n"
    "  qmutil text bullet 28 lower \"\" .   bb.\n";

const char kTodoHelp[] =
    "usage: qmutil text todo-levels\n"
    "\n"
    "Prints the four to-do level names (string resources 659 to 662) and the menu that\n"
    "replaces a placeholder item with them (commands 1000 to 1003, then a separator).\n";

int ParseStyle(const std::string& text) {
    for (const StyleName& s : kStyles)
        if (text == s.name) return s.type;
    bool digits = !text.empty() && text.size() <= 3 && text.find_first_not_of("0123456789") == std::string::npos;
    if (digits) {
        int v = std::stoi(text);
        if ((v >= 1 && v <= 5) || (v >= 17 && v <= 23)) return v;
    }
    throw qmutil::UsageError("invalid style '" + text +
                             "' (expected 1-5, 17-23, decimal, upper, lower, ROMAN, roman or bullet1..bullet7)");
}

char ParseAffix(const std::string& text, const char* what) {
    if (text.empty()) return 0;
    if (text.size() != 1) throw qmutil::UsageError(std::string("invalid ") + what + " '" + text + "' (expected one character or \"\")");
    return text[0];
}

std::string Printable(const char* label) {
    std::string out;
    for (const char* c = label; *c; ++c) {
        unsigned char u = (unsigned char)*c;
        if (u >= 0x20 && u < 0x7F) {
            out += *c;
        } else {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02X", u);
            out += hex;
        }
    }
    return out;
}

int RunBullet(const std::vector<std::string>& args) {
    if (args.size() < 2 || args.size() > 4) throw qmutil::UsageError("usage: qmutil text bullet N STYLE [PREFIX [SUFFIX]]");
    int n = (int)qmutil::ParseLong(args[0], "number");
    int type = ParseStyle(args[1]);
    char prefix = args.size() > 2 ? ParseAffix(args[2], "prefix") : 0;
    char suffix = args.size() > 3 ? ParseAffix(args[3], "suffix") : 0;
    char label[BULLET_LABEL_MAX];
    char* p = label;
    ULONG font = 0;
    BuildNumber(p, n, (NumberType)type, prefix, suffix, font);
    if (type >= NT_Bullet1)
        std::printf("%s (font 0x%02X)\n", Printable(label).c_str(), (unsigned)font);
    else
        std::printf("%s\n", Printable(label).c_str());
    return 0;
}

int RunTodoLevels(const std::vector<std::string>& args) {
    if (!args.empty()) throw qmutil::UsageError("usage: qmutil text todo-levels (no arguments)");
    for (int tl = 0; tl <= TL_MAX; ++tl) std::printf("%d  %s\n", tl, GetTodoLevelName((TodoLevel)tl));

    CMenu menu;
    if (!menu.CreatePopupMenu()) throw qmutil::UsageError("cannot create a menu on this system");
    menu.AppendMenu(MF_STRING, 900, "Set to-do level:");
    menu.AppendMenu(MF_STRING, 999, "(placeholder)");
    menu.AppendMenu(MF_STRING, 2000, "Clear all to-dos");
    CreateTodoLevelSubMenu(menu, 999, 1000);
    std::printf("\nmenu with the placeholder replaced:\n");
    UINT count = menu.GetMenuItemCount();
    for (UINT i = 0; i < count; ++i) {
        CString text;
        menu.GetMenuString(i, text, MF_BYPOSITION);
        if (menu.GetMenuState(i, MF_BYPOSITION) & MF_SEPARATOR)
            std::printf("  ----\n");
        else
            std::printf("  %-5u %s\n", menu.GetMenuItemID((int)i), text.GetString());
    }
    return 0;
}

void Step(const char* line, const std::vector<std::string>& args, int (*run)(const std::vector<std::string>&)) {
    qmutil::TourStep(line);
    run(args);
}

void TourBullet() {
    Step("text bullet 1994 ROMAN", {"1994", "ROMAN"}, RunBullet);
    Step("text bullet 4 roman '(' ')'", {"4", "roman", "(", ")"}, RunBullet);
    Step("text bullet 28 lower \"\" .", {"28", "lower", "", "."}, RunBullet);
    Step("text bullet 261 upper", {"261", "upper"}, RunBullet);
    Step("text bullet 1 bullet1", {"1", "bullet1"}, RunBullet);
}

void TourTodo() { Step("text todo-levels", {}, RunTodoLevels); }

qmutil::Registrar g_bullet({"text", "bullet", "list labels: numbers, letters, Roman numerals, bullet symbols", kBulletHelp,
                            RunBullet, TourBullet, 70});
qmutil::Registrar g_todo({"text", "todo-levels", "the to-do level names and their menu", kTodoHelp, RunTodoLevels,
                          TourTodo, 71});

}  // namespace
