// The board's sentences: what the parser serves from a raw stream, and what the stream's
// handling makes of them (validity, conversions, corrections sent back to the board).
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "fake_board.h"
#include "ioboard_drv.h"
#include "platform_sysinfo.h"
#include "timer_drv.h"
#include "uart_drv.h"

namespace {

void Feed(const std::string& bytes)
{
    ioboard_test_feed(reinterpret_cast<const U8*>(bytes.data()), (U32)bytes.size());
}

// Every sentence the parser serves from `bytes`.
std::vector<std::string> Parse(const std::string& bytes)
{
    Feed(bytes);
    std::vector<std::string> out;
    while (const char* s = ioboard_test_next_sentence()) out.push_back(s);
    return out;
}

}  // namespace

class IoboardParser : public ::testing::Test {
protected:
    void SetUp() override { ioboard_test_reset(); }
};

TEST_F(IoboardParser, ServesSentencesWithAGoodChecksumAndDropsTheRest)
{
    const std::string tach = Sentence("$P,0064");
    std::string lower = Sentence("$L,01,7f");
    lower[lower.size() - 2] = (char)tolower(lower[lower.size() - 2]);  // "*xy": either case
    lower[lower.size() - 3] = (char)tolower(lower[lower.size() - 3]);
    const std::string bytes = "noise\r\r" + std::string("$W*A5\r") + "$Z,5a5a*00\r" +
                              "$P,0064*00\r" +                   // wrong checksum
                              "$P,00" + tach +                   // "$" restarts
                              "$P,00" + std::string(1, '\0') + "P,0064*D3\r" +  // NUL ends it
                              "$*\r$W*G5\r" +                    // too short, not hexadecimal
                              lower + tach;
    const std::vector<std::string> expected = {"$W*A5", "$Z,5a5a*00", tach.substr(0, tach.size() - 1),
                                               lower.substr(0, lower.size() - 1), tach.substr(0, tach.size() - 1)};
    EXPECT_EQ(Parse(bytes), expected);
}

TEST_F(IoboardParser, AnOverrunIsReportedAndTheNextSentenceIsServed)
{
    // The longest sentence the buffer takes: 1021 characters before its carriage return.
    const std::string longest = Sentence("$X," + std::string(1021 - 6, 'A'));
    ASSERT_EQ(longest.size(), 1022u);
    testing::internal::CaptureStdout();
    EXPECT_EQ(Parse(longest + "$" + std::string(1021, 'B') + "$W*A5\r").size(), 2u);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "I/O Board: Sentence buffer overrun!\n");
    testing::internal::CaptureStdout();
    EXPECT_EQ(Parse("$" + std::string(1021, 'B') + "W*A5\r").size(), 0u);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "I/O Board: Sentence buffer overrun!\n");
}

TEST_F(IoboardParser, RandomBytesOnlyEverGiveWellFormedSentences)
{
    std::mt19937 random(22);
    // Mostly the characters of sentences, so that many come close to being valid.
    const std::string alphabet = "$$*\r\r,0123456789ABCDEFabcdefPLkeISGW";
    std::string bytes;
    U32 served = 0;
    testing::internal::CaptureStdout();
    for (int round = 0; round < 300; round++) {
        bytes.resize(random() % 12000);  // beyond the receive buffer too
        for (char& c : bytes) c = random() % 4 ? alphabet[random() % alphabet.size()] : (char)(random() % 256);
        // Whole sentences among the noise, some of them cut by it.
        for (int i = 0; i < 5 && !bytes.empty(); i++) bytes.insert(random() % bytes.size(), Sentence("$P,0064"));
        for (const std::string& s : Parse(bytes)) {
            ASSERT_GE(s.size(), 5u);
            ASSERT_EQ(s[0], '$');
            ASSERT_EQ(s[s.size() - 3], '*');
            unsigned sum = 0;
            for (size_t i = 0; i + 2 < s.size(); i++) sum += (unsigned char)s[i];
            ASSERT_EQ(strtoul(s.substr(s.size() - 2).c_str(), nullptr, 16), sum & 0xFF) << s;
            served++;
        }
        // Valid sentences still come through after any amount of noise.
        ASSERT_EQ(Parse("\r$W*A5\r").size(), 1u);
    }
    testing::internal::GetCapturedStdout();
    EXPECT_GT(served, 0u);
}

