// The calibration link: one command from its frame on the receive table to its response
// handed to the CAN port, a write of six bytes into the settings, and the foreground
// task's XCP share with no DAQ running.
#include <benchmark/benchmark.h>

#include <cstring>

#include "can_ports.h"
#include "can_rx.h"
#include "data.h"
#include "xcp_core.h"
#include "xcp_target.h"

namespace {

S32 _sink(CAN_PORTS_T, CAN_MSG_T* message)
{
    benchmark::DoNotOptimize(message->msg_content[0]);
    return 0;
}

// A connected session with its responses going nowhere.
void _connected(void)
{
    CANTransmitMessage = _sink;
    Xcp_Initialize();
    CANSetXcpHandlers(XcpCan_RxCallback, Xcp_CmdProcessor);
    CAN_MSG_T connect = {};
    connect.id = 0x200;
    connect.msg_length = 2;
    connect.msg_content[0] = 0xFF;
    rxTable_285279__0022(CAN_PORT1, &connect);
}

void _done(void)
{
    CANSetXcpHandlers(nullptr, nullptr);
    CANTransmitMessage = can_transmit_message;
}

// Frame in, handler, response out: GET_STATUS, and SHORT_UPLOADs that look up a row
// near the start and near the end of the address map.
void BM_XcpCommand(benchmark::State& state)
{
    _connected();
    CAN_MSG_T command = {};
    command.id = 0x200;
    const uint32_t address = (uint32_t)state.range(0);
    if (address == 0) {
        command.msg_length = 1;
        command.msg_content[0] = 0xFD;
    } else {
        const uint8_t shortUpload[8] = {0xF4, 4, 0, 0, (uint8_t)address, (uint8_t)(address >> 8), 0, 0};
        command.msg_length = 8;
        memcpy(command.msg_content, shortUpload, 8);
    }
    for (auto _ : state) rxTable_285279__0022(CAN_PORT1, &command);
    state.SetItemsProcessed(state.iterations());
    _done();
}
BENCHMARK(BM_XcpCommand)->Arg(0)->Arg(124)->Arg(537)->Arg(971);

// DOWNLOAD of six bytes at 593, the three current sensor settings: frame in, the write
// through the address map, the response out. The MTA is put back for each command, as a
// SET_MTA would.
void BM_XcpDownload6(benchmark::State& state)
{
    _connected();
    const EEVariables_T kept = EEVariables_RAMShadow;
    Xcp_Sessions[0].ctResourceProtection = 0;
    CAN_MSG_T command = {};
    command.id = 0x200;
    command.msg_length = 8;
    const uint8_t download[8] = {0xF0, 6, 1, 0, 2, 0, 3, 0};
    memcpy(command.msg_content, download, 8);
    for (auto _ : state) {
        Xcp_Sessions[0].mta = 593;
        rxTable_285279__0022(CAN_PORT1, &command);
    }
    state.SetItemsProcessed(state.iterations());
    if (EEVariables_RAMShadow.CurrentSensorAmpLow != 3) state.SkipWithError("the write did not land");
    EEVariables_RAMShadow = kept;
    _done();
}
BENCHMARK(BM_XcpDownload6);

// One Timed_Trigger_XCP with no list running and no command waiting.
void BM_TimedTriggerXcpIdle(benchmark::State& state)
{
    _connected();
    for (auto _ : state) Timed_Trigger_XCP();
    _done();
}
BENCHMARK(BM_TimedTriggerXcpIdle);

}  // namespace
