#pragma once
// Floating-point vertices and the transforms on arrays of them: the shapes of needles
// and scale markers are defined once and moved, scaled and turned into place per draw.
#include <cmath>

#include "gfx_types.h"

struct VERTEX_T {
    float x;
    float y;
};
static_assert(sizeof(VERTEX_T) == 8);

constexpr float DEG2RADFACTOR = 0.0174532925f;
constexpr float PI = 3.1415926535898f;
#define DEG2RAD(x) ((x) * DEG2RADFACTOR)
#define RAD2DEG(x) ((x) * (180.0f / PI))

// Coordinates further than this from the origin cannot be meant: shapes are clamped to
// it before they are turned into integers or fixed point, so that no float (huge, NaN)
// reaches a conversion whose result is undefined.
constexpr float VERTEX_COORD_LIMIT = 8192.0f;

// The coordinate limited to +-VERTEX_COORD_LIMIT; NaN counts as far off the screen.
inline float vertex_coord(float v)
{
    if (!(v >= -VERTEX_COORD_LIMIT)) return -VERTEX_COORD_LIMIT;
    return v > VERTEX_COORD_LIMIT ? VERTEX_COORD_LIMIT : v;
}

// The coordinate truncated to an integer, as a cast would, within the limit.
inline S32 vertex_to_int(float v)
{
    return (S32)vertex_coord(v);
}

// Source and destination may be the same array in every transform.
void VertexTranslate(S32 x, S32 y, S32 count, const VERTEX_T* pSource, VERTEX_T* pDestination);
void VertexScale(float sx, float sy, S32 count, const VERTEX_T* pSource, VERTEX_T* pDestination);
// Turns about the integer point (x, y); on the screen, whose y axis points down, a
// positive angle turns clockwise.
void VertexRotateRad(S32 x, S32 y, float angle, S32 count, const VERTEX_T* pSource, VERTEX_T* pDestination);
void VertexRotateDeg(S32 x, S32 y, float angleDeg, S32 count, const VERTEX_T* pSource, VERTEX_T* pDestination);