// The stream on the test's thread, with port 2 open to a fake board that sees what the
// handling sends back.
class IoboardStream : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("PRODUCT_ID", "0", 1);
        PlatformSysinfoTestReset();
        ioboard_test_reset();
        ASSERT_TRUE(uart_open(IOBOARD_UART_PORT, UART_BAUD_115200, 1, 0, UART_PARITY_NONE, nullptr));
        ioboard_test_start_stream(1);
    }
    void TearDown() override
    {
        ioboard_test_reset();
        timer_test_set_clock(-1);
        unsetenv("PRODUCT_ID");
        PlatformSysinfoTestReset();
    }
    // One stream pass per sentence.
    static void Stream(const std::vector<std::string>& bodies)
    {
        std::string bytes;
        for (const std::string& body : bodies) bytes += Sentence(body);
        Feed(bytes);
        for (size_t i = 0; i < bodies.size(); i++) ioboard_test_stream_pass();
    }
    // Every kind that stream mode 1 needs, with plain values.
    static std::vector<std::string> ModeOneSet()
    {
        return {"$L,00,00",
                "$I,0000,0000,0000,0000,0000,0000,0000,0000,0000",
                "$k,0000,1000,0000,0000,0AF0",
                "$e,00,00,00,00,FF",
                "$S,0000,0000,0000,0000,0000,1000",
                "$G,0000,O,0000,O,0000,O",
                "$P,0000"};
    }
    static float Analogue(U32 channel)
    {
        float value = 0;
        EXPECT_TRUE(ioboard_get_adc_mux_data(channel, &value));
        return value;
    }
    TestRoot root;
    FakeBoard board{root};
};

TEST_F(IoboardStream, DataAreValidOnlyOnceEveryKindOfTheModeHasCome)
{
    std::vector<std::string> set = ModeOneSet();
    const std::string last = set.back();
    set.pop_back();
    Stream(set);
    float value = 0;
    BOOL closed = 1;
    U16 count = 9;
    EXPECT_FALSE(ioboard_is_running());
    EXPECT_FALSE(ioboard_get_adc_mux_data(1, &value));
    EXPECT_EQ(value, -1.0f);
    EXPECT_FALSE(ioboard_get_supply_voltage(&value));
    EXPECT_EQ(value, -1.0f);
    EXPECT_FALSE(ioboard_get_rpm_frequency_data(&value));
    EXPECT_EQ(value, 0.0f);
    EXPECT_FALSE(ioboard_get_switch_in_data(1, &closed, &count));
    EXPECT_EQ(closed, 0);
    EXPECT_EQ(count, 0);

    Stream({last});
    EXPECT_TRUE(ioboard_is_running());
    EXPECT_TRUE(ioboard_get_adc_mux_data(ANALOG_CHANNEL_14, &value));
    EXPECT_FALSE(ioboard_get_adc_mux_data(15, &value)) << "out of range";
    EXPECT_EQ(value, -1.0f);
    EXPECT_FALSE(ioboard_get_relay_out_data(0, &value));
}

TEST_F(IoboardStream, ModeTwoNeedsTheThirdConnectorsSentencesToo)
{
    EXPECT_FALSE(ioboard_enable_third_connector()) << "the small dash has no third connector";
    Stream(ModeOneSet());
    ASSERT_TRUE(ioboard_is_running());

    setenv("PRODUCT_ID", "256", 1);
    PlatformSysinfoTestReset();
    ASSERT_TRUE(ioboard_enable_third_connector());
    Stream({"$T,2"});  // the pass tells the board first
    EXPECT_TRUE(WaitFor([&] { return board.Got("$T,2"); }));
    EXPECT_FALSE(ioboard_is_running());
    std::vector<std::string> rest = {"$O,00,00", "$J,0000,0000,0000,0000,0000,0000,0000,0000,0000",
                                     "$n,0000,1000,0000,0000,0AF0", "$d,00,00,00,00",
                                     "$R,0000,0000,0000,0000", "$H,0000,C"};
    for (const std::string& body : rest) {
        EXPECT_FALSE(ioboard_is_running()) << "before " << body;
        Stream({body});
    }
    EXPECT_TRUE(ioboard_is_running());
    BOOL closed = 0;
    U16 count = 1;
    EXPECT_TRUE(ioboard_get_switch_in_data(3, &closed, &count));
    EXPECT_EQ(closed, 1);
}

