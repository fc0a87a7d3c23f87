#include "SeednKey.h"

#include <cstdlib>
#include <cstring>

#include "xcp_callbacks.h"

// The build gives these (see the top CMakeLists.txt); a build without them keeps the
// library's project id and with it the built-in secrets.
#ifndef MOTORDASH_XCP_PROJECT_ID
#define MOTORDASH_XCP_PROJECT_ID XCP_DEFAULT_PROJECT_ID
#define MOTORDASH_XCP_CAL_SECRET 0
#define MOTORDASH_XCP_DAQ_SECRET 0
#define MOTORDASH_XCP_STIM_SECRET 0
#define MOTORDASH_XCP_PGM_SECRET 0
#endif

constinit const U16 XcpProjectId = MOTORDASH_XCP_PROJECT_ID;
constinit const U32 XcpCALSecret = MOTORDASH_XCP_CAL_SECRET;
constinit const U32 XcpDAQSecret = MOTORDASH_XCP_DAQ_SECRET;
constinit const U32 XcpSTIMSecret = MOTORDASH_XCP_STIM_SECRET;
constinit const U32 XcpPGMSecret = MOTORDASH_XCP_PGM_SECRET;
constinit const U32 XcpLibrarySecrets[4] = {0x3A5C9E17u, 0x71B2D4C8u, 0x0E6F8A93u, 0xC4D1275Bu};

XCPSecurityFn XcpCustSecurity = nullptr;
S_XcpSession xcpSessions[XCP_NUM_SEEDKEY_SLOTS];

namespace {

U8 defaultSeed[XCP_NUM_SEEDKEY_SLOTS][XCP_SEED_LEN];
U8 defaultKey[XCP_NUM_SEEDKEY_SLOTS][XCP_KEY_LEN];
U8 defaultKeyBuf[XCP_NUM_SEEDKEY_SLOTS][XCP_KEY_LEN];
U8 nextSession = 0;

template <size_t N>
bool _inside(const U8* p, const U8 (&storage)[XCP_NUM_SEEDKEY_SLOTS][N])
{
    return p >= &storage[0][0] && p < &storage[0][0] + sizeof(storage);
}

bool _isDefault(const U8* p)
{
    return _inside(p, defaultSeed) || _inside(p, defaultKey) || _inside(p, defaultKeyBuf);
}

// Default storage is wiped rather than freed, so that nothing of an earlier attempt
// is left to match a later one.
void _release(U8** p, U8* len, U8 defaultLen)
{
    if (*p && _isDefault(*p)) {
        memset(*p, 0, *len < defaultLen ? *len : defaultLen);
    } else {
        free(*p);
    }
    *p = nullptr;
    *len = 0;
}

}  // namespace

U32 flipEndian(U32 value)
{
    return (value >> 24) | ((value >> 8) & 0xFF00u) | ((value << 8) & 0xFF0000u) | (value << 24);
}

U32 XcpResourceSecret(U8 resource)
{
    const bool builtIn = XcpProjectId == XCP_DEFAULT_PROJECT_ID;
    switch (resource) {
    case XCP_RESOURCE_CAL_PAG: return builtIn ? XcpLibrarySecrets[0] : XcpCALSecret;
    case XCP_RESOURCE_DAQ: return builtIn ? XcpLibrarySecrets[1] : XcpDAQSecret;
    case XCP_RESOURCE_STIM: return builtIn ? XcpLibrarySecrets[2] : XcpSTIMSecret;
    case XCP_RESOURCE_PGM: return builtIn ? XcpLibrarySecrets[3] : XcpPGMSecret;
    default: return 0;
    }
}

