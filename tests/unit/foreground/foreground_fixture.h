#pragma once
// The foreground task on the real mailboxes, with a clock of the test's own: frames go in
// as the driver hands them over, and each pass runs at a chosen uptime.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Timer_7Je7r.h"
#include "Velnor_Dorvik_V6c.h"
#include "can_fixture.h"
#include "can_rx.h"
#include "can_signals.h"
#include "data.h"

class Foreground : public ::testing::Test {
protected:
    void SetUp() override
    {
        // Every mailbox empty and never received, the records as at power-up.
        for (const CAN_FRAME_T& f : CAN_FRAMES) {
            if (f.dir != CAN_RX) continue;
            if (f.port == CAN_PORT2) FramePort2(f.id, {});
            else Frame(f.id, {});
        }
        CANSetNeverReceived(CAN_PORT1);
        CANSetNeverReceived(CAN_PORT2);
        memset(&Velnor_Dorvik_V6c_B, 0, sizeof(Velnor_Dorvik_V6c_B));
        memset(&Velnor_Dorvik_V6c_DWork, 0, sizeof(Velnor_Dorvik_V6c_DWork));
        memset(&CANInputs, 0, sizeof(CANInputs));
        RAMVariables = RAMVariables_T{};
        RAMVariables.START_SCREEN = 255;
        EEVariables_RAMShadow = EEVariables_DEFAULT;
        Timer_7Je7rInit();
        now_ = 1000;
    }

    // One pass at the current uptime; the next comes a tick later.
    void Pass()
    {
        Timer_7Je7rTestPass(now_);
        now_ += 10;
    }
    // One pass late enough for every text to be formatted again.
    void Refresh()
    {
        now_ += 260;
        Pass();
    }
    void Units(uint8_T pressure, uint8_T speed, uint8_T temperature, uint8_T airFuel)
    {
        EEVariables_RAMShadow.PRESSURE_UNITS = pressure;
        EEVariables_RAMShadow.SPEED_UNITS = speed;
        EEVariables_RAMShadow.TEMP_UNITS = temperature;
        EEVariables_RAMShadow.AF_UNITS = airFuel;
    }

    uint32_T now_ = 1000;
};

inline std::string Text(const S_String* text)
{
    return text ? std::string(text->string) : std::string("<null>");
}
