// The calibration link: one command from its frame on the receive table to its response
// handed to the CAN port, a write of six bytes into the settings, and the foreground
// task's XCP share with no DAQ running and with all three lists full.
//
// Instructions per pass of the full lists: valgrind --tool=callgrind
//   --toggle-collect='Timed_Trigger_XCP*' bin/motordash-bench --benchmark_filter=FullDaq
//   --benchmark_min_time=2000x, then divide the Ir total by the passes run.
#include <benchmark/benchmark.h>

#include <cstring>

#include "can_ports.h"
#include "can_rx.h"
#include "data.h"
#include "xcp_core.h"
#include "timer_drv.h"
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

void _command(std::initializer_list<uint8_t> bytes)
{
    CAN_MSG_T command = {};
    command.id = 0x200;
    command.msg_length = (uint8_t)bytes.size();
    memcpy(command.msg_content, bytes.begin(), bytes.size());
    rxTable_285279__0022(CAN_PORT1, &command);
}

// One Timed_Trigger_XCP in which all three events fire, with every list full: 24 ODTs of
// seven one-byte entries spread over the RAM variables, list 0 with timestamps. The
// clock moves 100 ms each pass.
void BM_TimedTriggerXcpFullDaq(benchmark::State& state)
{
    _connected();
    Xcp_Sessions[0].ctResourceProtection = 0;
    _command({0xD5, 0, 3, 0});
    for (uint8_t list = 0; list < 3; list++) _command({0xD4, 0, list, 0, 8});
    for (uint8_t list = 0; list < 3; list++)
        for (uint8_t odt = 0; odt < 8; odt++) _command({0xD3, 0, list, 0, odt, 7});
    uint32_t addr = 300;
    for (uint8_t list = 0; list < 3; list++) {
        for (uint8_t odt = 0; odt < 8; odt++) {
            _command({0xE2, 0, list, 0, odt, 0});
            for (int e = 0; e < 7; e++, addr++) _command({0xE1, 0xFF, 1, 0, (uint8_t)addr, (uint8_t)(addr >> 8), 0, 0});
        }
        _command({0xE0, list == 0 ? (uint8_t)0x10 : (uint8_t)0, list, 0, list, 0, 1, 0});
        _command({0xDE, 2, list, 0});
    }
    _command({0xDD, 1});
    int64_t clockMs = 1000;
    CANTransmitMessage = [](CAN_PORTS_T, CAN_MSG_T* message) -> S32 {
        benchmark::DoNotOptimize(message->msg_content[0]);
        return 0;
    };
    for (auto _ : state) {
        state.PauseTiming();
        clockMs += 100;
        timer_test_set_clock(clockMs * 1000000);
        state.ResumeTiming();
        Timed_Trigger_XCP();
    }
    timer_test_set_clock(-1);
    // The setup has to have gone through, or the figure means nothing.
    for (U32 list = 0; list < 3; list++)
        if (!(Xcp0_DaqStates[list].daqListMode & XCP_DAQLISTMODE_RUNNING)) state.SkipWithError("a list is not running");
    if (Xcp0_DaqDynConfigs[2].odtEntryNums[7] != 7) state.SkipWithError("the lists were not built");
    state.SetItemsProcessed(state.iterations() * 24);
    _command({0xFE});
    _done();
}
BENCHMARK(BM_TimedTriggerXcpFullDaq);

}  // namespace
