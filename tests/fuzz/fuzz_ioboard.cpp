// The I/O board's bytes as the serial port delivers them: through the sentence parser
// into the driver's thread, pass by pass, from the bring-up (versions, the bootloader's
// replies to a firmware update) through the start of the stream to its sentences and
// the values the dash reads from them.
//
// Input: an options byte, then the bytes the board sends (one read's worth at most).
//   bit 0  the large dash (no firmware file in its root), else the small one (a file)
//   bit 1  the stream is already running, in the mode of bit 2 (else a bring-up first)
//   bit 2  stream mode 2: the third connector too
//   bit 3  analogue inputs 3, 4, 10 and 11 measure resistance, 2 and 9 at high gain
//   bit 4  resistance by the table formula, with a customer table
//   bit 5  the reference rates' switch after 30 s falls inside the run
// The thread then passes until the bytes are used up.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz_dash.h"
#include "ioboard_drv.h"
#include "ioboard_fw.h"
#include "platform_sysinfo.h"
#include "timer_drv.h"

namespace {

// The board's firmware file of the small dash: erased flash with an application of a
// few bytes, its version 7 and its length and checksum words.
void _writeFirmware(void)
{
    std::vector<U8> image(IOBOARD_FIRMWARE_SIZE, 0xFF);
    for (U32 i = 0; i < 16; i++) image[i] = (U8)(0x10 + i);
    image[IOBOARD_FIRMWARE_VERSION_OFFSET] = 7;
    image[IOBOARD_FIRMWARE_LENGTH_OFFSET] = 0;
    image[IOBOARD_FIRMWARE_LENGTH_OFFSET + 1] = 16;
    const U16 sum = ioboard_firmware_checksum(image.data());
    image[IOBOARD_FIRMWARE_CHECKSUM_OFFSET] = (U8)(sum >> 8);
    image[IOBOARD_FIRMWARE_CHECKSUM_OFFSET + 1] = (U8)sum;
    FuzzWriteFile("app/bin/ioboard0.bin", image.data(), image.size());
}

void _product(U32 id)
{
    static U32 current = 0xFFFFFFFF;
    if (id == current) return;
    current = id;
    setenv("PRODUCT_ID", id == PLATFORM_ZELVO720 ? "256" : "0", 1);
    PlatformSysinfoTestReset();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FuzzRoot();
    _writeFirmware();
    ioboard_test_set_settle_ms(0);
    ioboard_test_set_reply_timeout_ms(0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput in(data, size);
    const uint8_t options = in.Byte();
    int64_t nowS = 1000;
    timer_test_set_clock(nowS * 1000000000);
    _product((options & 1) ? PLATFORM_ZELVO720 : PLATFORM_ZELVO310);
    ioboard_test_reset();
    ioboard_read_firmware();
    if (options & 2) ioboard_test_start_stream((options & 4) ? 2 : 1);
    if (options & 4) ioboard_enable_third_connector();
    if (options & 8) {
        for (U32 channel : {3u, 4u, 10u, 11u}) ioboard_set_adc_mux_config(channel, 1, 0);
        for (U32 channel : {2u, 9u}) ioboard_set_adc_mux_config(channel, 0, 1);
    }
    if (options & 0x10) {
        static constexpr float CUSTOMER[IOBOARD_CUST_CAL_TABLE_SIZE] = {1.0f, 0.98f, 1.02f, 1.05f, 0.9f};
        ioboard_set_cal_function(1);
        ioboard_set_cal_zero_ohm_offset(12.5f);
        ioboard_set_cust_cal_table(CUSTOMER);
    }

    const std::string bytes = in.Rest();
    ioboard_test_feed(reinterpret_cast<const U8*>(bytes.data()), (U32)bytes.size());
    // Each pass that works takes at least one sentence, and a pass that finds none
    // leaves the bytes used up.
    size_t passes = 2;
    for (char c : bytes) passes += c == '\r';
    for (size_t i = 0; i < passes; i++) {
        if ((options & 0x20) && i == passes / 2) timer_test_set_clock((nowS += 31) * 1000000000);
        ioboard_test_thread_pass();
    }

    // What the dash reads of it.
    float value = 0;
    BOOL closed = 0;
    U16 count = 0;
    U32 bootloader = 0, application = 0;
    IOBOARD_WORKING_DATA_T work;
    ioboard_is_running();
    ioboard_get_version_info(&bootloader, &application);
    ioboard_get_supply_voltage(&value);
    for (U32 c = 0; c <= ANALOG_CHANNEL_MAX + 1; c++) ioboard_get_adc_mux_data(c, &value);
    for (U32 c = 0; c <= DIG_OUT_CHANNEL_MAX + 1; c++) ioboard_get_relay_out_data(c, &value);
    for (U32 c = 0; c <= DIG_IN_CHANNEL_MAX + 1; c++) ioboard_get_switch_in_data(c, &closed, &count);
    ioboard_get_switch_extra_in_data(&closed, &count);
    ioboard_get_rpm_frequency_data(&value);
    ioboard_get_rpm_period_data(&value);
    ioboard_get_working_data(&work);
    return 0;
}
