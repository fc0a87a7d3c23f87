// The I/O board's firmware file as it lies in the application's folder: loaded, judged
// against the board's version, and written to a board whose bootloader does everything
// asked of it.
//
// Input: a mode byte, then the file.
//   bit 0   the file as given, any length; else laid out as an image of the right size:
//           the bytes from offset 0 on, the last five of the input (version, checksum,
//           length) at the version's offset, 0xFF between
//   bits 1-7 the application version the board reports (127 and above: none)
#include <cstring>
#include <cstdio>
#include <vector>

#include "fuzz_dash.h"
#include "ioboard_sentence.h"
#include "ioboard_drv.h"
#include "ioboard_fw.h"

namespace {

constexpr U32 FLASH_STEPS = 5;  // version, checksum and length words

// What a good board answers to the whole update of `image`: an acknowledgement for each
// erase and each byte programmed, then the sum of its flash over the image's length.
std::string _goodBoard(const std::vector<U8>& image)
{
    std::string replies;
    for (U32 a = IOBOARD_FLASH_START; a < IOBOARD_FLASH_TOP_SECTOR + IOBOARD_FLASH_SECTOR_SIZE; a += IOBOARD_FLASH_SECTOR_SIZE) {
        replies += Sentence("$e,0");
    }
    for (U32 a = IOBOARD_FLASH_START; a <= IOBOARD_FLASH_END; a++) {
        if (image[a - IOBOARD_FLASH_START] != 0xFF) replies += Sentence("$p,0");
    }
    const U32 length = (U32)image[IOBOARD_FIRMWARE_LENGTH_OFFSET] << 8 | image[IOBOARD_FIRMWARE_LENGTH_OFFSET + 1];
    U32 sum = 0;
    for (U32 i = 0; i < length; i++) {
        const U32 a = IOBOARD_FLASH_START + i;
        sum += a <= IOBOARD_FLASH_END ? image[i] : 0xFF;
    }
    char text[16];
    snprintf(text, sizeof(text), "$c,%04X", sum & 0xFFFF);
    replies += Sentence(text);
    return replies;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FuzzRoot();
    setenv("PRODUCT_ID", "0", 1);
    ioboard_test_set_reply_timeout_ms(0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput in(data, size);
    const uint8_t mode = in.Byte();
    std::string file = in.Rest();
    if (!(mode & 1)) {
        std::string image(IOBOARD_FIRMWARE_SIZE, '\xFF');
        const size_t tail = file.size() < FLASH_STEPS ? file.size() : FLASH_STEPS;
        memcpy(&image[IOBOARD_FIRMWARE_VERSION_OFFSET], file.data() + file.size() - tail, tail);
        file.resize(file.size() - tail);
        memcpy(image.data(), file.data(), file.size() < IOBOARD_FIRMWARE_SIZE ? file.size() : IOBOARD_FIRMWARE_SIZE);
        file = image;
    }
    FuzzWriteFile("app/bin/ioboard0.bin", file.data(), file.size());
    ioboard_test_reset();
    if (!ioboard_read_firmware()) return 0;

    U32 version = mode >> 1;
    if (version >= 127) version = IOBOARD_NO_APPLICATION;
    ioboard_firmware_action(IOBOARD_NO_APPLICATION);
    // The image as loaded, its checksum corrected, is what a good board ends up holding.
    std::vector<U8> image(file.begin(), file.end());
    const U16 sum = ioboard_firmware_checksum(image.data());
    image[IOBOARD_FIRMWARE_CHECKSUM_OFFSET] = (U8)(sum >> 8);
    image[IOBOARD_FIRMWARE_CHECKSUM_OFFSET + 1] = (U8)sum;
    const std::string replies = _goodBoard(image);
    ioboard_test_feed(reinterpret_cast<const U8*>(replies.data()), (U32)replies.size());
    ioboard_update_check(&version);
    return 0;
}
