#pragma once
// An XCP master on CAN: commands out on the slave's command identifier, responses in
// from its response identifier, over the virtual bus of a simulated device root or a
// SocketCAN interface of a real one.
#include <cstdint>
#include <string>
#include <vector>

#include "xcp_can.h"

struct XCP_MASTER_T {
    int fd = -1;
    int timeoutMs = 1000;  // for each response frame
    uint32_t broadcastId = XCP0_CAN_BROADCAST_MSGID;
    uint32_t cmdId = XCP0_CAN_RX_MSGID;
    uint32_t respId = XCP0_CAN_TX_MSGID;
    // How a write of more than one frame goes: as one block of frames without answers
    // (GET_COMM_MODE_INFO tells whether the slave takes them, and how far apart), or
    // frame by frame.
    bool blockMode = false;
    int minStUs = 0;
};

// Port can0 of a device root's virtual bus, or the SocketCAN interface `iface` when
// root is null. False with a message when neither can be opened.
bool XcpMasterOpen(XCP_MASTER_T* m, const char* root, const char* iface, std::string* error);
void XcpMasterClose(XCP_MASTER_T* m);

// One frame out, `length` bytes.
bool XcpMasterSendFrame(XCP_MASTER_T* m, uint32_t id, const uint8_t* bytes, uint8_t length);
// The next frame on `id` within timeoutMs; other identifiers are passed over.
bool XcpMasterReceiveFrame(XCP_MASTER_T* m, uint32_t id, std::vector<uint8_t>* data, int timeoutMs);

enum XCP_MASTER_STATUS_T {
    XCP_MASTER_OK,       // a positive response
    XCP_MASTER_ERROR,    // an error packet: `error` holds its code
    XCP_MASTER_TIMEOUT,  // no response in time
    XCP_MASTER_BUS,      // the bus could not take the command
};

struct XCP_REPLY_T {
    XCP_MASTER_STATUS_T status;
    uint8_t error;
    std::vector<uint8_t> packet;  // the response as it came, PID first
};

// Sends a command and waits for its response. Events and DAQ packets in between are
// passed over; XCP_EV_CMD_PENDING starts the wait again.
XCP_REPLY_T XcpMasterCommand(XCP_MASTER_T* m, const std::vector<uint8_t>& command);
// Only the next response: the next frame of a multi-frame upload.
XCP_REPLY_T XcpMasterResponse(XCP_MASTER_T* m);

XCP_REPLY_T XcpMasterConnect(XCP_MASTER_T* m);
XCP_REPLY_T XcpMasterDisconnect(XCP_MASTER_T* m);
// UPLOADs of up to 255 bytes from where the MTA stands.
XCP_REPLY_T XcpMasterUpload(XCP_MASTER_T* m, uint32_t length, std::vector<uint8_t>* out);
// Reads `length` bytes from the address space at `addr`: SET_MTA (or GET_ID type 1 for
// address 0, which SET_MTA refuses), then XcpMasterUpload.
XCP_REPLY_T XcpMasterRead(XCP_MASTER_T* m, uint32_t addr, uint32_t length, std::vector<uint8_t>* out);

// GET_COMM_MODE_INFO: whether writes may go as blocks, and the gap between frames.
XCP_REPLY_T XcpMasterCommModeInfo(XCP_MASTER_T* m);
// GET_SEED and UNLOCK of one resource, the key made from the seed with `secret`. The
// last response: an UNLOCK's tells what stays locked; a positive GET_SEED with nothing
// to unlock means the resource was open already.
XCP_REPLY_T XcpMasterUnlock(XCP_MASTER_T* m, uint8_t resource, uint32_t secret);
// Writes bytes into the address space at `addr`: SET_MTA, then DOWNLOADs (with
// DOWNLOAD_NEXT frames in block mode).
XCP_REPLY_T XcpMasterWrite(XCP_MASTER_T* m, uint32_t addr, const std::vector<uint8_t>& bytes);

// ---- Measurement ------------------------------------------------------------------

// Where a measured variable's bytes come in a frame set of list 0.
struct XCP_DAQ_PLACE_T {
    uint8_t odt;     // its frame: PID odt
    uint8_t offset;  // from the frame's first byte, the PID
};

// Lays variables of `sizes` bytes (1 to 7 each) out in the ODTs of a list, a time stamp
// heading ODT 0; false if they don't fit in the list's eight frames. XcpMasterDaqStart
// builds list 0 so, puts it on `event` and starts it.
bool XcpMasterDaqLayout(const std::vector<uint8_t>& sizes, std::vector<XCP_DAQ_PLACE_T>* places, uint8_t* numOdt);
XCP_REPLY_T XcpMasterDaqStart(XCP_MASTER_T* m, const std::vector<uint32_t>& addrs, const std::vector<uint8_t>& sizes,
                              uint8_t event);
// One list of several, each laid out as above.
struct XCP_DAQ_LIST_T {
    std::vector<uint32_t> addrs;
    std::vector<uint8_t> sizes;
    uint8_t event;
    uint8_t firstPid;  // set by XcpMasterDaqStartLists: PID of the list's ODT 0
};
// Lists 0 to N-1 built, each on its event, and all started together.
XCP_REPLY_T XcpMasterDaqStartLists(XCP_MASTER_T* m, std::vector<XCP_DAQ_LIST_T>* lists);
// Stops every list and frees them: what a master leaves behind at its end.
XCP_REPLY_T XcpMasterDaqStop(XCP_MASTER_T* m);
// The next DAQ frame of list 0 within timeoutMs: a PID below 0xFC on the response
// identifier.
bool XcpMasterDaqFrame(XCP_MASTER_T* m, std::vector<uint8_t>* frame, int timeoutMs);

// A number as people write it: decimal, or hex after 0x, a minus sign before either. A
// leading zero is not octal.
bool XcpMasterInteger(const char* text, long long* value);
// The four resource secrets "CAL,DAQ,STIM,PGM", each such a number and not negative.
bool XcpMasterSecrets(const char* text, uint32_t secrets[4]);

// The standard's name of an error code, "ERR_ACCESS_LOCKED"; "ERR_0x42" for others.
std::string XcpErrorName(uint8_t code);
// "ERR_OUT_OF_RANGE (0x22)", or what went wrong without an error packet.
std::string XcpMasterDescribe(const XCP_MASTER_T& m, const XCP_REPLY_T& reply);
