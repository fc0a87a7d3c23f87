#pragma once
// The application's picture of the USB stick. The system scripts mount a stick under
// /media and tell its folder in a file; insertion and removal are seen by polling, each
// query bringing the state up to date first. An eject is asked for through a command
// file; the scripts answer through another and SIGUSR1, served on the next main-loop
// pass. Callable from the signal thread and the main thread alike.
#include "dash_types.h"

enum USBSTICKSTATUS_T : U32 {
    USBSTICKSTATUS_NOTPRESENT = 0,  // no stick known
    USBSTICKSTATUS_INSERTED = 1,    // mounted and usable
    USBSTICKSTATUS_EJECTING = 2,    // the scripts have been told to unmount it
    USBSTICKSTATUS_EJECTED = 3,     // unmounted, the stick may be pulled
};

// In the media folder, written by the scripts: the stick's folder name, one line.
constexpr const char* USBINFOFILENAME = "usbinfo.txt";
// In the event folder: our commands to the scripts, and their answers to us.
constexpr const char* EVENT_SCRIPT_COMMAND_FILENAME = "script_command";
constexpr const char* EVENT_APP_COMMAND_FILENAME = "app_command";
constexpr const char* EVENT_COMMAND_USBSTICK_EJECT = "USBSTICK_EJECT";
constexpr const char* EVENT_COMMAND_USBSTICK_EJECTREADY = "USBSTICK_EJECTREADY";

void EventHandlerInit(void);
// Serves the one event that waits, if any. Once per main-loop pass.
void EventHandlerProcess(void);
BOOL EventHandlerIsUSBStickRemoved(void);
BOOL EventHandlerIsUSBStickInserted(void);
BOOL EventHandlerIsUSBStickEjected(void);
// Asks the scripts to unmount the stick; only while it is inserted.
void EventHandlerUSBStickEject(void);
// The stick's folder under /media, "" when none. The text is the calling thread's
// own copy, valid until its next call.
const char* EventHandlerGetUSBStickPath(void);
