// The screen manager: registry, circular stack, hooks and the order of one pass.
#include <gtest/gtest.h>

#include <string>

#include "elements.h"
#include "mmi.h"

namespace {

std::string g_log;

template <char C>
void Enter()
{
    g_log += std::string("E") + C;
}
template <char C>
void Create()
{
    g_log += std::string("C") + C;
}
template <char C>
void Update()
{
    g_log += std::string("U") + C;
}
template <char C>
void Exit()
{
    g_log += std::string("X") + C;
}
template <char C>
void Hook()
{
    g_log += std::string("h") + C;
}

class MMITest : public ::testing::Test {
protected:
    void SetUp() override
    {
        g_log.clear();
        MMIInit(100, 100, 10);
        MMIRegisterScreen(1, Enter<'a'>, Create<'a'>, Update<'a'>, Exit<'a'>);
        MMIRegisterScreen(2, Enter<'b'>, Create<'b'>, Update<'b'>, nullptr);
        MMIRegisterScreen(3, nullptr, nullptr, nullptr, nullptr);
    }
    void TearDown() override { MMIDeInit(); }
};

TEST_F(MMITest, OrderOfAChangeAndOfAPass)
{
    EXPECT_EQ(MMIGetScreenIdCurrent(), SCREENID_INVALID);
    MMIRegisterCallback(MMICALLBACKTYPE_ENTER, Hook<'1'>);
    MMIRegisterCallback(MMICALLBACKTYPE_EXIT, Hook<'2'>);
    MMIRegisterCallback(MMICALLBACKTYPE_PREPROCESS, Hook<'3'>);
    MMIRegisterCallback(MMICALLBACKTYPE_POSTPROCESS, Hook<'4'>);
    MMIRegisterCallback(MMICALLBACKTYPE_PRECREATE, Hook<'5'>);
    MMIRegisterCallback(MMICALLBACKTYPE_POSTCREATE, Hook<'6'>);
    MMIRegisterCallback(MMICALLBACKTYPE_PREUPDATE, Hook<'7'>);
    MMIRegisterCallback(MMICALLBACKTYPE_POSTUPDATE, Hook<'8'>);
    MMIScreenGoto(1);
    EXPECT_EQ(g_log, "h2h1Ea");  // no screen before: EXIT hooks, then ENTER hooks and Enter
    g_log.clear();
    MMIProcess();
    EXPECT_EQ(g_log, "h3h5Cah6h7Uah8h4");
    g_log.clear();
    MMIProcess();
    EXPECT_EQ(g_log, "h3h7Uah8h4") << "no Create without a change";
    g_log.clear();
    MMIScreenGoto(2);
    EXPECT_EQ(g_log, "Xah2h1Eb");
    g_log.clear();
    MMIInvalidate();
    MMIProcess();
    EXPECT_EQ(g_log, "h3h5Cbh6h7Ubh8h4") << "Create again, no Enter or Exit";
}

void UpdateThatChangesScreen()
{
    g_log += "U!";
    MMIScreenGoto(2);
}

TEST_F(MMITest, AChangeInsideUpdateTakesEffectNextPass)
{
    MMIRegisterScreen(4, nullptr, nullptr, UpdateThatChangesScreen, nullptr);
    MMIScreenGoto(4);
    g_log.clear();
    MMIProcess();
    EXPECT_EQ(g_log, "U!Eb");  // the old screen finishes its pass
    g_log.clear();
    MMIProcess();
    EXPECT_EQ(g_log, "CbUb");
}

TEST_F(MMITest, StackWrapsAndGoesBack)
{
    MMIScreenGoto(1);
    MMIScreenGoto(2);
    for (int i = 0; i < 99; i++) MMIScreenGoto(3);  // 101 changes on a stack of 100
    EXPECT_EQ(MMIGetScreenIdFromStack(99), 2u) << "the oldest entry, screen 1, is overwritten";
    EXPECT_EQ(MMIGetScreenIdFromStack(100), 3u) << "position 100 wraps to the current entry";

    MMIInit(3, 3, 3);  // capacities of 10
    MMIRegisterScreen(1, Enter<'a'>, nullptr, nullptr, Exit<'a'>);
    MMIRegisterScreen(2, Enter<'b'>, nullptr, nullptr, nullptr);
    MMIScreenGoto(1);
    MMIScreenGoto(2);
    g_log.clear();
    MMIScreenGotoPrev();
    EXPECT_EQ(g_log, "Ea");
    EXPECT_EQ(MMIGetScreenIdCurrent(), 1u);
    EXPECT_EQ(MMIGetScreenIdFromStack(1), SCREENID_INVALID) << "below the first entry is empty";
    g_log.clear();
    MMIScreenGotoPrev();
    EXPECT_EQ(g_log, "") << "nothing happens on an empty entry";
    EXPECT_EQ(MMIGetScreenIdCurrent(), 1u);
    MMIScreenGotoStackPositon(0);
    EXPECT_EQ(g_log, "XaEa") << "position 0 re-enters";
    g_log.clear();
    MMIScreenGoto(1);
    EXPECT_EQ(g_log, "XaEa") << "the current screen again is a full change";
    MMIScreenGoto(77);
    EXPECT_EQ(MMIGetScreenIdCurrent(), 1u) << "unknown ids are ignored";
}

TEST_F(MMITest, HooksStandOnceAndRowsFill)
{
    EXPECT_TRUE(MMIRegisterCallback(MMICALLBACKTYPE_POSTPROCESS, Hook<'x'>));
    EXPECT_TRUE(MMIRegisterCallback(MMICALLBACKTYPE_POSTPROCESS, Hook<'x'>));
    MMIScreenGoto(3);
    MMIProcess();
    EXPECT_EQ(g_log, "hx");
    void (*const hooks[])(void) = {Hook<'0'>, Hook<'1'>, Hook<'2'>, Hook<'3'>, Hook<'4'>,
                                   Hook<'5'>, Hook<'6'>, Hook<'7'>, Hook<'8'>};
    for (auto h : hooks) EXPECT_TRUE(MMIRegisterCallback(MMICALLBACKTYPE_POSTPROCESS, h));
    EXPECT_FALSE(MMIRegisterCallback(MMICALLBACKTYPE_POSTPROCESS, Hook<'9'>)) << "eleventh of ten";
    EXPECT_TRUE(MMIDeregisterCallback(MMICALLBACKTYPE_POSTPROCESS, Hook<'x'>));
    EXPECT_FALSE(MMIDeregisterCallback(MMICALLBACKTYPE_POSTPROCESS, Hook<'x'>));
    EXPECT_FALSE(MMIRegisterCallback((MMICALLBACKTYPE_T)8, Hook<'x'>)) << "no row outside the eight";
}

TEST(MMIUninitialised, DoesNothing)
{
    MMIDeInit();
    EXPECT_FALSE(MMIRegisterScreen(1, nullptr, nullptr, nullptr, nullptr));
    MMIScreenGoto(1);
    MMIProcess();
    EXPECT_EQ(MMIGetScreenIdCurrent(), SCREENID_INVALID);
    EXPECT_FALSE(MMIRegisterCallback(MMICALLBACKTYPE_ENTER, Hook<'x'>));
}

}  // namespace
