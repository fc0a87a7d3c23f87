// The USB stick's event files, as the system scripts write them and signal them: the
// stick's folder name in media/usbinfo.txt, the scripts' answer in app/event/app_command
// with SIGUSR1, against the dash's state of the stick, the screens that ask for it and the
// logger that writes to it while the engine controller asks for a log.
//
// Input: steps, each a byte (its value modulo 11) and what it needs:
//   0  usbinfo.txt written: a length byte, then its content
//   1  app_command written: a length (two bytes, up to 1100), then its content
//   2  the stick mounted at media/disk_sda1       3  the stick pulled (its folder goes)
//   4  SIGUSR1                                    5  an event of the id in the next byte
//   6  a query, chosen by the next byte           7  an eject, by the logger or the tool
//   8  the engine controller's log request, on or off by the next byte
//   9  ticks: the next byte modulo 32, plus 1     10 the scripts take script_command
#include <csignal>
#include <cstring>

#include "can_rx.h"
#include "event_drv.h"
#include "eventhandler.h"
#include "fuzz_dash.h"

namespace {

constexpr const char* STICK = "media/disk_sda1";

void _file(const char* rel, FuzzInput* in, size_t length)
{
    std::string content(length, '\0');
    content.resize(in->Take(content.data(), length));
    FuzzWriteFile(rel, content.data(), content.size());
}

// The engine controller's frame 0x109 with the log request (D0 bit 7) on or off.
void _logRequest(bool on)
{
    const uint8_t data[8] = {on ? (uint8_t)0x80 : (uint8_t)0x00};
    FuzzCanFrame(0x109, 8, data);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FuzzRoot();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput in(data, size);
    FuzzDashStop();
    FuzzRemoveTree("media");
    FuzzRemoveTree("app/event");
    FuzzWriteFile("media/.keep", "", 0);
    FuzzWriteFile("app/event/.keep", "", 0);
    FuzzDashStart(5000);
    // No stick and no event waiting, as at power-up.
    EventHandlerIsUSBStickRemoved();
    EventHandlerProcess();

    while (in.Left() > 0) {
        switch (in.Byte() % 11) {
        case 0: _file("media/usbinfo.txt", &in, in.Byte()); break;
        case 1: _file("app/event/app_command", &in, in.Word() % 1101); break;
        case 2: FuzzWriteFile(std::string(STICK) + "/.keep", "", 0); break;
        case 3: FuzzRemoveTree(STICK); break;
        case 4: event_trigger(EVENTID_EVENT1, SIGUSR1, SIGUSR1 - 10); break;
        case 5: event_trigger((EVENTID_T)in.Byte(), SIGUSR2, SIGUSR2 - 10); break;
        case 6:
            switch (in.Byte() % 4) {
            case 0: EventHandlerIsUSBStickInserted(); break;
            case 1: EventHandlerIsUSBStickRemoved(); break;
            case 2: EventHandlerIsUSBStickEjected(); break;
            default: EventHandlerGetUSBStickPath(); break;
            }
            break;
        case 7:
            if (in.Byte() & 1) RAMVariables.USER_Eject_Bool = 1;
            else EventHandlerUSBStickEject();
            break;
        case 8: _logRequest(in.Byte() & 1); break;
        case 9:
            for (int i = in.Byte() % 32; i >= 0; i--) FuzzDashTick();
            break;
        default: FuzzRemoveTree("app/event/script_command"); break;
        }
    }
    for (int i = 0; i < 4; i++) FuzzDashTick();
    FuzzDashStop();
    return 0;
}
