#include "ioboard_fw.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "dash_root.h"
#include "ioboard_drv.h"
#include "platform_sysinfo.h"
#include "uart_drv.h"

namespace {

constexpr U32 ACK_LENGTH = 7;        // "$e,0*XX": the letter, then 0 for success
constexpr U32 CHECKSUM_LENGTH = 10;  // "$c,HHHH*XX"
constexpr U8 ERASED = 0xFF;

// The image in memory, null without one; used by the I/O board thread only once it runs.
U8* m_pIOBoardFirmware = nullptr;
// Read by the screen without the driver's lock.
std::atomic<U32> m_upgrading{0};

}  // namespace

static U32 _word(const U8* image, U32 offset)
{
    return ((U32)image[offset] << 8) | image[offset + 1];
}

U16 ioboard_firmware_checksum(const U8* image)
{
    U32 length = _word(image, IOBOARD_FIRMWARE_LENGTH_OFFSET);
    // The length is the file's word: it must not take the sum past the image.
    if (length > IOBOARD_FIRMWARE_SIZE) length = IOBOARD_FIRMWARE_SIZE;
    U32 sum = 0;
    for (U32 i = 0; i < length; i++) sum += image[i];
    return (U16)sum;
}

BOOL ioboard_read_firmware(void)
{
    free(m_pIOBoardFirmware);
    m_pIOBoardFirmware = nullptr;
    U8* image = static_cast<U8*>(malloc(IOBOARD_FIRMWARE_SIZE));
    if (!image) {
        puts("I/O Board: Failed to allocate memory for firmware!");
        return 0;
    }
    char path[64];
    snprintf(path, sizeof(path), "%s%d%s", "/app/bin/ioboard", (int)GetPlatformProductId(), ".bin");
    FILE* file = root_fopen_regular(path, "rb");
    if (!file) {
        printf("I/O Board: Failed to open firmware file %s!\n", path);
        free(image);
        return 0;
    }
    // A file of another size is not this board's firmware: it is not flashed.
    U8 extra;
    const BOOL whole = fread(image, 1, IOBOARD_FIRMWARE_SIZE, file) == IOBOARD_FIRMWARE_SIZE &&
                       fread(&extra, 1, 1, file) == 0;
    fclose(file);
    if (!whole) {
        free(image);
        return 0;
    }
    const U16 sum = ioboard_firmware_checksum(image);
    if (_word(image, IOBOARD_FIRMWARE_CHECKSUM_OFFSET) != sum) {
        printf("I/O Board: Checksums in firmware file %s corrected\n", path);
        image[IOBOARD_FIRMWARE_CHECKSUM_OFFSET] = (U8)(sum >> 8);
        image[IOBOARD_FIRMWARE_CHECKSUM_OFFSET + 1] = (U8)sum;
    }
    m_pIOBoardFirmware = image;
    return 1;
}

IOBOARD_FW_ACTION_T ioboard_firmware_action(U32 boardApplicationVersion)
{
    if (!m_pIOBoardFirmware) return boardApplicationVersion == IOBOARD_NO_APPLICATION ? IOBOARD_FW_MISSING : IOBOARD_FW_START;
    if (boardApplicationVersion == IOBOARD_NO_APPLICATION) return IOBOARD_FW_UPDATE;
    // Older and newer alike: the file's version wins.
    return boardApplicationVersion == m_pIOBoardFirmware[IOBOARD_FIRMWARE_VERSION_OFFSET] ? IOBOARD_FW_START
                                                                                         : IOBOARD_FW_UPDATE;
}

// The bootloader's reply to an erase or program command: its letter, then 0.
static BOOL _acknowledged(char letter)
{
    const char* reply = nullptr;
    U32 length = 0;
    return ioboard_wait_for_reply(&reply, &length) && length == ACK_LENGTH && reply[1] == letter && reply[3] == '0';
}

static BOOL _erase(void)
{
    for (U32 address = IOBOARD_FLASH_TOP_SECTOR + IOBOARD_FLASH_SECTOR_SIZE; address > IOBOARD_FLASH_START;) {
        address -= IOBOARD_FLASH_SECTOR_SIZE;
        // Anything still queued (a late stream sentence) must not pass for the reply.
        uart_flush(IOBOARD_UART_PORT, 1, 0);
        ioboard_send_command("$e,%04X", address);
        if (!_acknowledged('e')) {
            puts("I/O Board: Failed to erase flash sector!");
            puts("I/O Board: Failed to erase flash!");
            return 0;
        }
    }
    return 1;
}

static BOOL _program(void)
{
    for (U32 address = IOBOARD_FLASH_START; address <= IOBOARD_FLASH_END; address++) {
        const U8 value = m_pIOBoardFirmware[address - IOBOARD_FLASH_START];
        if (value == ERASED) continue;  // the erase left it so
        uart_flush(IOBOARD_UART_PORT, 1, 0);
        ioboard_send_command("$p,%04X,%02X", address, value);
        if (!_acknowledged('p')) {
            puts("I/O Board: Failed to program flash byte!");
            puts("I/O Board: Failed to program flash!");
            return 0;
        }
    }
    return 1;
}

static BOOL _verify(void)
{
    uart_flush(IOBOARD_UART_PORT, 1, 0);
    ioboard_send_command("$c,%04X", _word(m_pIOBoardFirmware, IOBOARD_FIRMWARE_LENGTH_OFFSET));
    const char* reply = nullptr;
    U32 length = 0;
    BOOL good = ioboard_wait_for_reply(&reply, &length) && length == CHECKSUM_LENGTH && reply[1] == 'c';
    // The value as far as its digits go: a broken reply is compared all the same.
    U32 value = 0;
    if (good) good = ioboard_parse_hex(reply + 3, 4, &value);
    if (!good) puts("I/O Board: Failed to calculate flash checksum!");
    if (value != _word(m_pIOBoardFirmware, IOBOARD_FIRMWARE_CHECKSUM_OFFSET)) {
        puts("I/O Board: Failed to verify flash checksum!");
        return 0;
    }
    return good;
}

BOOL ioboard_update_check(U32* applicationVersion)
{
    switch (ioboard_firmware_action(*applicationVersion)) {
    case IOBOARD_FW_START:
        return 1;
    case IOBOARD_FW_MISSING:
        puts("I/O Board: Application cannot be flashed as no firmware file present!");
        return 0;
    case IOBOARD_FW_UPDATE:
        break;
    }
    const U32 version = m_pIOBoardFirmware[IOBOARD_FIRMWARE_VERSION_OFFSET];
    printf("I/O Board: Flashing new Application v%d...\n", (int)version);
    m_upgrading.store(1);
    const BOOL ok = _erase() && _program() && _verify();
    printf("I/O Board: %s flashing new Application v%d\n", ok ? "Succeeded" : "Failed", (int)version);
    if (ok) *applicationVersion = version;
    m_upgrading.store(0);
    return ok;
}

BOOL ioboard_is_upgrading(void)
{
    return m_upgrading.load();
}
