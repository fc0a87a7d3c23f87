#pragma once
// The I/O board's firmware: the file the dash carries in app/bin and the board's flash
// area it is written to. Shared by the simulated board (its factory flash) and
// `motordash-sim init` (the newer file that a first start installs).
#include <cstddef>
#include <cstdint>
#include <string>

#include "ioboard_fw.h"

// The file and the flash area are the dash's own (ioboard_fw.h); the board keeps the
// area that file offsets 0 to 32255 are written to, in 42 sectors.
constexpr uint32_t IOBOARD_SECTORS = 42;
constexpr uint32_t IOBOARD_FLASH_SIZE = IOBOARD_FLASH_SECTOR_SIZE * IOBOARD_SECTORS;
static_assert(IOBOARD_FLASH_SIZE == IOBOARD_FIRMWARE_LENGTH_OFFSET + 2);
static_assert(IOBOARD_FLASH_START + IOBOARD_FLASH_SIZE - 1 == IOBOARD_FLASH_END);

// The 16-bit sum of `length` bytes.
uint16_t ioboard_image_sum(const uint8_t* data, size_t length);

// A plausible firmware file of `version` into file[IOBOARD_FIRMWARE_SIZE]: `programBytes`
// bytes of code (different for each seed), erased flash (0xFF) behind them, and a
// checksum over the code and the version byte.
void ioboard_image_make(uint8_t* file, uint8_t version, size_t programBytes, uint32_t seed);

// The version of a valid application in a flash area (IOBOARD_FLASH_SIZE bytes), or
// IOBOARD_NO_APPLICATION when its version byte is erased or its checksum is wrong, as
// after an update that was cut short.
uint8_t ioboard_flash_application(const uint8_t* flash);

// The firmware file's name in a device root for a product id: app/bin/ioboardN.bin.
std::string ioboard_image_path(const std::string& root, uint32_t productId);

// The version and the code size of the file that `motordash-sim init` puts in a root,
// newer than the board's factory flash. The code size is that of a typical image.
constexpr uint8_t IOBOARD_INIT_VERSION = 4;
constexpr uint8_t IOBOARD_FACTORY_VERSION = 3;
constexpr size_t IOBOARD_TYPICAL_CODE_BYTES = 12288;
