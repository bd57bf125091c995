#include <gtest/gtest.h>
#include <string>

#include "utils/framework/CMenu.h"

namespace {

const UINT kNoItem = (UINT)-1;

std::string Text(const CMenu& m, UINT item, UINT flags) {
    CString s;
    m.GetMenuString(item, s, flags);
    return s.str();
}

TEST(CMenu, InsertPositionsStatesAndSeparators) {
    CMenu m;
    ASSERT_TRUE(m.CreatePopupMenu());
    ASSERT_TRUE(m.InsertMenu(0, MF_BYPOSITION | MF_STRING, 2, "two"));
    ASSERT_TRUE(m.InsertMenu(0, MF_BYPOSITION | MF_STRING, 1, "one"));
    ASSERT_TRUE(m.InsertMenu(50, MF_BYPOSITION | MF_STRING, 4, "four"));  // past the end appends
    ASSERT_TRUE(m.InsertMenu(4, MF_BYCOMMAND | MF_STRING, 3, "three"));   // before the command
    ASSERT_TRUE(m.InsertMenu(777, MF_BYCOMMAND | MF_STRING | MF_GRAYED | MF_CHECKED, 5, "five"));  // unknown: appends
    ASSERT_EQ(m.GetMenuItemCount(), 5u);
    const char* texts[] = {"one", "two", "three", "four", "five"};
    for (UINT i = 0; i < 5; ++i) {
        EXPECT_EQ(m.GetMenuItemID((int)i), i + 1);
        EXPECT_EQ(Text(m, i, MF_BYPOSITION), texts[i]);
        EXPECT_EQ(Text(m, i + 1, MF_BYCOMMAND), texts[i]);
    }
    EXPECT_EQ(m.GetMenuItemID(5), kNoItem);
    EXPECT_EQ(m.GetMenuState(8, MF_BYCOMMAND), kNoItem);
    EXPECT_EQ(m.GetMenuState(5, MF_BYCOMMAND), (UINT)(MF_GRAYED | MF_CHECKED));
    char buf[8] = "keep";
    EXPECT_EQ(m.GetMenuString(8, buf, (int)sizeof buf, MF_BYCOMMAND), 0);
    EXPECT_EQ(m.GetMenuString(1, nullptr, 0, MF_BYCOMMAND), 3);
    EXPECT_FALSE(m.DeleteMenu(8, MF_BYCOMMAND));
    // A string item without text is a separator, with command 0.
    ASSERT_TRUE(m.AppendMenu(MF_SEPARATOR));
    ASSERT_TRUE(m.AppendMenu(MF_STRING, 9, nullptr));
    EXPECT_NE(m.GetMenuState(6, MF_BYPOSITION) & MF_SEPARATOR, 0u);
    EXPECT_EQ(m.GetMenuItemID(5), 0u);
    EXPECT_TRUE(m.DeleteMenu(0, MF_BYCOMMAND));
    EXPECT_EQ(m.GetMenuItemCount(), 6u);
}

TEST(CMenu, PopupsAreSearchedByCommandAndOwnedByTheirMenu) {
    CMenu m, sub;
    ASSERT_TRUE(m.CreateMenu());
    ASSERT_TRUE(sub.CreatePopupMenu());
    sub.AppendMenu(MF_STRING, 500, "s1");
    sub.AppendMenu(MF_STRING, 501, "s2");
    HMENU hSub = sub.Detach();
    ASSERT_TRUE(m.AppendMenu(MF_POPUP, (UINT_PTR)hSub, "Sub"));
    const UINT state = m.GetMenuState(0, MF_BYPOSITION);
    EXPECT_EQ(m.GetMenuItemID(0), kNoItem);
    EXPECT_NE(state & MF_POPUP, 0u);
    EXPECT_EQ(state >> 8, 2u) << "a popup reports its item count in the high byte";
    ASSERT_TRUE(m.InsertMenu(501, MF_BYCOMMAND | MF_STRING, 502, "s3"));
    CMenu* view = m.GetSubMenu(0);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->m_hMenu, hSub);
    EXPECT_EQ(view->GetMenuItemID(1), 502u);
    EXPECT_EQ(Text(m, 500, MF_BYCOMMAND), "s1");
    EXPECT_TRUE(m.DeleteMenu(500, MF_BYCOMMAND));
    EXPECT_EQ(view->GetMenuItemCount(), 2u);
    EXPECT_EQ(m.GetSubMenu(5), nullptr);
    CMenu::DeleteTempMap();
    // RemoveMenu leaves a popup alive, DeleteMenu and DestroyMenu destroy it.
    CMenu kept, gone;
    ASSERT_TRUE(kept.CreatePopupMenu());
    ASSERT_TRUE(gone.CreatePopupMenu());
    kept.AppendMenu(MF_STRING, 1, "k");
    HMENU hGone = gone.Detach();
    ASSERT_TRUE(m.InsertMenu(0, MF_BYPOSITION | MF_POPUP, (UINT_PTR)kept.m_hMenu, "kept"));
    ASSERT_TRUE(m.InsertMenu(1, MF_BYPOSITION | MF_POPUP, (UINT_PTR)hGone, "gone"));
    ASSERT_TRUE(m.RemoveMenu(0, MF_BYPOSITION));
    EXPECT_EQ(kept.GetMenuItemCount(), 1u);
    ASSERT_TRUE(m.DeleteMenu(0, MF_BYPOSITION));
    CMenu probe;
    probe.m_hMenu = hGone;
    EXPECT_EQ(probe.GetMenuItemCount(), kNoItem);
    EXPECT_TRUE(m.DestroyMenu());
    probe.m_hMenu = hSub;
    EXPECT_EQ(probe.GetMenuItemCount(), kNoItem);
    probe.Detach();
}

#if !defined(_WIN32)
TEST(CMenu, PosixBackendRefusesAMenuInsideItself) {
    CMenu m, sub;
    ASSERT_TRUE(m.CreatePopupMenu());
    ASSERT_TRUE(sub.CreatePopupMenu());
    sub.AppendMenu(MF_STRING, 9, "nine");
    EXPECT_FALSE(m.AppendMenu(MF_POPUP, (UINT_PTR)m.m_hMenu, "self"));
    ASSERT_TRUE(m.AppendMenu(MF_POPUP, (UINT_PTR)sub.m_hMenu, "sub"));
    // Inserting m into sub (found by command 9) would close a loop.
    EXPECT_FALSE(m.InsertMenu(9, MF_BYCOMMAND | MF_POPUP, (UINT_PTR)m.m_hMenu, "loop"));
    EXPECT_FALSE(m.InsertMenu(9, MF_BYCOMMAND | MF_POPUP, (UINT_PTR)sub.m_hMenu, "loop"));
    EXPECT_EQ(sub.GetMenuItemCount(), 1u);
    sub.Detach();  // owned by m now
}
#endif

}  // namespace
