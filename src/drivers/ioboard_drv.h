#pragma once
// The optional I/O board on serial port 2: 14 analogue inputs, 8 outputs with voltage
// read-back, 3 switch inputs and an extra one, a tach input and the supply voltage.
// A thread of the driver brings the board's application up (updating its firmware
// first when the file says so), lives on the sentences the board streams by itself,
// converts them to physical values, and keeps the board's configuration equal to the
// wanted one by sending a correction whenever a report differs.
#include "dash_types.h"

enum ANALOG_CHANNEL_T : U32 {
    ANALOG_CHANNEL_1 = 1,
    ANALOG_CHANNEL_2 = 2,
    ANALOG_CHANNEL_3 = 3,
    ANALOG_CHANNEL_4 = 4,
    ANALOG_CHANNEL_5 = 5,
    ANALOG_CHANNEL_6 = 6,
    ANALOG_CHANNEL_7 = 7,
    ANALOG_CHANNEL_8 = 8,
    ANALOG_CHANNEL_9 = 9,
    ANALOG_CHANNEL_10 = 10,
    ANALOG_CHANNEL_11 = 11,
    ANALOG_CHANNEL_12 = 12,
    ANALOG_CHANNEL_13 = 13,
    ANALOG_CHANNEL_14 = 14,
    ANALOG_CHANNEL_MAX = 14,
};

enum DIG_OUT_CHANNEL_T : U32 {
    DIG_OUT_CHANNEL_1 = 1,
    DIG_OUT_CHANNEL_2 = 2,
    DIG_OUT_CHANNEL_3 = 3,
    DIG_OUT_CHANNEL_4 = 4,
    DIG_OUT_CHANNEL_5 = 5,
    DIG_OUT_CHANNEL_6 = 6,
    DIG_OUT_CHANNEL_7 = 7,
    DIG_OUT_CHANNEL_8 = 8,
    DIG_OUT_CHANNEL_MAX = 8,
};

enum DIG_IN_CHANNEL_T : U32 {
    DIG_IN_CHANNEL_1 = 1,
    DIG_IN_CHANNEL_2 = 2,
    DIG_IN_CHANNEL_3 = 3,
    DIG_IN_CHANNEL_MAX = 3,
};

constexpr U32 IOBOARD_NUMBER_ADC_MUX_CHANNELS = 14;
constexpr U32 IOBOARD_NUMBER_RELAY_OUTPUTS = 8;
constexpr U32 IOBOARD_NUMBER_SWITCH_INPUTS = 3;
constexpr U32 IOBOARD_CHANNELS_PER_BANK = 7;
constexpr U32 IOBOARD_NUMBER_BANKS = 2;
constexpr U32 IOBOARD_NUMBER_REFERENCES = 5;  // reference values of one bank
constexpr U32 IOBOARD_CAL_TABLE_SIZE = 21;    // one factor for each 100 ohm
constexpr U32 IOBOARD_CUST_CAL_TABLE_SIZE = 5;
constexpr U32 IOBOARD_UART_PORT = 2;

// The calibration, working and raw values, as ioboard_get_working_data copies them.
struct IOBOARD_FILTERED_T {
    U16 raw;
    float filtered;
};
struct IOBOARD_CHANNEL_T {
    U16 raw;
    float filtered;
    float result;
};
struct IOBOARD_OUTPUT_T {
    U16 raw;
    float voltage;
};
struct IOBOARD_WORKING_DATA_T {
    U32 calFunction;  // 1 selects the table formula
    float calZeroOhmOffset;
    float calTable[IOBOARD_CAL_TABLE_SIZE];
    float custCalTable[IOBOARD_CUST_CAL_TABLE_SIZE];
    U32 custCalEnabled;
    IOBOARD_FILTERED_T references[IOBOARD_NUMBER_BANKS][IOBOARD_NUMBER_REFERENCES];
    IOBOARD_CHANNEL_T channels[IOBOARD_NUMBER_ADC_MUX_CHANNELS];
    U16 bankFirstField[IOBOARD_NUMBER_BANKS];  // fields 1 and 9 of I and J, kept as they came
    U16 bankLastField[IOBOARD_NUMBER_BANKS];
    IOBOARD_OUTPUT_T outputs[IOBOARD_NUMBER_RELAY_OUTPUTS];
    U16 supplyRaw;
    U16 commonReference;
};

// Finds the board once: resets it, asks its versions, closes the port again. Later
// calls give the first result.
BOOL ioboard_probe(void);
// Probes, then opens port 2, loads the firmware file and starts the thread.
BOOL ioboard_open(void);
// Stops the thread (waiting for an update under way to end) and closes the port.
BOOL ioboard_close(void);
// The application runs and every sentence of the stream mode has come since bring-up.
BOOL ioboard_is_running(void);
// The versions while the application runs, else 0 and 0.
BOOL ioboard_get_version_info(U32* bootloaderVersion, U32* applicationVersion);
// Streams the third connector's sentences too; the large dash only.
BOOL ioboard_enable_third_connector(void);

