#include "keypad_drv.h"

#include <cstdio>

#include "gpio_drv.h"
#include "platform_utils.h"

namespace {

constexpr const char* KEYPAD_BACKLIGHT_ATTRIBUTE = "/sys/class/leds/keyled-pwm/brightness";

U32 m_keypadBacklightLevel = 0;

}  // namespace

void keypad_init(void)
{
    for (U32 line : KEYPAD_KEY_LINES) gpio_set(line, 0);
    if (m_keypadBacklightLevel != 255) {
        write_attribute(KEYPAD_BACKLIGHT_ATTRIBUTE, "255");
        m_keypadBacklightLevel = 255;
    }
}

U8 keypad_read(void)
{
    U8 code = 0;
    for (U32 i = 0; i < KEYPAD_MAX_KEYS; i++) {
        if (gpio_in(KEYPAD_KEY_LINES[i]) == 0) code |= (U8)(1u << i);
    }
    return code;
}

U32 keypad_get_backlight_level(void)
{
    return m_keypadBacklightLevel;
}

BOOL keypad_set_backlight_level(U32 level)
{
    level = level > 255 ? 255 : level;
    if (level == m_keypadBacklightLevel) return (BOOL)level;
    char text[12];
    snprintf(text, sizeof(text), "%u", level);
    const BOOL result = write_attribute(KEYPAD_BACKLIGHT_ATTRIBUTE, text);
    m_keypadBacklightLevel = level;
    return result;
}
