// Menu screens: the layout of short and long lists, the keys' movement with its wraps,
// selection, nesting and the guards of an empty menu.
#include <gtest/gtest.h>

#include <string>

#include "buttonbar.h"
#include "display_fixture.h"
#include "freetype_api.h"
#include "menu.h"
#include "mmi.h"
#include "picture_check.h"
#include "key_lines.h"
#include "test_root.h"
#include "timer_drv.h"
#include "ttfonts.h"

namespace {

constexpr U32 SCREEN_BEFORE = 1, SCREEN_MENU = 2;

U32 g_rows = 0;
std::string g_log;

void RowCb()
{
    g_log += "r";
}
void OtherRowCb()
{
    g_log += "o";
}
void AllCb(U32 row)
{
    g_log += "a" + std::to_string(row);
}
void FillRows()
{
    for (U32 r = 0; r < g_rows; r++) MenuSetItem(r, ("ROW " + std::to_string(r)).c_str(), "VAL", RowCb);
    MenuSetTitle("TITLE");
}
void EnterMenu()
{
    MenuCreateNew(g_rows, FillRows);
}
void Before()
{
    g_log += "B";
}

class MenuTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ResetDisplay();
        ASSERT_EQ(FTFInit(gpaFreetypeFontData, 6), 0);
        WriteKeyLinesUp(root);
        timer_init(20);
        MMIInit(10, 10, 10);
        ButtonBarInit();
        MMIRegisterScreen(SCREEN_BEFORE, Before, nullptr, nullptr, nullptr);
        MMIRegisterScreen(SCREEN_MENU, EnterMenu, MenuScreenCreate, nullptr, MenuScreenExit);
        MMIScreenGoto(SCREEN_BEFORE);
        MMIProcess();
        MenuTestReset();
        g_log.clear();
    }
    void TearDown() override
    {
        MenuTestReset();
        MMIDeInit();
        timer_deinit();
        SetButtonOverlayHeight(0);
    }
    // The menu screen of `rows` rows, drawn.
    const MENU_T& Open(U32 rows)
    {
        g_rows = rows;
        MMIScreenGoto(SCREEN_MENU);
        MMIProcess();
        return *MenuTestTop();
    }
    static std::string Where(const MENU_T& m)
    {
        return std::to_string(m.rowIndexSelection) + "/" + std::to_string(m.drawRowIndex) + "/" +
               std::to_string(m.selectionBoxIndex);
    }
    TestRoot root;
};

TEST_F(MenuTest, ShortListsAreCentredLongOnesStartUnderTheTitle)
{
    // 3 rows on 240 lines: the first band, selected, from 71 to 95, framed by white lines.
    Open(3);
    EXPECT_EQ(L1(160, 70), 0xFFFE);
    EXPECT_EQ(L1(2, 71), MENU_ITEM_SELECTED_COLOUR);
    EXPECT_EQ(L1(2, 95), MENU_ITEM_SELECTED_COLOUR);
    EXPECT_EQ(L1(2, 96), 0xFFFE);
    EXPECT_EQ(L1(2, 98), MENU_ITEM_COLOUR) << "the second band starts 27 rows lower";
    EXPECT_EQ(L1(2, 20), MENU_TITLE_COLOUR);
    EXPECT_EQ(L1(2, 27), DARK_GRAY);
    EXPECT_EQ(L1(2, 200), MENU_BARBACKGROUND_COLOUR);

    MenuQuit();
    // 8 rows: from 30 to 54, directly under the title bar; six bands, the last ending at 189.
    Open(8);
    EXPECT_EQ(L1(2, 29), 0xFFFE);
    EXPECT_EQ(L1(2, 30), MENU_ITEM_SELECTED_COLOUR);
    EXPECT_EQ(L1(2, 54), MENU_ITEM_SELECTED_COLOUR);
    EXPECT_EQ(L1(2, 57), MENU_ITEM_COLOUR);
    EXPECT_EQ(L1(2, 165 + 24), MENU_ITEM_COLOUR);
    EXPECT_EQ(L1(2, 192), MENU_BARBACKGROUND_COLOUR);
}