void XcpQuorinSecurity(U8 resource, U8* seedLen, U8** seed, U8* keyLen, U8** key)
{
    U8* s = *seed;
    s[0] = (U8)(XcpProjectId >> 8);
    s[1] = (U8)XcpProjectId;
    srand(XcpApp_GetTimestamp());
    for (int i = 2; i < XCP_SEED_LEN; i += 2) {
        const int r = rand();
        s[i] = (U8)r;
        s[i + 1] = (U8)(r >> 8);
    }
    *seedLen = XCP_SEED_LEN;
    // The key goes most significant byte first; the processor is little-endian.
    const U32 wire = flipEndian(XcpKeyHash(XcpResourceSecret(resource), s, XCP_SEED_LEN, resource));
    memcpy(*key, &wire, XCP_KEY_LEN);
    *keyLen = XCP_KEY_LEN;
}

void XcpApp_InitSeedKey(void)
{
    for (S_XcpSession& slot : xcpSessions) XcpClearSession(&slot);
    if (!XcpCustSecurity) XcpCustSecurity = XcpQuorinSecurity;
}

S_XcpSession* XcpGetSession(U32 sessionId)
{
    U32 i = 0;
    while (i < XCP_NUM_SEEDKEY_SLOTS && xcpSessions[i].sessionId != sessionId) i++;
    if (i == XCP_NUM_SEEDKEY_SLOTS) {
        i = 0;
        while (i < XCP_NUM_SEEDKEY_SLOTS && xcpSessions[i].keyLen != 0) i++;
    }
    if (i == XCP_NUM_SEEDKEY_SLOTS) {
        i = nextSession;
        nextSession = (U8)((nextSession + 1) % XCP_NUM_SEEDKEY_SLOTS);
    }
    S_XcpSession& slot = xcpSessions[i];
    if (!slot.seed) slot.seed = defaultSeed[i], slot.seedLen = XCP_SEED_LEN;
    if (!slot.key) slot.key = defaultKey[i], slot.keyLen = XCP_KEY_LEN;
    if (!slot.keyBuf) slot.keyBuf = defaultKeyBuf[i], slot.keyBufLen = XCP_KEY_LEN;
    return &slot;
}

void XcpClearSession(S_XcpSession* session)
{
    _release(&session->key, &session->keyLen, XCP_KEY_LEN);
    _release(&session->keyBuf, &session->keyBufLen, XCP_KEY_LEN);
    _release(&session->seed, &session->seedLen, XCP_SEED_LEN);
}

void XcpApp_GetSeed(U32 sessionId, U8 resource, U8** seed, U8* seedLen)
{
    // A new seed ends whatever attempt the slot held: it starts from its own storage.
    XcpClearSession(XcpGetSession(sessionId));
    S_XcpSession* slot = XcpGetSession(sessionId);
    slot->sessionId = sessionId;
    slot->resource = resource;
    XcpCustSecurity(resource, &slot->seedLen, &slot->seed, &slot->keyLen, &slot->key);
    *seed = slot->seed;
    *seedLen = slot->seed ? slot->seedLen : 0;
}

void XcpApp_GetKeyBuffer(U32 sessionId, U8, U8** keyBuffer, U8 keyLen)
{
    S_XcpSession* slot = XcpGetSession(sessionId);
    // An empty key needs no room: the buffer stays, only its length says so.
    if (keyLen != slot->keyBufLen && keyLen != 0) {
        U8* block = static_cast<U8*>(malloc(keyLen));
        if (!block) {
            *keyBuffer = nullptr;
            return;
        }
        _release(&slot->keyBuf, &slot->keyBufLen, XCP_KEY_LEN);
        slot->keyBuf = block;
    }
    slot->keyBufLen = keyLen;
    *keyBuffer = slot->keyBuf;
}

BOOL XcpApp_UnlockResource(U32 sessionId, U8 resource)
{
    S_XcpSession* slot = XcpGetSession(sessionId);
    bool match = slot->resource == resource && slot->key && slot->keyBuf && slot->keyLen == slot->keyBufLen;
    if (match) {
        // Every byte is looked at, so the time taken tells nothing of where a key differs.
        U8 diff = 0;
        for (U32 i = 0; i < slot->keyLen; i++) diff |= (U8)(slot->key[i] ^ slot->keyBuf[i]);
        match = diff == 0;
    }
    XcpClearSession(slot);
    return match ? TRUE : FALSE;
}
