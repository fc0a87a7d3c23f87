#include "ioboard_image.h"

#include <cstring>

uint16_t ioboard_image_sum(const uint8_t* data, size_t length)
{
    uint16_t sum = 0;
    for (size_t i = 0; i < length; i++) sum = (uint16_t)(sum + data[i]);
    return sum;
}

void ioboard_image_make(uint8_t* file, uint8_t version, size_t programBytes, uint32_t seed)
{
    memset(file, 0xFF, IOBOARD_FIRMWARE_SIZE);
    if (programBytes > IOBOARD_FIRMWARE_VERSION_OFFSET) programBytes = IOBOARD_FIRMWARE_VERSION_OFFSET;
    uint32_t x = seed * 2654435761u + 1;
    for (size_t i = 0; i < programBytes; i++) {
        x = x * 1664525u + 1013904223u;
        file[i] = (uint8_t)(x >> 24);
    }
    file[IOBOARD_FIRMWARE_VERSION_OFFSET] = version;
    const uint16_t length = IOBOARD_FIRMWARE_VERSION_OFFSET + 1;
    const uint16_t sum = ioboard_image_sum(file, length);
    file[IOBOARD_FIRMWARE_CHECKSUM_OFFSET] = (uint8_t)(sum >> 8);
    file[IOBOARD_FIRMWARE_CHECKSUM_OFFSET + 1] = (uint8_t)sum;
    file[IOBOARD_FIRMWARE_LENGTH_OFFSET] = (uint8_t)(length >> 8);
    file[IOBOARD_FIRMWARE_LENGTH_OFFSET + 1] = (uint8_t)length;
}

uint8_t ioboard_flash_application(const uint8_t* flash)
{
    const uint8_t version = flash[IOBOARD_FIRMWARE_VERSION_OFFSET];
    const size_t length = (size_t)flash[IOBOARD_FIRMWARE_LENGTH_OFFSET] << 8 | flash[IOBOARD_FIRMWARE_LENGTH_OFFSET + 1];
    const uint16_t sum = (uint16_t)(flash[IOBOARD_FIRMWARE_CHECKSUM_OFFSET] << 8 | flash[IOBOARD_FIRMWARE_CHECKSUM_OFFSET + 1]);
    if (version == IOBOARD_NO_APPLICATION || length == 0 || length > IOBOARD_FLASH_SIZE) return IOBOARD_NO_APPLICATION;
    return ioboard_image_sum(flash, length) == sum ? version : IOBOARD_NO_APPLICATION;
}

std::string ioboard_image_path(const std::string& root, uint32_t productId)
{
    return root + "/app/bin/ioboard" + std::to_string(productId) + ".bin";
}
