#pragma once
// The simulated I/O board's firmware: a bootloader that erases, programs and checks its
// flash, and an application that streams its inputs and takes its output and input
// configuration, both speaking the link's sentences ("$", letter, fields, "*", checksum,
// CR). No I/O of its own: bytes come in, sentences go out, the flash is memory that the
// caller keeps (a mapped file, so that what is written survives).
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

constexpr size_t IOBOARD_CHANNELS = 14;
constexpr size_t IOBOARD_OUTPUTS = 8;
constexpr size_t IOBOARD_SWITCHES = 4;  // switches 1 to 3, then the extra one
constexpr uint8_t IOBOARD_BOOTLOADER_VERSION = 2;
constexpr uint8_t IOBOARD_HARDWARE_VERSION = 0x10;

// What the outside world applies to the board's connectors.
struct IOBOARD_INPUTS_T {
    float volts[IOBOARD_CHANNELS];  // seen by a channel measuring voltage
    float ohms[IOBOARD_CHANNELS];   // seen by a channel measuring resistance
    bool closed[IOBOARD_SWITCHES];
    uint16_t closures[IOBOARD_SWITCHES];  // counted by the board, as its switch counters
    float tachHz;
    float supply;  // volts at the connector
};

struct IOBOARD_T {
    uint8_t* flash;  // IOBOARD_FLASH_SIZE bytes
    bool application;  // the application runs; else the bootloader
    int streamMode;    // 0 silent, 1 or 2
    bool supplyBehindDiode;  // the small model's board measures its supply behind a diode

    // The configuration the dash sent, as the board reports it back.
    uint16_t resistanceMask;  // bit n-1: channel n measures resistance
    uint16_t gainMask;        // bit n-1: channel n in high gain
    uint8_t duty[IOBOARD_OUTPUTS];
    uint8_t pwmFrequency;

    IOBOARD_INPUTS_T inputs;

    // The sentence being collected: 0 while outside one.
    char sentence[1024];
    size_t length;

    // Since the last reset, for the status.
    uint32_t sectorsErased;
    uint32_t bytesProgrammed;
    uint16_t sequence;  // counts stream cycles, sent as a raw field
    // Since the start.
    uint32_t received;  // valid sentences
    uint32_t dropped;   // bad checksums, overruns, broken sentences
    uint32_t unknown;   // valid but not understood in the present mode
};

// A board at power-up on this flash: its application runs if valid, silent until told to
// stream; the inputs at rest (supply 13.8 V, switches open, no tach signal).
void ioboard_init(IOBOARD_T* b, uint8_t* flash, bool supplyBehindDiode);

// Takes bytes from the link and appends the replies, as whole sentences with their CR.
void ioboard_receive(IOBOARD_T* b, const uint8_t* data, size_t n, std::vector<std::string>* replies);

// One cycle of the application's stream: every sentence of the stream mode, or none
// while the bootloader runs or the stream is off.
void ioboard_stream(IOBOARD_T* b, std::vector<std::string>* out);

// The application version the board reports (IOBOARD_NO_APPLICATION without a valid one).
uint8_t ioboard_application_version(const IOBOARD_T* b);

// Sets an input by name: an1-an14 (volts), res1-res14 (ohms), sw1-sw3 and swx (1 closed,
// 0 open), tach (Hz), supply (volts). "" or why not.
std::string ioboard_set_input(IOBOARD_T* b, const char* name, const char* value);

// The board as JSON: versions, mode, inputs, the dash's configuration and what the
// outputs read back.
std::string ioboard_status_json(const IOBOARD_T* b);

// A sentence with its checksum and CR, from what goes between "$" and "*" (the "$" included).
std::string ioboard_sentence(const std::string& body);
