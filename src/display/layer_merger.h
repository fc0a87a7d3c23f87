#pragma once
// The compositor: the changed regions of the two layers into the page not on show,
// then the button bar's overlay rows, then the page is shown at the vertical blank.
#include "gfx_types.h"

void merge_layers(void);
BOOL isLcdFlipped(void);
void vSetLcdFlipped(BOOL flipped);
void SetButtonOverlayHeight(U32 rows);
U32 GetButtonOverlayHeight(void);

// Test hooks: for tests and benchmarks only, never called by the dash.
// The work of merge_layers up to the swap, into any page of gScreenWidth x
// gScreenHeight pixels (the tests and benchmarks compose into memory of their own).
void LayerMergerTestCompose(U16* page);
// Back to the state at program load.
void LayerMergerTestReset(void);
