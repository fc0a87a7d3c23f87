// The keys of the quad page, pass by pass on the test's clock: holds measured from the
// press, the edge detectors of the edit stages (two of which start pressed), paging, and
// gauge stepping from the stored pair.
#include "buttonbar.h"
#include "images.h"
#include "mmi.h"
#include "navigation.h"
#include "quad_fixture.h"
#include "timer_drv.h"

namespace {

void Screen(void) {}

constexpr U8 KEY1 = KEYMASK_1, KEY2 = KEYMASK_2, KEY3 = KEYMASK_3, KEY5 = KEYMASK_5;

class QuadKeysTest : public QuadScreenTest {
protected:
    void SetUp() override
    {
        QuadScreenTest::SetUp();
        root.Write("sys/class/leds/buzzer-pwm/brightness", "0\n");
        MMIInit(10, 10, 10);
        for (U32 id = 0; id <= 8; id++) MMIRegisterScreen(id, Screen, Screen, Screen, Screen);
        ButtonBarInit();
        MMIScreenGoto(SCREENID_QUAD);
        Keys(0);
    }
    void TearDown() override
    {
        MMIDeInit();
        timer_test_set_clock(-1);
        QuadScreenTest::TearDown();
    }
    // One foreground pass with these keys down; the next comes 10 ms later.
    void Keys(U8 code)
    {
        timer_test_set_clock((int64_t)now_ * 1000000);
        ButtonBarTestStep(code, now_);
        Pass();
    }
    // Down for `passes` passes, then let go for one.
    void Click(U8 code, int passes = 3)
    {
        for (int i = 0; i < passes; i++) Keys(code);
        Keys(0);
    }
    // From the pass that sees the press, 300 more passes take the sum past 2999 ms.
    void HoldToEditMode()
    {
        for (int i = 0; i < 300; i++) Keys(KEY3);
        ASSERT_FALSE(RAMVariables.EditMode) << "3000 ms after the press, not yet above 2999";
        Keys(KEY3);
        ASSERT_TRUE(RAMVariables.EditMode) << "while the key is still down";
    }
    const void* Face(KEYINDEX_T key) const { return ButtonBarTestGet()->keys[key].pKeyUpImage; }
    uint16_T Word(uint8_T page, uint8_T cell) const
    {
        return (&EEVariables_RAMShadow.PROFILE_1[0][0])[(page - 1) * 4 + (cell - 1)];
    }
};

TEST_F(QuadKeysTest, FirstHoldAfterPowerUpStopsInStagePage)
{
    HoldToEditMode();
    for (int i = 0; i < 50; i++) Keys(KEY3);
    EXPECT_FALSE(RAMVariables.EditPage) << "the detector of stage page starts pressed";
    EXPECT_EQ(ButtonBarTestGet()->mode, BUTTONBARMODE_VISIBLE_ALWAYS);
    EXPECT_EQ(Face(KEYINDEX_3), &image_l_nCU);
    EXPECT_EQ(Face(KEYINDEX_5), &image_EZbDq);
    Keys(0);
    Keys(KEY3);
    EXPECT_TRUE(RAMVariables.EditPage);
    EXPECT_EQ(EEVariables_RAMShadow.SELECTED_QUAD, 1) << "the detector of stage gauge starts pressed too";
    EXPECT_EQ(Face(KEYINDEX_3), &image_wCdZ6);
    EXPECT_EQ(Face(KEYINDEX_5), &image_K8cmV);
    EXPECT_EQ(Face(KEYINDEX_2), &image_EXOMT);
    EXPECT_EQ(Face(KEYINDEX_1), &image_Ydt_p);
    Keys(0);
    for (uint8_T next : {2, 3, 4, 1}) {
        Click(KEY3);
        EXPECT_EQ(EEVariables_RAMShadow.SELECTED_QUAD, next);
    }
    Click(KEY5);
    EXPECT_TRUE(RAMVariables.EditMode && !RAMVariables.EditPage);
    Click(KEY5);
    EXPECT_FALSE(RAMVariables.EditMode);
    EXPECT_EQ(ButtonBarTestGet()->mode, BUTTONBARMODE_INVISIBLE);
}

// The stage detectors keep what they saw last, key 3 up: a later hold is a press as soon
// as edit mode begins, and goes through to stage gauge, stepping the cell once.
TEST_F(QuadKeysTest, LaterHoldsGoStraightToStageGauge)
{
    HoldToEditMode();
    Keys(0);
    Click(KEY3);
    Click(KEY5);
    Click(KEY5);
    ASSERT_FALSE(RAMVariables.EditMode);
    HoldToEditMode();
    EXPECT_FALSE(RAMVariables.EditPage) << "the stages run in the pass after the hold";
    Keys(KEY3);
    EXPECT_TRUE(RAMVariables.EditPage);
    EXPECT_EQ(EEVariables_RAMShadow.SELECTED_QUAD, 2);
    for (int i = 0; i < 400; i++) Keys(KEY3);
    EXPECT_EQ(EEVariables_RAMShadow.SELECTED_QUAD, 2) << "one step per press";
}

TEST_F(QuadKeysTest, HoldsCountFromTheirOwnPress)
{
    // Let go before 3 s: nothing, and the next hold starts from 0.
    for (int i = 0; i < 290; i++) Keys(KEY3);
    Keys(0);
    for (int i = 0; i < 290; i++) Keys(KEY3);
    Keys(0);
    EXPECT_FALSE(RAMVariables.EditMode);
    // A long pause since the last pass of stage normal does not count towards a hold.
    MMIScreenGoto(SCREENID_FAULTS);
    now_ += 60000;
    Keys(0);
    MMIScreenGoto(SCREENID_QUAD);
    for (int i = 0; i < 5; i++) Keys(KEY3);
    EXPECT_FALSE(RAMVariables.EditMode);
    Keys(0);
    // Key 5 held: the main menu, while still down.
    for (int i = 0; i < 301; i++) Keys(KEY5);
    EXPECT_EQ(MMIGetScreenIdCurrent(), SCREENID_MENU1);
}

TEST_F(QuadKeysTest, PagingAndTheNextScreen)
{
    EEVariables_T& ee = EEVariables_RAMShadow;
    ee.PROFILE_GAUGE_COUNT[0] = 3;
    Click(KEY1);
    EXPECT_EQ(ee.CURRENT_QUAD_SCREEN, 1) << "key 1 never leaves the screen";
    Click(KEY2);
    Click(KEY2);
    EXPECT_EQ(ee.CURRENT_QUAD_SCREEN, 3);
    Click(KEY1);
    EXPECT_EQ(ee.CURRENT_QUAD_SCREEN, 2);
    // In edit mode paging stops at the last page.
    RAMVariables.EditMode = 1;
    for (int i = 0; i < 3; i++) Click(KEY2);
    EXPECT_EQ(ee.CURRENT_QUAD_SCREEN, 3);
    EXPECT_EQ(MMIGetScreenIdCurrent(), SCREENID_QUAD);
    RAMVariables.EditMode = 0;
    Keys(0);
    // A page count lowered below the page shown: key 2 goes on to the next screen.
    ee.PROFILE_GAUGE_COUNT[0] = 1;
    Click(KEY2);
    EXPECT_EQ(MMIGetScreenIdCurrent(), SCREENID_FAULTS);
    EXPECT_EQ(ee.CURRENT_SCREEN, MAIN_SCREEN_FAULTS);
    EXPECT_EQ(ee.CURRENT_QUAD_SCREEN, 3);
    // Another screen: from its first pass on, the page triggers do nothing.
    Keys(0);
    Trigger_QuadPrev();
    Trigger_Quad_NextGauge();
    EXPECT_EQ(ee.CURRENT_QUAD_SCREEN, 3);
    EXPECT_EQ(RAMVariables.SelectedGaugeIndex, 0);
}

// Key 2 steps on from the pair chosen last, through the other types and back to type 0;
// key 1 steps back through one empty step to index 0 of the type before.
TEST_F(QuadKeysTest, GaugeSteppingFromTheStoredPair)
{
    EEVariables_RAMShadow.CURRENT_QUAD_SCREEN = 4;
    EEVariables_RAMShadow.SELECTED_QUAD = 2;
    RAMVariables.EditMode = 1;
    RAMVariables.EditPage = 1;
    RAMVariables.SelectedGaugeIndex = 65;
    Keys(0);
    std::vector<uint16_T> forward;
    for (int i = 0; i < 14; i++) {
        Click(KEY2);
        forward.push_back(Word(4, 2));
    }
    EXPECT_EQ(forward, (std::vector<uint16_T>{0x0042, 0x0100, 0x0200, 0x0300, 0x0301, 0x0302, 0x0303, 0x0304,
                                              0x0305, 0x0306, 0x0307, 0x0308, 0x0309, 0x0000}));
    RAMVariables.SelectedGaugeType = 3;
    RAMVariables.SelectedGaugeIndex = 1;
    std::vector<uint16_T> back;
    for (int i = 0; i < 7; i++) {
        Click(KEY1);
        back.push_back(Word(4, 2));
    }
    EXPECT_EQ(back, (std::vector<uint16_T>{0x0300, 0x03FF, 0x0200, 0x02FF, 0x0100, 0x01FF, 0x0000}));
    Click(KEY1);
    Click(KEY1);
    EXPECT_EQ(Word(4, 2), 0x0000) << "type 0 stepped back from the empty step stays type 0";

    // Nothing stored on page 0 or with a profile outside 1 to 3; the pair moves all the same.
    const EEVariables_T before = EEVariables_RAMShadow;
    EEVariables_RAMShadow.CURRENT_QUAD_SCREEN = 0;
    Click(KEY2);
    EEVariables_RAMShadow.CURRENT_QUAD_SCREEN = 4;
    EEVariables_RAMShadow.USER_PROFILE = 0;
    Click(KEY2);
    EXPECT_EQ(RAMVariables.SelectedGaugeIndex, 2);
    EXPECT_EQ(memcmp(EEVariables_RAMShadow.PROFILE_1, before.PROFILE_1, sizeof(before.PROFILE_1)), 0);
    EEVariables_RAMShadow.USER_PROFILE = 3;
    Click(KEY2);
    EXPECT_EQ((&EEVariables_RAMShadow.PROFILE_3[0][0])[3 * 4 + 1], 0x0003);
}

}  // namespace
