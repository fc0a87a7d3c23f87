#include "fuzz_dash.h"

#include <cstdlib>
#include <cstring>
#include <ftw.h>
#include <sys/stat.h>
#include <vector>

#include "Velnor_Dorvik_V6c.h"
#include "buttonbar.h"
#include "can_ports.h"
#include "can_rx.h"
#include "can_signals.h"
#include "crc.h"
#include "dirtyrect.h"
#include "eeprom_drv.h"
#include "elements.h"
#include "eventhandler.h"
#include "filefolder.h"
#include "freetype_api.h"
#include "gpio_drv.h"
#include "hw_user.h"
#include "iouser.h"
#include "keypad_drv.h"
#include "large_gauges.h"
#include "layer_merger.h"
#include "lcd_blan.h"
#include "lcd_buffer.h"
#include "main.h"
#include "menu.h"
#include "mmi.h"
#include "platform_sysinfo.h"
#include "quad_gauges.h"
#include "quad_keys.h"
#include "sdk_init.h"
#include "timer_drv.h"
#include "ttfonts.h"

namespace {

uint32_t m_nowMs = 0;
uint32_t m_ticks = 0;
uint32_t m_passes = 0;
uint32_t m_framesSent = 0;
uint8_t m_keys = 0;
std::vector<U16> m_page;

// Frames the dash sends go nowhere: no bus listens in a harness.
S32 _sent(CAN_PORTS_T, CAN_MSG_T*)
{
    m_framesSent++;
    return 0;
}

void _setClock(void)
{
    timer_test_set_clock((int64_t)m_nowMs * 1000000);
}

}  // namespace

void FuzzCanFrame(uint32_t id, uint8_t length, const uint8_t* bytes)
{
    CAN_MSG_T m = {};
    m.id = id;
    m.msg_length = length;
    memcpy(m.msg_content, bytes, 8);
    rxTable_285279__0022(CAN_PORT1, &m);
}

// A short quarantine: a run frees and allocates a lot, and with the default one almost
// every allocation would be fresh memory, paid for in page faults.
extern "C" const char* __asan_default_options(void)
{
    return "quarantine_size_mb=16";
}

// Writes a file under `root`, making its folders.
static void _write(const std::string& root, const std::string& rel, const void* data, size_t size)
{
    for (size_t i = 0; (i = rel.find('/', i)) != std::string::npos; i++) {
        mkdir((root + "/" + rel.substr(0, i)).c_str(), 0755);
    }
    FILE* f = fopen((root + "/" + rel).c_str(), "wb");
    if (!f) return;
    if (size) fwrite(data, 1, size, f);
    fclose(f);
}

const std::string& FuzzRoot(void)
{
    // In memory where the machine has it: the dash syncs what it writes, and a disk would
    // make every sync a wait.
    static const std::string root = [] {
        char path[] = "/dev/shm/motordash-fuzz-XXXXXX";
        char fallback[] = "/tmp/motordash-fuzz-XXXXXX";
        const char* made = mkdtemp(path);
        if (!made) made = mkdtemp(fallback);
        if (!made) abort();
        const std::string r = made;
        setenv("DASH_ROOT", made, 1);
        for (U32 line : KEYPAD_KEY_LINES) {
            const std::string gpio = "sys/class/gpio/gpio" + std::to_string(line);
            _write(r, gpio + "/value", "1\n", 2);
            _write(r, gpio + "/direction", "in\n", 3);
        }
        for (const char* folder : {"app/bin", "app/data/config", "app/data/log", "app/event", "media", "tmp"}) {
            _write(r, std::string(folder) + "/.keep", "", 0);
        }
        for (const char* led : {"lcdled-pwm", "keyled-pwm", "buzzer-pwm"}) {
            _write(r, std::string("sys/class/leds/") + led + "/brightness", "0\n", 2);
        }
        // Removes the root at exit, whichever way libFuzzer leaves.
        atexit([] {
            nftw(getenv("DASH_ROOT"), [](const char* p, const struct stat*, int, struct FTW*) { return remove(p); },
                 16, FTW_DEPTH | FTW_PHYS);
        });
        return r;
    }();
    return root;
}

void FuzzWriteFile(const std::string& rel, const void* data, size_t size)
{
    _write(FuzzRoot(), rel, data, size);
}