TEST_F(MenuTest, KeysMoveTheSelectionAndScrollTheWindow)
{
    const MENU_T& m = Open(8);
    for (int i = 0; i < 6; i++) MenuTestKeyDown();
    EXPECT_EQ(Where(m), "6/1/5") << "the window scrolls at the sixth place";
    MenuTestKeyUp();
    EXPECT_EQ(Where(m), "5/1/4");

    MenuSetSelectionItem(0);
    MenuTestKeyUp();
    EXPECT_EQ(Where(m), "7/2/5") << "up from the first row wraps to the last";
    MenuTestKeyDown();
    EXPECT_EQ(Where(m), "0/0/0") << "down from the last row wraps to the top";

    MenuSetSelectionItem(7);
    EXPECT_EQ(Where(m), "7/2/5");
    MenuSetSelectionItem(3);
    EXPECT_EQ(Where(m), "3/0/3");
    MenuSetSelectionItem(9);
    EXPECT_EQ(Where(m), "0/0/0") << "a row past the end resets the selection";

    MenuQuit();
    const MENU_T& s = Open(3);
    MenuTestKeyUp();
    EXPECT_EQ(Where(s), "2/0/2") << "a short list wraps without scrolling";
}

TEST_F(MenuTest, ScrolledWindowShowsTheRowsBelow)
{
    Open(8);
    MenuSetSelectionItem(7);
    MMIProcess();
    EXPECT_TRUE(MatchesPicture("menu_toolkit_scrolled", Layer1Buffer, gScreenWidth, gScreenHeight, gScreenWidth));
}

TEST_F(MenuTest, SelectCallsTheMenuCallbackThenTheRowsOwn)
{
    Open(4);
    MenuSetSelectionCallback(AllCb);
    MenuSetSelectionCallback(nullptr);  // cannot clear it
    MenuSetItem(2, "OTHER", nullptr, OtherRowCb);
    MenuSetSelectionItem(2);
    MenuTestKeySelect();
    EXPECT_EQ(g_log, "a2o");

    // A cleared row: no right text, no callback of its own.
    g_log.clear();
    MenuSetItem(2, "x", nullptr, nullptr);
    EXPECT_STREQ(MenuTestTop()->text[2].rightText, "");
    MenuTestKeySelect();
    EXPECT_EQ(g_log, "a2");
}

TEST_F(MenuTest, NestingBackAndQuit)
{
    Open(4);
    MenuCreateNew(25, nullptr);
    EXPECT_EQ(MenuTestTop()->rows, 20u) << "rows are cut to 20";
    MenuSetLeftText(20, "past the end");  // ignored
    MenuBack();
    EXPECT_EQ(MenuTestTop()->rows, 4u);
    EXPECT_EQ(MMIGetScreenIdCurrent(), SCREEN_MENU);
    MenuBack();
    EXPECT_EQ(MenuTestTop(), nullptr);
    EXPECT_EQ(MMIGetScreenIdCurrent(), SCREEN_BEFORE) << "back from the lowest level leaves the screen";

    // The stack holds 20 levels; more are not opened.
    Open(1);
    for (int i = 0; i < 30; i++) MenuCreateNew(2, nullptr);
    for (int i = 0; i < 19; i++) MenuBack();
    EXPECT_EQ(MenuTestTop()->rows, 1u);
}

TEST_F(MenuTest, EmptyMenuAndClosedMenuAreSafe)
{
    const MENU_T& m = Open(0);
    MenuSetSelectionCallback(AllCb);
    MenuTestKeyUp();
    MenuTestKeyDown();
    MenuTestKeySelect();
    MMIProcess();
    EXPECT_EQ(Where(m), "0/0/0");
    EXPECT_EQ(g_log, "");

    MenuScreenExit();
    MenuTestKeyUp();
    MenuTestKeySelect();
    MenuSetTitle("none open");
    MenuBack();  // leaves the screen, never below the stack
    EXPECT_EQ(MenuTestTop(), nullptr);
    EXPECT_EQ(g_log, "B") << "no callback, only the screen before entered again";
}

}  // namespace