TEST_F(IoboardStream, ConvertsTheRawValues)
{
    ioboard_set_adc_mux_config(2, 0, 1);  // high gain
    ioboard_set_adc_mux_config(3, 1, 0);  // resistances
    ioboard_set_adc_mux_config(4, 1, 0);
    ioboard_set_adc_mux_filter_rate(3, 1.0f);
    ioboard_set_adc_mux_filter_rate(4, 1.0f);
    Stream(ModeOneSet());  // bank 0 references: ref2 2048, ref5 1400 after the filter
    // Channel 1 and 2 at 1000 filter to 500; 3 and 4 take their raw values.
    Stream({"$I,0000,03E8,03E8,000F,0064,0000,0000,0000,0000"});
    EXPECT_FLOAT_EQ(Analogue(1), 500.0f * 2.048f * 4.05f / 2048.0f);
    EXPECT_FLOAT_EQ(Analogue(2), 0.5f);
    EXPECT_EQ(Analogue(3), 0.0f) << "4 ohm is below the sensor's range: (4 - 5) x 4/3 is negative";
    EXPECT_FLOAT_EQ(Analogue(4), 29.5f);
    Stream({"$I,0000,03E8,03E8,000F,0064,0000,0000,0000,0000"});
    EXPECT_FLOAT_EQ(Analogue(1), 750.0f * 2.048f * 4.05f / 2048.0f) << "filtered, not taken raw";

    // The table formula: 400 ohm with a zero offset of 0 is scaled by the fifth factor.
    ioboard_set_cal_function(1);
    ioboard_set_cal_zero_ohm_offset(0.0f);
    Stream({"$I,0000,03E8,03E8,000F,0578,0000,0000,0000,0000"});
    EXPECT_FLOAT_EQ(Analogue(4), 407.0f);
    const float half[IOBOARD_CUST_CAL_TABLE_SIZE] = {0.5f, 0.5f, 0.5f, 0.5f, 0.5f};
    ioboard_set_cust_cal_table(half);
    Stream({"$I,0000,03E8,03E8,000F,0578,0000,0000,0000,0000"});
    EXPECT_FLOAT_EQ(Analogue(4), 203.5f);
    ioboard_set_cust_cal_table(nullptr);
    Stream({"$I,0000,03E8,03E8,000F,0578,0000,0000,0000,0000"});
    EXPECT_FLOAT_EQ(Analogue(4), 407.0f);

    // Voltages against the common reference; the small dash's supply reads 0.85 V more.
    float value = 0;
    Stream({"$S,03E8,0000,0000,0000,04B0,1000", "$R,0000,0000,0000,07D0"});
    EXPECT_TRUE(ioboard_get_relay_out_data(1, &value));
    EXPECT_FLOAT_EQ(value, 11.0f);
    EXPECT_TRUE(ioboard_get_relay_out_data(8, &value));
    EXPECT_FLOAT_EQ(value, 22.0f) << "R uses the reference of the last S";
    EXPECT_TRUE(ioboard_get_supply_voltage(&value));
    EXPECT_FLOAT_EQ(value, 13.2f + 0.85f);
    Stream({"$S,03E8,0000,0000,0000,04B0,0000"});
    ioboard_get_relay_out_data(1, &value);
    EXPECT_EQ(value, 0.0f);
    ioboard_get_supply_voltage(&value);
    EXPECT_FLOAT_EQ(value, 0.85f);

    // Tach and switches.
    Stream({"$P,0064", "$G,0001,C,0002,O,0003,C"});
    ioboard_get_rpm_frequency_data(&value);
    EXPECT_FLOAT_EQ(value, 3125.0f);
    ioboard_get_rpm_period_data(&value);
    EXPECT_FLOAT_EQ(value, 318.47f);
    BOOL closed[3] = {};
    U16 count[3] = {};
    ioboard_get_switch_in_data(1, &closed[0], &count[0]);
    ioboard_get_switch_in_data(2, &closed[1], &count[1]);
    ioboard_get_switch_extra_in_data(&closed[2], &count[2]);
    EXPECT_EQ(closed[0] * 100 + closed[1] * 10 + closed[2], 101);
    EXPECT_EQ(count[0] * 100 + count[1] * 10 + count[2], 123);
    Stream({"$P,FFFE"});
    ioboard_get_rpm_frequency_data(&value);
    EXPECT_EQ(value, 0.0f) << "a stopped tach";
}

