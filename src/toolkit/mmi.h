#pragma once
// The screen manager: a registry of screens, a circular stack of the screens visited,
// and hooks by which other modules ride along at fixed points of each pass.
#include "dash_types.h"

typedef void (*MMIFUNC_T)(void);

struct MMISCREEN_T {
    U32 id;
    MMIFUNC_T pEnterFunc;
    MMIFUNC_T pCreateFunc;
    MMIFUNC_T pUpdateFunc;
    MMIFUNC_T pExitFunc;
};

constexpr U32 SCREENID_INVALID = 0xFFFFFFFF;

enum MMICALLBACKTYPE_T : U32 {
    MMICALLBACKTYPE_ENTER = 0,
    MMICALLBACKTYPE_EXIT = 1,
    MMICALLBACKTYPE_PREPROCESS = 2,
    MMICALLBACKTYPE_POSTPROCESS = 3,
    MMICALLBACKTYPE_PRECREATE = 4,
    MMICALLBACKTYPE_POSTCREATE = 5,
    MMICALLBACKTYPE_PREUPDATE = 6,
    MMICALLBACKTYPE_POSTUPDATE = 7,
};
constexpr U32 MMICALLBACKTYPE_COUNT = 8;

void MMIInit(U32 maxScreens, U32 stackDepth, U32 hooksPerType);
void MMIDeInit(void);
BOOL MMIRegisterScreen(U32 id, MMIFUNC_T enter, MMIFUNC_T create, MMIFUNC_T update, MMIFUNC_T exit);
void MMIScreenGoto(U32 id);
void MMIScreenGotoPrev(void);
void MMIScreenGotoStackPositon(U32 position);
U32 MMIGetScreenIdCurrent(void);
U32 MMIGetScreenIdFromStack(U32 position);
void MMIInvalidate(void);
BOOL MMIRegisterCallback(MMICALLBACKTYPE_T type, MMIFUNC_T func);
BOOL MMIDeregisterCallback(MMICALLBACKTYPE_T type, MMIFUNC_T func);
void MMIProcess(void);