// Wanted configuration: kept on the board by the thread. A channel out of range gives 0.
BOOL ioboard_set_adc_mux_config(U32 channel, BOOL resistance, BOOL highGain);
BOOL ioboard_get_adc_mux_config(U32 channel, BOOL* resistance, BOOL* highGain);
BOOL ioboard_set_adc_mux_filter_rate(U32 channel, float rate);
BOOL ioboard_get_adc_mux_filter_rate(U32 channel, float* rate);
// Duty 255 (on) or 0 (off).
BOOL ioboard_set_relay_out_config(U32 channel, BOOL on);
// 1 in *on when the output's duty is not 0.
BOOL ioboard_get_relay_out_config(U32 channel, BOOL* on);
// Below 3 gives 3; kept as a byte.
BOOL ioboard_set_relay_out_pwm_frequency(U32 frequency);
BOOL ioboard_set_relay_out_pwm_duty_cycle(U32 channel, U8 duty);
BOOL ioboard_get_relay_out_pwm_duty_cycle(U32 channel, U8* duty);

// Data: 1 only while the data are valid (ioboard_is_running) and the channel is in
// range. Otherwise 0, with -1.0 for analogue values, supply and output voltages and 0
// for the others.
BOOL ioboard_get_supply_voltage(float* voltage);
BOOL ioboard_get_adc_mux_data(U32 channel, float* value);
BOOL ioboard_get_relay_out_data(U32 channel, float* voltage);
BOOL ioboard_get_switch_in_data(U32 channel, BOOL* closed, U16* count);
BOOL ioboard_get_switch_extra_in_data(BOOL* closed, U16* count);
BOOL ioboard_get_rpm_frequency_data(float* frequency);
BOOL ioboard_get_rpm_period_data(float* period);
// Leaves *data alone while the data are not valid.
BOOL ioboard_get_working_data(IOBOARD_WORKING_DATA_T* data);

// Calibration of resistance inputs.
BOOL ioboard_set_cal_zero_ohm_offset(float offset);
BOOL ioboard_set_cal_table(const float table[IOBOARD_CAL_TABLE_SIZE]);
// nullptr switches the customer table off, a table switches it on.
BOOL ioboard_set_cust_cal_table(const float table[IOBOARD_CUST_CAL_TABLE_SIZE]);
BOOL ioboard_set_cal_function(U32 function);

// The link, for the firmware update that runs on the driver's thread.
// Formats a sentence, adds its checksum and carriage return, and writes it. Always 1.
BOOL ioboard_send_command(const char* format, ...) __attribute__((format(printf, 1, 2)));
// The next sentence with a valid checksum, waiting up to 1000 ms for each read; it ends
// where its carriage return was. 0 when nothing came in time.
BOOL ioboard_wait_for_reply(const char** sentence, U32* length);
// Reads `digits` hexadecimal digits of either case. 0 at the first other character, with
// the digits before it in *value.
BOOL ioboard_parse_hex(const char* text, U32 digits, U32* value);
// Sleeps the whole time, going on after a signal.
void ioboard_sleep_ms(U32 milliseconds);

// Test hooks: for tests and benchmarks only, never called by the dash.
// Closes the link, forgets the probe, and puts the record and the parser at their
// start values.
void ioboard_test_reset(void);
// The waits after a reset and after the application's start (250 ms on the dash).
void ioboard_test_set_settle_ms(U32 milliseconds);
// Puts bytes in the receive buffer as one read from the port would (at most its size).
void ioboard_test_feed(const U8* data, U32 count);
// The next valid sentence in what was fed, or nullptr when the bytes are used up.
const char* ioboard_test_next_sentence(void);
// As if the stream had just started in `mode` (1 or 2), at the uptime of now.
void ioboard_test_start_stream(U32 mode);
// One pass of the stream on the calling thread: the reference rates and stream mode
// checks, then the next sentence (from what was fed, else from the port) handled.
void ioboard_test_stream_pass(void);
// The longest wait for a reply (1000 ms on the dash), and with it the pause that lets the
// stream gather before a read. 0: once the bytes fed are used up, a reply fails at once.
void ioboard_test_set_reply_timeout_ms(U32 milliseconds);
// One pass of the driver's thread on the calling thread, by the state: the bring-up
// (reset, versions, update, start of the application), the start of the stream, or one
// sentence of it.
void ioboard_test_thread_pass(void);
