#include "devswitch.h"

#include <cstdlib>
#include <cstring>

int devswitch_calibrate_touch(void)
{
    const char* value = getenv("MOTORDASH_CALIBRATE_TOUCH");
    return value && *value && strcmp(value, "0") != 0;
}
