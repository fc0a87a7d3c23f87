#include "gpio_drv.h"

#include <cstdio>
#include <cstdlib>

#include "platform_utils.h"

namespace {

struct GPIO_PATH_T {
    char text[64];
};

GPIO_PATH_T _path(U32 pin, const char* file)
{
    GPIO_PATH_T p;
    snprintf(p.text, sizeof(p.text), "/sys/class/gpio/gpio%u/%s", pin, file);
    return p;
}

}  // namespace

void gpio_init(void)
{
}

BOOL gpio_set(U32 pin, U32 direction)
{
    const GPIO_PATH_T dir = _path(pin, "direction");
    if (!file_exists(dir.text)) {
        char number[12];
        snprintf(number, sizeof(number), "%u", pin);
        write_attribute("/sys/class/gpio/export", number);
    }
    return write_attribute(dir.text, direction == 1 ? "out" : "in");
}

U32 gpio_in(U32 pin)
{
    char value[255];
    if (!read_attribute(_path(pin, "value").text, value, sizeof(value))) return 0;
    return strtol(value, nullptr, 10) != 0;
}

BOOL gpio_out(U32 pin, U32 value)
{
    return write_attribute(_path(pin, "value").text, value ? "1" : "0");
}
