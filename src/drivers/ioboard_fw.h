#pragma once
// The I/O board's firmware: the file in "/app/bin" for this product, and its update
// through the board's bootloader (erase, program byte by byte, verify by checksum).
// The update runs on the I/O board thread, in the bring-up, right after the reset.
#include "dash_types.h"

constexpr U32 IOBOARD_FIRMWARE_SIZE = 33792;
constexpr U32 IOBOARD_FIRMWARE_VERSION_OFFSET = 32251;
constexpr U32 IOBOARD_FIRMWARE_CHECKSUM_OFFSET = 32252;  // 16 bits, high byte first
constexpr U32 IOBOARD_FIRMWARE_LENGTH_OFFSET = 32254;    // 16 bits, high byte first
constexpr U32 IOBOARD_FLASH_START = 0x7C00;              // where file offset 0 goes
constexpr U32 IOBOARD_FLASH_END = 0xF9FF;
constexpr U32 IOBOARD_FLASH_SECTOR_SIZE = 0x300;
constexpr U32 IOBOARD_FLASH_TOP_SECTOR = 0xF700;
// The application version of a board whose bootloader finds no valid application.
constexpr U32 IOBOARD_NO_APPLICATION = 255;

// Loads the file into memory, correcting its checksum there if it is wrong. 0 and no
// image when the file is missing or not exactly the size.
BOOL ioboard_read_firmware(void);
// The sum of the image's bytes over the length it gives, modulo 65536.
U16 ioboard_firmware_checksum(const U8* image);

enum IOBOARD_FW_ACTION_T : U32 {
    IOBOARD_FW_START = 0,    // the board's application is started as it is
    IOBOARD_FW_UPDATE = 1,   // the file's application is written first
    IOBOARD_FW_MISSING = 2,  // the board has no application and there is no file
};
// What the bring-up does with a board whose bootloader reports this application version.
IOBOARD_FW_ACTION_T ioboard_firmware_action(U32 boardApplicationVersion);
// Acts on that decision. 1 when the application may be started, with the version it
// will have in *applicationVersion; 0 when the bring-up must start over.
BOOL ioboard_update_check(U32* applicationVersion);
// True from the start of the erase to the end of the attempt.
BOOL ioboard_is_upgrading(void);
