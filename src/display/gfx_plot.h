#pragma once
// How a primitive stores one pixel of a plain colour, chosen once per call: a copy, a
// blend into the back layer, or a blend into the front layer whose transparent pixels
// take the back layer's pixel as what lies beneath.
#include "alphablend.h"
#include "lcd_buffer.h"

struct PLOT_COPY_T {
    U16* dst;
    U16 colour;
    void operator()(U32 i) const { dst[i] = colour; }
};

struct PLOT_BLEND_BACK_T {
    ALPHABLEND_SRC_T blend;
    void operator()(U32 i) const { Layer1Buffer[i] = alphablend_colour(blend, Layer1Buffer[i]); }
};

struct PLOT_BLEND_FRONT_T {
    ALPHABLEND_SRC_T blend;
    void operator()(U32 i) const
    {
        const U16 under = Layer2Buffer[i] == ALPHA_COLOR ? Layer1Buffer[i] : Layer2Buffer[i];
        Layer2Buffer[i] = alphablend_colour(blend, under);
    }
};

// Calls body(plot) with the store for this opacity (1 or more) and layer.
template <typename BODY>
inline void gfx_with_plot(U16 colour, U32 opacity, LAYER_T layer, BODY&& body)
{
    if (opacity > 99) {
        body(PLOT_COPY_T{GET_LAYER_BUFFER(layer), colour});
    } else if (layer == LAYER1) {
        body(PLOT_BLEND_BACK_T{alphablend_prepare_colour(opacity, colour)});
    } else {
        body(PLOT_BLEND_FRONT_T{alphablend_prepare_colour(opacity, colour)});
    }
}

// Pixels a thick stroke adds on each side: THICK 1, VERY_THICK 2, any other 0.
inline S32 gfx_stroke_reach(S32 thickness)
{
    return thickness == THICK ? 1 : thickness == VERY_THICK ? 2 : 0;
}

// Highest x and y of the virtual screen (the screen and the rows below it).
inline S32 gfx_max_x(void)
{
    return (S32)gScreenWidth - 1;
}
inline S32 gfx_max_y(void)
{
    return 2 * (S32)gScreenHeight - 1;
}
