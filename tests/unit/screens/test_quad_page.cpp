// The quad page: the factory pages of both profiles, which cells a page draws, the edit
// badge, the USB words and the warnings, and settings of any value from a file.
#include <random>

#include "fault_table.h"
#include "quad_fixture.h"

namespace {

// Every page of a profile with the engine of the fixture, four pages a row.
void FactorySheet(QuadScreenTest* t, uint8_T profile, const char* name)
{
    EEVariables_RAMShadow.USER_PROFILE = profile;
    ContactSheet sheet(320, 240, 4, PROFILE_PAGES);
    for (uint8_T page = 1; page <= PROFILE_PAGES; page++) {
        EEVariables_RAMShadow.CURRENT_QUAD_SCREEN = page;
        t->Pass();
        Screen_QuadScreen_Update();
        sheet.Put(page - 1, t->Page(), 0, 0);
    }
    EXPECT_TRUE(sheet.Matches(name));
}

TEST_F(QuadScreenTest, FactoryPagesOfTheStoredProfiles)
{
    Drive();
    FactorySheet(this, 1, "quad_factory_profile");
}

TEST_F(QuadScreenTest, FactoryPagesOfTheBuildsDefaultProfile)
{
    Drive();
    B.ProfileGaugeCount = 15;
    FactorySheet(this, 0, "quad_default_profile");
}

std::string g_drawn;
// A drawing function that notes its kind and the cell it was called for.
template <char KIND>
void Note()
{
    const int cell = 1 + (RAMVariables.arg_x >= 160 ? 1 : 0) + (RAMVariables.arg_y >= 120 ? 2 : 0);
    g_drawn += std::string(g_drawn.empty() ? "" : " ") + KIND + std::to_string(cell);
}

TEST_F(QuadScreenTest, WhichCellsAPageDraws)
{
    struct CASE_T {
        uint16_T words[4];
        const char* drawn;
    };
    const CASE_T cases[] = {
        {{0x0000, 0x0001, 0x0002, 0x0003}, "Q1 Q2 Q3 Q4"},
        {{0x0300, 0x0000, 0x0000, 0x0000}, "L1"},           // a large gauge takes the page
        {{0x0100, 0x0000, 0x0000, 0x0000}, "W1 Q3 Q4"},     // double wide over cells 1 and 2
        {{0x0000, 0x0000, 0x0100, 0x0000}, "Q1 Q2 W3"},     // over cells 3 and 4
        {{0x0200, 0x0000, 0x0000, 0x0000}, "T1 Q2 Q4"},     // double tall over cells 1 and 3
        {{0x0000, 0x0200, 0x0000, 0x0000}, "Q1 T2 Q3"},     // over cells 2 and 4
        {{0x0000, 0x0100, 0x0000, 0x0000}, "Q1 Q3 Q4"},     // no room: neither is drawn
        {{0x0000, 0x0000, 0x0200, 0x0000}, "Q1 Q2 Q4"},
        {{0x0000, 0x0300, 0x0000, 0x0300}, "Q1 Q3"},
        {{0x0000, 0x0000, 0x0000, 0x0100}, "Q1 Q2 Q3"},     // the last cell holds quad gauges only
        {{0x0043, 0x0101, 0x030A, 0x0400}, ""},             // indices past their tables, a type past the last
        {{0x0000, 0x0000, 0x0000, 0x0000}, "Q1 Q2 Q3 Q4"},  // and the page after it draws again
    };
    for (const CASE_T& c : cases) {
        ShowWords(c.words[0], c.words[1], c.words[2], c.words[3]);
        for (trigger_ref& g : B.QuadGauge) g = Note<'Q'>;
        for (trigger_ref& g : B.LargeGauge) g = Note<'L'>;
        B.RPM_f = Note<'W'>;
        B.tall = Note<'T'>;
        g_drawn.clear();
        Screen_QuadScreen_Update();
        EXPECT_EQ(g_drawn, c.drawn) << std::hex << c.words[0] << " " << c.words[1] << " " << c.words[2] << " "
                                    << c.words[3];
    }
}

// Page 0 and pages past the last read the nearest page; a profile outside 1 to 3 shows
// the build's default profile and leaves the page count as it was.
TEST_F(QuadScreenTest, PageAndProfileOutOfRange)
{
    EEVariables_T& ee = EEVariables_RAMShadow;
    ee.PROFILE_GAUGE_COUNT[1] = 9;
    ee.USER_PROFILE = 2;
    ee.CURRENT_QUAD_SCREEN = 0;
    Pass();
    EXPECT_EQ(B.ProfileGaugeCount, 9);
    EXPECT_EQ(B.Type << 8 | B.ID, ee.PROFILE_2[0][0]);
    ee.CURRENT_QUAD_SCREEN = 200;
    Pass();
    EXPECT_EQ(B.Type_j3w << 8 | B.ID_frt, (&ee.PROFILE_2[0][0])[PROFILE_WORDS - 1]);
    ee.USER_PROFILE = 0;
    ee.CURRENT_QUAD_SCREEN = 6;
    Pass();
    EXPECT_EQ(B.ProfileGaugeCount, 9);
    EXPECT_EQ(B.Type << 8 | B.ID, 0x0003) << "page 6 of the default profile";
    EXPECT_EQ(B.Type_j3w << 8 | B.ID_frt, 0x0007);
}

// Edit mode's badge, for a page past a lowered page count; a stick in and logging.
TEST_F(QuadScreenTest, EditBadgeAndUsbWords)
{
    Signals({{"Start_Log", 1}});
    Drive();
    mkdir(root.Abs("media/disk_sda1").c_str(), 0755);
    root.Write("media/usbinfo.txt", "disk_sda1");
    EEVariables_RAMShadow.PROFILE_GAUGE_COUNT[0] = 5;
    EEVariables_RAMShadow.CURRENT_QUAD_SCREEN = 7;
    RAMVariables.EditMode = 1;
    Pass();
    ASSERT_TRUE(RAMVariables.LoggBitActive);
    EXPECT_TRUE(MatchesPicture("quad_edit_badge", UpdateAndCompose().data(), 320, 240, 320));
}

// The engine lamp and both valet modes over the cells.
TEST_F(QuadScreenTest, Warnings)
{
    Signals({{"MIL", 1}, {"Valet_Mode", 1}, {"Valet_Mode2", 1}});
    Drive();
    ASSERT_STREQ(FaultEngineWarning(), "CHECK ENGINE");
    ASSERT_STREQ(FaultValetWarning(), "VALET MODE 1&2");
    EXPECT_TRUE(MatchesPicture("quad_warnings", UpdateAndCompose().data(), 320, 240, 320));
}

// Whatever a settings file with a good check word holds, and whatever the tool wrote into
// the edit state, the page draws and the keys' triggers act without leaving their tables.
TEST_F(QuadScreenTest, AnySettingsAndEditStateAreSafe)
{
    std::mt19937 rng(15);
    Drive();
    const uint8_T edges[] = {0, 1, 2, 3, 4, 14, 15, 16, 67, 127, 128, 254, 255};
    auto pick = [&]() { return rng() % 2 ? edges[rng() % std::size(edges)] : (uint8_T)rng(); };
    for (int round = 0; round < 400; round++) {
        EEVariables_T& ee = EEVariables_RAMShadow;
        for (size_t i = 4; i < sizeof(ee); i++) reinterpret_cast<uint8_T*>(&ee)[i] = (uint8_T)rng();
        ee.USER_PROFILE = pick();
        ee.CURRENT_QUAD_SCREEN = pick();
        ee.SELECTED_QUAD = pick();
        for (uint8_T& n : ee.PROFILE_GAUGE_COUNT) n = pick();
        RAMVariables.EditMode = rng() % 2;
        RAMVariables.SelectedGaugeType = pick();
        RAMVariables.SelectedGaugeIndex = pick();
        Pass();
        Screen_QuadScreen_Update();
        // As while the screen is current.
        Trigger_QuadNext_enabled = Trigger_QuadPrev_enabled = 1;
        Trigger_Quad_NextGauge_enabled = Trigger_Quad_PrevGauge_enabled = 1;
        for (trigger_ref trigger : {Trigger_Quad_NextGauge, Trigger_Quad_PrevGauge, Trigger_QuadNext, Trigger_QuadPrev})
            for (int n = 0; n < 3; n++) trigger();
        Pass();
        Screen_QuadScreen_Update();
    }
}

}  // namespace
