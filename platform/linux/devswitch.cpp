#include "devswitch.h"

int devswitch_calibrate_touch(void)
{
    return 0;
}
