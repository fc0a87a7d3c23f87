// The single-slot mailboxes in front of the received frames: what the receive tables
// take and drop, how the age counts, and the calibration link's frames.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "can_fixture.h"

namespace {

uint16_T AgeOf108()
{
    uint16_T age = 0;
    can_get_96775__0011(&age, nullptr, nullptr, nullptr, 0);
    return age;
}

TEST(CanMailbox, BeforeTheFirstFrameTheAgeStaysAtNever)
{
    CANSetNeverReceived(CAN_PORT1);
    for (int i = 0; i < 3; i++) EXPECT_EQ(AgeOf108(), CAN_AGE_NEVER);
    Pass();
    EXPECT_EQ(CANFrameAge(0x108), CAN_AGE_NEVER);
    EXPECT_EQ(B.Age, CAN_AGE_NEVER);
}

TEST(CanMailbox, AgeIsZeroInThePassAfterTheFrameThenCountsPasses)
{
    Frame(0x108, {});
    for (uint16_T pass = 0; pass < 5; pass++) {
        Pass();
        EXPECT_EQ(CANFrameAge(0x108), pass);
    }
}

TEST(CanMailbox, AgeStopsAtNever)
{
    Frame(0x108, {});
    for (int i = 0; i < 70000; i++) AgeOf108();
    EXPECT_EQ(AgeOf108(), CAN_AGE_NEVER);
    EXPECT_EQ(AgeOf108(), CAN_AGE_NEVER);
}

TEST(CanMailbox, NewestFrameWinsAndTheAgeIsZero)
{
    Frame(0x108, {0x03, 0xE8, 0, 0, 0, 0, 0, 0});
    Frame(0x108, {0x07, 0xD0, 0, 0, 0, 0, 0, 0});
    Pass();
    EXPECT_EQ(B.RPM, 2000);
    EXPECT_EQ(CANFrameAge(0x108), 0);
}

TEST(CanMailbox, FrameOfAnotherLengthIsDropped)
{
    FrameAndPass(0x108, {0x03, 0xE8, 0, 0, 0, 0, 0, 0});
    Pass();
    for (uint8_T length : {0, 7}) {
        Frame(0x108, {0x0B, 0xB8, 0, 0, 0, 0, 0, 0}, length);
        Pass();
    }
    EXPECT_EQ(B.RPM, 1000);
    EXPECT_EQ(CANFrameAge(0x108), 3) << "the dropped frames reset no age";
}

TEST(CanMailbox, ExtendedFrameIsNotTheStandardOne)
{
    FrameAndPass(0x108, {0x03, 0xE8, 0, 0, 0, 0, 0, 0});
    Frame(0x108, {0x0B, 0xB8, 0, 0, 0, 0, 0, 0}, 8, 1);
    Pass();
    EXPECT_EQ(B.RPM, 1000);
    EXPECT_EQ(CANFrameAge(0x108), 1);
}

TEST(CanMailbox, UnknownIdsAndTheOtherPortAreDropped)
{
    FrameAndPass(0x108, {0x03, 0xE8, 0, 0, 0, 0, 0, 0});
    // 0x108 belongs to port 1; 0x131 is the dash's own frame; 0x7FF is nobody's.
    CAN_MSG_T onPort2 = Message(0x108, {0x0B, 0xB8, 0, 0, 0, 0, 0, 0});
    rxTable_285280__0051(CAN_PORT2, &onPort2);
    Frame(0x131, {0x0B, 0xB8, 0, 0, 0, 0, 0, 0});
    Frame(0x7FF, {0x0B, 0xB8, 0, 0, 0, 0, 0, 0});
    Pass();
    EXPECT_EQ(B.RPM, 1000);
    EXPECT_EQ(CANFrameAge(0x108), 1);
    EXPECT_EQ(CANGetFunction(0x131), nullptr);
    EXPECT_EQ(CANGetFunction(0x7FF), nullptr);
}

TEST(CanMailbox, GetCopiesWhatIsAskedForAndReportsStandard)
{
    Frame(0x108, {1, 2, 3, 4, 5, 6, 7, 8});
    uint8_T data[8] = {};
    uint16_T age = 1;
    uint32_T id = 0;
    uint8_T extended = 9;
    EXPECT_EQ(can_get_96775__0011(&age, &id, &extended, data, 3), 3);
    EXPECT_EQ(age, 0);
    EXPECT_EQ(id, 0x108u);
    EXPECT_EQ(extended, 0);
    EXPECT_EQ(data[2], 3);
    EXPECT_EQ(data[3], 0) << "no more than asked for";
    EXPECT_EQ(can_get_96775__0011(nullptr, nullptr, nullptr, data, 255), 8);
    EXPECT_EQ(data[7], 8);
    EXPECT_EQ(can_get_96775__0011(&age, nullptr, nullptr, nullptr, 8), 0);
    EXPECT_EQ(age, 2);
}

// ---- The calibration link's frames ----------------------------------------------

struct XCP_SEEN_T {
    U32 id;
    std::vector<U8> data;
};
std::vector<XCP_SEEN_T> m_xcpFrames;
int m_xcpProcessorCalls;

void XcpRx(U32 msgId, U8 msgLen, U8* msgData)
{
    m_xcpFrames.push_back({msgId, std::vector<U8>(msgData, msgData + msgLen)});
}
void XcpProcess(void)
{
    m_xcpProcessorCalls++;
}

class CanXcpFrames : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_xcpFrames.clear();
        m_xcpProcessorCalls = 0;
        CANSetXcpHandlers(XcpRx, XcpProcess);
    }
    void TearDown() override { CANSetXcpHandlers(nullptr, nullptr); }
};

