#pragma once
// The optional I/O board on serial port 2: its analogue inputs, relay outputs and switch
// inputs. This is the application's side of it so far: the wanted output states, kept
// for the board, and no board open.
#include "dash_types.h"

enum DIG_OUT_CHANNEL_T : U32 {
    DIG_OUT_CHANNEL_1 = 1,
    DIG_OUT_CHANNEL_2 = 2,
    DIG_OUT_CHANNEL_3 = 3,
    DIG_OUT_CHANNEL_4 = 4,
    DIG_OUT_CHANNEL_5 = 5,
    DIG_OUT_CHANNEL_6 = 6,
    DIG_OUT_CHANNEL_7 = 7,
    DIG_OUT_CHANNEL_8 = 8,
    DIG_OUT_CHANNEL_MAX = 8,
};
constexpr U32 IOBOARD_NUMBER_RELAY_OUTPUTS = 8;

// Wants the output fully on (duty 255) or off (0). The result is whether a board is
// there to take it: 0 with no board open, or for a channel outside 1 to 8.
BOOL ioboard_set_relay_out_config(U32 channel, BOOL on);
// The wanted state of the output: 1 when its duty is not 0. 0 for a channel outside 1
// to 8, which leaves *on alone.
BOOL ioboard_get_relay_out_config(U32 channel, BOOL* on);