TEST_F(IoboardStream, ABadFieldOrAnUnknownSentenceCostsOnlyThatSentence)
{
    std::vector<std::string> set = ModeOneSet();
    set[0] = "$L,00,0G";                          // no bit, and no correction from it
    set[4] = "$S,0000,0000,0000,0000,0000,10x0";  // no bit
    ioboard_set_adc_mux_config(1, 1, 0);
    testing::internal::CaptureStdout();
    Stream(set);
    Stream({"$X,1234", "$L,00"});
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("I/O Board: Unknown reply (" + Sentence("$X,1234").substr(0, 10) + ")\n"), std::string::npos);
    EXPECT_NE(out.find("I/O Board: Unknown reply ($L,00*"), std::string::npos) << "known by length and letter";
    EXPECT_FALSE(ioboard_is_running());
    Stream({"$L,01,00", "$S,0000,0000,0000,0000,0000,1000"});
    EXPECT_TRUE(ioboard_is_running());
    ioboard_send_command("$W");  // a marker: everything sent before it has arrived
    ASSERT_TRUE(WaitFor([&] { return board.Got("$W"); }));
    EXPECT_FALSE(board.Got("$M,01,00"));
}

TEST_F(IoboardStream, ADifferingReportIsCorrectedWithTheWholeSet)
{
    ioboard_set_relay_out_config(1, 1);
    Stream({"$e,00,00,00,00,FF"});
    ASSERT_TRUE(WaitFor([&] { return board.Got("$E,FF,00,00,00,FF"); }));
    ioboard_set_relay_out_pwm_frequency(1);  // stored as 3
    ioboard_set_relay_out_pwm_duty_cycle(8, 0x80);
    ioboard_set_adc_mux_config(2, 1, 0);
    ioboard_set_adc_mux_config(9, 0, 1);
    ioboard_set_adc_mux_config(14, 1, 1);
    Stream({"$e,FF,00,00,00,FF", "$d,00,00,00,00", "$L,02,00", "$O,00,00"});
    ASSERT_TRUE(WaitFor([&] { return board.Got("$Q,40,42"); }));
    const std::vector<std::string> received = board.Received();
    const std::vector<std::string> expected = {"$E,FF,00,00,00,FF", "$E,FF,00,00,00,03", "$D,00,00,00,80", "$Q,40,42"};
    EXPECT_EQ(received, expected) << "L agreed, so no $M";
    // The frame format itself: checksum and carriage return.
    EXPECT_EQ(board.Lines()[0] + "\r", Sentence("$E,FF,00,00,00,FF"));
    ioboard_send_command("$Z,5a5a");
    ASSERT_TRUE(WaitFor([&] { return board.Got("$Z,5a5a"); }));
    EXPECT_EQ(board.Lines().back(), "$Z,5a5a*00");
}

TEST_F(IoboardStream, ReferenceRatesSlowDownOnceThirtySecondsHavePassed)
{
    timer_test_set_clock(1000LL * 1000000000);
    ioboard_test_start_stream(1);
    std::vector<std::string> set = ModeOneSet();
    set[2] = "$k,0000,0000,0000,0000,0000";
    Stream(set);
    IOBOARD_WORKING_DATA_T data;
    auto ref2 = [&] {
        EXPECT_TRUE(ioboard_get_working_data(&data));
        return data.references[0][1].filtered;
    };
    timer_test_set_clock(1029LL * 1000000000);
    Stream({"$k,0000,03E8,0000,0000,0000"});
    EXPECT_FLOAT_EQ(ref2(), 500.0f) << "29 s: still at 0.5";
    timer_test_set_clock(1030LL * 1000000000);
    Stream({"$k,0000,03E8,0000,0000,0000"});
    EXPECT_FLOAT_EQ(ref2(), 550.0f) << "30 s: 0.1";
    EXPECT_EQ(data.references[0][1].raw, 1000);
}
