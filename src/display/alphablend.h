#pragma once
// Translucent pixels: one table of (a * c) >> 8 for every alpha a and component c of
// up to six bits, so that blending needs no multiplication.
#include <array>

#include "gfx_types.h"

constexpr U32 ALPHABLEND_TABLE_COLUMNS = 64;
extern const std::array<U8, 256 * ALPHABLEND_TABLE_COLUMNS> ALPHABLEND_LOOKUP_TABLE;

// alpha = opacity * 255 / 100, for opacities 1 to 99.
inline U32 alphablend_alpha(U32 opacity)
{
    return opacity * 255 / 100;
}

// One blend, ready to run: the table rows for alpha and 255 - alpha.
struct ALPHABLEND_T {
    const U8* src;  // row alpha
    const U8* dst;  // row 255 - alpha
};

inline ALPHABLEND_T alphablend_prepare(U32 opacity)
{
    const U32 alpha = alphablend_alpha(opacity) & 0xFF;
    return {&ALPHABLEND_LOOKUP_TABLE[alpha << 6], &ALPHABLEND_LOOKUP_TABLE[(255 - alpha) << 6]};
}

inline U16 alphablend_pixel(const ALPHABLEND_T& b, U16 src, U16 dst)
{
    const U32 red = (U32)b.src[src >> 11] + b.dst[dst >> 11];
    const U32 green = (U32)b.src[(src >> 5) & 0x3F] + b.dst[(dst >> 5) & 0x3F];
    const U32 blue = (U32)b.src[src & 0x1F] + b.dst[dst & 0x1F];
    return (U16)((red << 11) | ((green << 5) & 0x07E0) | (blue & 31));
}

// The blend of a constant source: its three table entries worked out once.
struct ALPHABLEND_SRC_T {
    const U8* dst;
    U32 red, green, blue;
};

inline ALPHABLEND_SRC_T alphablend_prepare_colour(U32 opacity, U16 colour)
{
    const ALPHABLEND_T b = alphablend_prepare(opacity);
    return {b.dst, b.src[colour >> 11], b.src[(colour >> 5) & 0x3F], b.src[colour & 0x1F]};
}

inline U16 alphablend_colour(const ALPHABLEND_SRC_T& b, U16 dst)
{
    const U32 red = b.red + b.dst[dst >> 11];
    const U32 green = b.green + b.dst[(dst >> 5) & 0x3F];
    const U32 blue = b.blue + b.dst[dst & 0x1F];
    return (U16)((red << 11) | ((green << 5) & 0x07E0) | (blue & 31));
}

inline void _alphablend_into(U16* pDest, U16 src, U32 alphaVal)
{
    const U32 a = alphaVal & 0xFF;
    *pDest = alphablend_pixel(ALPHABLEND_T{&ALPHABLEND_LOOKUP_TABLE[a << 6], &ALPHABLEND_LOOKUP_TABLE[(255 - a) << 6]},
                              src, *pDest);
}

// Blend of the pixel at pSrc into the pixel at pDest.
#define ALPHABLEND_PIXEL(pDest, pSrc, alphaVal) _alphablend_into((pDest), *(pSrc), (alphaVal))
#define ALPHABLEND_COMPONENTS(pDest, srcRed, srcGreen, srcBlue, alphaVal)                                 \
    _alphablend_into((pDest),                                                                             \
                     (U16)((((U32)(srcRed) & 31) << 11) | (((U32)(srcGreen) & 63) << 5) | ((U32)(srcBlue) & 31)), \
                     (alphaVal))
