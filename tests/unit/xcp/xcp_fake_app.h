#pragma once
// The application's side of the XCP library, for tests of the library on its own: the
// address space is a plain byte array, frames go into a list, and the memory can be
// made slow or refusing.
#include <cstdint>
#include <vector>

#include "xcp_types.h"

struct FAKE_FRAME_T {
    uint32_t id;
    std::vector<uint8_t> data;
};

struct FAKE_APP_T {
    std::vector<FAKE_FRAME_T> sent;       // every frame XcpApp_CanTransmit was given
    uint8_t memory[1024];                 // the address space
    int busyPasses;                       // memory requests answer CALMEM_BUSY this many more times
    Xcp_CalMemState forced;               // a result in place of the real one, CALMEM_FINISHED for none
    bool deferTxCallbacks;                // frames leave without the transport being told
    int deferredTxCallbacks;              // ... and how many are owed
    bool nvKept;                          // the resume store keeps what is written
    uint8_t nv[2048];
    Xcp_CalMemState freezeResult;
    Xcp_CalMemState pageCopyResult;       // COPY_CAL_PAGE and MODIFY_BITS
    Xcp_CalPageErr ecuPageResult, toolPageResult;
    uint8_t ecuPage;
    uint32_t timestamp;
    int connects, userConnects, disconnects;
    Xcp_ProgramState programResult;       // of every programming request
    std::vector<uint8_t> programmed;      // the bytes XcpApp_Program was given
};
extern FAKE_APP_T FakeApp;

// Everything back to rest: memory filled with its own address (low byte), no frames.
void FakeAppReset(void);
// Tells the transport of the frames that left while callbacks were deferred, one each.
void FakeAppDeliverTxCallback(void);
