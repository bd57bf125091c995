#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/mfcutils.h"

namespace {

// The menu's items as "id:text", "---" for a separator.
std::vector<std::string> Items(const CMenu& menu) {
    std::vector<std::string> out;
    UINT count = menu.GetMenuItemCount();
    for (UINT i = 0; i < count; ++i) {
        CString text;
        menu.GetMenuString(i, text, MF_BYPOSITION);
        UINT state = menu.GetMenuState(i, MF_BYPOSITION);
        if (state & MF_SEPARATOR) out.push_back("---");
        else out.push_back(std::to_string(menu.GetMenuItemID((int)i)) + ":" + text.str());
    }
    return out;
}

using Strings = std::vector<std::string>;

TEST(TodoLevels, NamesComeFromTheStringResourcesOnceAndOutOfRangeIsReported) {
    EXPECT_EQ(std::string(GetTodoLevelName(TL_None)) + GetTodoLevelName(TL_Low) + GetTodoLevelName(TL_Normal) +
                  GetTodoLevelName(TL_High), "NoneLowNormalHigh");
    qm::SetStringResource(660, "Changed later");  // loaded once and kept
    EXPECT_STREQ(GetTodoLevelName(TL_Low), "Low");
    qm::ClearStringResource(660);
    for (int tl : {-1, 4, -2147483647 - 1}) {
        qmtest::RecordingAssertSink sink;
        EXPECT_STREQ(GetTodoLevelName((TodoLevel)tl), "") << tl;
        EXPECT_EQ(sink.Expressions(), Strings{"tl >= 0 && tl <= TL_MAX"});
        EXPECT_EQ(sink.Reports()[0].module, "Common\\mfcutils");
    }
}

TEST(TodoLevels, SubMenuReplacesThePlaceholderOrIsAppended) {
    CMenu menu;
    ASSERT_TRUE(menu.CreatePopupMenu());
    menu.AppendMenu(MF_STRING, 100, "Before");
    menu.AppendMenu(MF_STRING, 200, "placeholder");
    CreateTodoLevelSubMenu(menu, 200, 1000);
    EXPECT_EQ(Items(menu), (Strings{"100:Before", "1000:None", "1001:Low", "1002:Normal", "1003:High", "---"}));
    CreateTodoLevelSubMenu(menu, 999, 10);  // no placeholder: appended, nothing deleted
    ASSERT_EQ(Items(menu).size(), 11u);
    EXPECT_EQ(Items(menu)[6], "10:None");
}

}  // namespace
