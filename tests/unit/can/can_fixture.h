#pragma once
// Frames into the dash's receive tables as the driver hands them over, and foreground
// passes that decode them.
#include <array>
#include <cstring>

#include "Timer_7Je7r.h"
#include "Velnor_Dorvik_V6c.h"
#include "can_rx.h"
#include "can_signals.h"

typedef std::array<uint8_T, 8> BYTES_T;

inline CAN_MSG_T Message(uint32_T id, const BYTES_T& data, uint8_T length = 8, uint8_T extended = 0)
{
    CAN_MSG_T m = {};
    m.id = id;
    m.extend = extended;
    m.msg_length = length;
    memcpy(m.msg_content, data.data(), 8);
    return m;
}

// A frame on port 1.
inline void Frame(uint32_T id, const BYTES_T& data, uint8_T length = 8, uint8_T extended = 0)
{
    CAN_MSG_T m = Message(id, data, length, extended);
    rxTable_285279__0022(CAN_PORT1, &m);
}

inline void FramePort2(uint32_T id, const BYTES_T& data)
{
    CAN_MSG_T m = Message(id, data);
    rxTable_285280__0051(CAN_PORT2, &m);
}

// One foreground pass.
inline void Pass()
{
    Timer_7Je7r();
}

inline void FrameAndPass(uint32_T id, const BYTES_T& data)
{
    Frame(id, data);
    Pass();
}

constexpr BYTES_T ALL_ONES = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