TEST_F(CanXcpFrames, AnyLengthGoesOnAtOnceAndIsAnsweredOnTheSpot)
{
    Frame(0x200, {0xFF, 0x00, 0, 0, 0, 0, 0, 0}, 2);
    ASSERT_EQ(m_xcpFrames.size(), 1u);
    EXPECT_EQ(m_xcpFrames[0].id, 0x200u);
    EXPECT_EQ(m_xcpFrames[0].data, (std::vector<U8>{0xFF, 0x00}));
    EXPECT_EQ(m_xcpProcessorCalls, 1);

    Frame(0x100, {0xF2, 0xFF, 0x58, 0x43, 0x50, 0x00, 0, 0}, 6);
    ASSERT_EQ(m_xcpFrames.size(), 2u);
    EXPECT_EQ(m_xcpFrames[1].id, 0x100u);
    EXPECT_EQ(m_xcpFrames[1].data.size(), 6u);
    EXPECT_EQ(m_xcpProcessorCalls, 2);
}

TEST_F(CanXcpFrames, ExtendedOnesAreDroppedLikeAnyOther)
{
    Frame(0x200, {0xFF, 0, 0, 0, 0, 0, 0, 0}, 8, 1);
    EXPECT_TRUE(m_xcpFrames.empty());
    EXPECT_EQ(m_xcpProcessorCalls, 0);
}

TEST(CanXcpWithoutHandlers, FramesOnlyFillTheMailbox)
{
    CANSetXcpHandlers(nullptr, nullptr);
    Frame(0x200, {0xFF, 0, 0, 0, 0, 0, 0, 0}, 1);
    uint16_T age = 1;
    uint8_T data[8] = {};
    EXPECT_EQ(can_get_285305__0016(&age, nullptr, nullptr, data, 8), 1);
    EXPECT_EQ(age, 1) << "the hand-over itself fetched it once";
    EXPECT_EQ(data[0], 0xFF);
}

// ---- A process of its own: the state of a dash that has just started ------------

bool _freshStart(void)
{
    bool ok = true;
    auto check = [&ok](bool good, const char* what) {
        if (!good) fprintf(stderr, "FAILED: %s\n", what);
        ok = ok && good;
    };
    Pass();
    check(CANFrameAge(0x109) == CAN_AGE_NEVER && CANFrameAge(0x130) == CAN_AGE_NEVER, "ages read never");
    check(B.Age == CAN_AGE_NEVER && B.Age_f == CAN_AGE_NEVER, "B.Age and B.Age_f read never");
    check(B.RPM == 0 && B.OilTemp == 0 && B.Ref_Win_Int8 == 0 && B.X_Axis_Degrees == -64, "fields decode from zeros");
    check(B.APP1AdaptHiMax == 0 && B.Fuel_Tank_Purge_Active == 0, "no fault before the first frame");
    check(CANText_FirmwareVersion.string[0] == 0 && CANText_SerialNumber.string[0] == 0 &&
              CANText_PartNumber.string[0] == 0,
          "the identity texts are empty");
    return ok;
}

TEST(CanFreshStart, EverythingDecodesFromZerosAndNothingHasAnAge)
{
    // The check runs in a new process, whatever the tests before it received.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exit(_freshStart() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

}  // namespace