void FuzzRemoveTree(const std::string& rel)
{
    nftw((FuzzRoot() + "/" + rel).c_str(), [](const char* p, const struct stat*, int, struct FTW*) { return remove(p); },
         16, FTW_DEPTH | FTW_PHYS);
}

size_t FuzzInput::Take(void* out, size_t n)
{
    const size_t k = n < Left() ? n : Left();
    if (k) memcpy(out, data_ + at_, k);
    at_ += k;
    return k;
}

std::string FuzzInput::Rest()
{
    std::string s(reinterpret_cast<const char*>(data_ + at_), Left());
    at_ = size_;
    return s;
}

void FuzzDashStop(void)
{
    if (Velnor_Dorvik_V6c_B.Merge) {
        FileClose(Velnor_Dorvik_V6c_B.Merge);
        Velnor_Dorvik_V6c_B.Merge = nullptr;
    }
}

// The model the dash runs on, by the product id the system information reads.
static void _product(bool large)
{
    static int current = -1;
    if (current == (int)large) return;
    current = large;
    setenv("PRODUCT_ID", large ? "256" : "0", 1);
    PlatformSysinfoTestReset();
}

void FuzzDashStart(uint32_t startMs, const EEVariables_T* settings, bool large)
{
    FuzzRoot();
    FuzzDashStop();
    m_nowMs = startMs;
    m_ticks = 0;
    m_passes = 0;
    m_framesSent = 0;
    _setClock();
    FuzzDashKeys(0);

    // What ZelvoMainInit and ZelvoMain do before QuorinInit, each module back at its start.
    CANSetXcpHandlers(nullptr, nullptr);
    CANSignalsTestEmptyMailboxes();
    CANTransmitMessage = _sent;
    timer_init(PLATFORM_TIMERS);
    MMIInit(MMI_SCREENS, MMI_STACK, MMI_HOOKS);
    EventHandlerInit();
    _product(large);
    PLATFORM_INFO_T info;
    GetPlatformInfo(&info);
    gScreenWidth = info.width;
    gScreenHeight = info.height;
    DirtyRectTestReset();
    ElementTestReset();
    LayerMergerTestReset();
    // FreeType once: loading the fonts for every input would cost more than the run.
    static const S32 fonts = FTFInit(gpaFreetypeFontData, FONT_INDEX_END);
    (void)fonts;
    vLcdBlankerEx(BLACK, ALPHA_COLOR);
    ButtonBarInit();
    MenuTestReset();
    QuadKeysTestReset();
    QuadGaugeTestReset();
    LargeGaugeTestReset();
    IOUserTestReset();
    RAMVariables = RAMVariables_T{};
    RAMVariables.START_SCREEN = 255;
    if (settings) {
        EEVariables_T stored = *settings;
        stored.uiCRC = uiCrcCalculation(reinterpret_cast<const U8*>(&stored) + 4, sizeof(stored) - 4);
        eeprom_write(0, &stored, sizeof(stored));
    }
    QuorinInit();
}

bool FuzzDashTick(bool mainLoop)
{
    if (m_ticks >= FUZZ_DASH_MAX_TICKS) return false;
    m_nowMs += TIMER_TICK_MS;
    _setClock();
    timer_process();
    // The main loop runs at the panel's frame rate, slower than the tick.
    if (m_ticks++ % 2 != 0 || !mainLoop || m_passes >= FUZZ_DASH_MAX_PASSES) return true;
    m_passes++;
    CANProcessRx();
    MMIProcess();
    m_page.resize((size_t)gScreenWidth * gScreenHeight);
    LayerMergerTestCompose(m_page.data());
    EventHandlerProcess();
    return true;
}

void FuzzDashKeys(uint8_t mask)
{
    static bool written = false;
    for (U32 i = 0; i < KEYPAD_MAX_KEYS; i++) {
        const U8 bit = (U8)(1u << i);
        if (written && (m_keys & bit) == (mask & bit)) continue;
        gpio_out(KEYPAD_KEY_LINES[i], (mask & bit) ? 0 : 1);
    }
    written = true;
    m_keys = mask;
}

uint32_t FuzzDashFramesSent(void)
{
    return m_framesSent;
}
