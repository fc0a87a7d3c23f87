#pragma once
// Seed and key: the slave's side of GET_SEED and UNLOCK. Every resource starts locked;
// a master unlocks one at a time by answering a seed with the key that both sides
// compute from the seed, the resource and a secret they share. The computation is
// behind a function pointer, so that a project can put its own in place.
#include "xcp_types.h"

constexpr U8 XCP_SEED_LEN = 6;
constexpr U8 XCP_KEY_LEN = 4;
constexpr U32 XCP_NUM_SEEDKEY_SLOTS = 4;

// The library's own project id. A build that keeps it has not been given its secrets,
// and the library's built-in ones key the resources in their place.
constexpr U16 XCP_DEFAULT_PROJECT_ID = 0;

// The build's settings MOTORDASH_XCP_PROJECT_ID and MOTORDASH_XCP_SECRETS.
extern const U16 XcpProjectId;
extern const U32 XcpCALSecret;
extern const U32 XcpDAQSecret;
extern const U32 XcpSTIMSecret;
extern const U32 XcpPGMSecret;
// The built-in secrets of CAL_PAG, DAQ, STIM and PGM, in that order.
extern const U32 XcpLibrarySecrets[4];

// The secret that keys a resource now: the build's, or the built-in one while the
// project id is the default. 0 for anything but the four resources.
U32 XcpResourceSecret(U8 resource);

// The key of a seed for a resource: 32-bit FNV-1a over the secret (most significant
// byte first), the seed and the resource byte. The master computes the same.
constexpr U32 XcpKeyHash(U32 secret, const U8* seed, U32 seedLen, U8 resource)
{
    U32 hash = 0x811C9DC5u;
    auto mix = [&hash](U8 byte) {
        hash ^= byte;
        hash *= 0x01000193u;
    };
    for (int shift = 24; shift >= 0; shift -= 8) mix((U8)(secret >> shift));
    for (U32 i = 0; i < seedLen; i++) mix(seed[i]);
    mix(resource);
    return hash;
}

// Makes a seed and its key for a resource into the buffers given, and sets their
// lengths; the buffers may be replaced by heap blocks of other sizes.
typedef void (*XCPSecurityFn)(U8 resource, U8* seedLen, U8** seed, U8* keyLen, U8** key);
// Installed by XcpApp_InitSeedKey unless a project has put its own here before.
extern XCPSecurityFn XcpCustSecurity;
// The seed: the project id, then two numbers of rand seeded by the millisecond clock.
// The key: XcpKeyHash with the resource's secret, most significant byte first.
void XcpQuorinSecurity(U8 resource, U8* seedLen, U8** seed, U8* keyLen, U8** key);

// One seed and key in progress.
struct S_XcpSession {
    U32 sessionId;
    U8 resource;
    U8 seedLen;
    U8* seed;
    U8 keyLen;  // the expected key
    U8* key;
    U8 keyBufLen;  // the received key
    U8* keyBuf;
};
extern S_XcpSession xcpSessions[XCP_NUM_SEEDKEY_SLOTS];

// Empties every slot and installs the security function.
void XcpApp_InitSeedKey(void);
// A fresh seed for the session's slot, with its key kept for the UNLOCK to come.
void XcpApp_GetSeed(U32 sessionId, U8 resource, U8** seed, U8* seedLen);
// A buffer of keyLen bytes for the incoming key: the present one if its length fits,
// else a new heap block. Null if none could be had.
void XcpApp_GetKeyBuffer(U32 sessionId, U8 resource, U8** keyBuffer, U8 keyLen);
// Whether the received key is the expected one. The slot is emptied either way, so a
// seed serves one attempt.
BOOL XcpApp_UnlockResource(U32 sessionId, U8 resource);

// The session's slot: its own, else a free one, else the next in turn. Empty pointers
// get the slot's default storage.
S_XcpSession* XcpGetSession(U32 sessionId);
// Frees the seed, key and key buffer unless they are default storage, and empties them.
void XcpClearSession(S_XcpSession* session);
U32 flipEndian(U32 value);
