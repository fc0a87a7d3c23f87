#pragma once
// A clean display engine for each test: layers zeroed, bookkeeping as at program load.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "dirtyrect.h"
#include "elements.h"
#include "layer_merger.h"
#include "lcd_buffer.h"

inline void ResetDisplay(U32 width = 320, U32 height = 240)
{
    gScreenWidth = width;
    gScreenHeight = height;
    memset(Layer1Buffer, 0, sizeof(Layer1Buffer));
    memset(Layer2Buffer, 0, sizeof(Layer2Buffer));
    DirtyRectTestReset();
    ElementTestReset();
    LayerMergerTestReset();
}

inline U16 L1(S32 x, S32 y)
{
    return Layer1Buffer[(U32)y * gScreenWidth + (U32)x];
}
inline U16 L2(S32 x, S32 y)
{
    return Layer2Buffer[(U32)y * gScreenWidth + (U32)x];
}

// The rectangles of the list the next compose will use, in list order.
inline std::vector<GFX_RECT_T> CurrentDirty()
{
    std::vector<GFX_RECT_T> out;
    for (DIRTYRECT_T* d = DirtyRectGetFirst(); d; d = d->pNext) out.push_back(d->rect);
    return out;
}

inline bool operator==(const GFX_RECT_T& a, const GFX_RECT_T& b)
{
    return a.Left == b.Left && a.Top == b.Top && a.Right == b.Right && a.Bottom == b.Bottom;
}

inline std::ostream& operator<<(std::ostream& os, const GFX_RECT_T& r)
{
    return os << "(" << r.Left << "," << r.Top << "," << r.Right << "," << r.Bottom << ")";
}

class DisplayTest : public ::testing::Test {
protected:
    void SetUp() override { ResetDisplay(); }
    void TearDown() override { ResetDisplay(); }
};
