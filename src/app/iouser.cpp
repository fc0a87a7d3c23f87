#include "iouser.h"

BOOL bSetIODigOutput(DIG_OUT_CHANNEL_T channel, BOOL isHigh)
{
    return ioboard_set_relay_out_config(channel, isHigh);
}
