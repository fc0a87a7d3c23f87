#include "vertex.h"

#include <cmath>

namespace {

constexpr float TWO_PI = 6.2831855f;

// Larger angles lose their fraction in a float; they are brought near the range by
// fmodf first, so that the reduction below stays a few steps.
constexpr float ANGLE_REDUCE_LIMIT = 1000.0f;

}  // namespace

void VertexTranslate(S32 x, S32 y, S32 count, const VERTEX_T* pSource, VERTEX_T* pDestination)
{
    if (!pSource || !pDestination) return;
    const float fx = (float)x, fy = (float)y;
    for (S32 i = 0; i < count; i++) {
        pDestination[i].x = pSource[i].x + fx;
        pDestination[i].y = pSource[i].y + fy;
    }
}

void VertexScale(float sx, float sy, S32 count, const VERTEX_T* pSource, VERTEX_T* pDestination)
{
    if (!pSource || !pDestination) return;
    for (S32 i = 0; i < count; i++) {
        pDestination[i].x = pSource[i].x * sx;
        pDestination[i].y = pSource[i].y * sy;
    }
}

void VertexRotateRad(S32 x, S32 y, float angle, S32 count, const VERTEX_T* pSource, VERTEX_T* pDestination)
{
    if (!pSource || !pDestination) return;
    // An angle that is not a number, or infinite, turns nothing rather than spoiling
    // every vertex.
    if (!std::isfinite(angle)) angle = 0.0f;
    if (fabsf(angle) > ANGLE_REDUCE_LIMIT) angle = fmodf(angle, TWO_PI);
    while (angle < 0.0f) angle += TWO_PI;
    while (angle > TWO_PI) angle -= TWO_PI;
    float s, c;
    sincosf(TWO_PI - angle, &s, &c);
    const float fx = (float)x, fy = (float)y;
    for (S32 i = 0; i < count; i++) {
        const float u = pSource[i].x - fx, v = pSource[i].y - fy;
        pDestination[i].x = c * u + s * v + fx;
        pDestination[i].y = c * v - s * u + fy;
    }
}

void VertexRotateDeg(S32 x, S32 y, float angleDeg, S32 count, const VERTEX_T* pSource, VERTEX_T* pDestination)
{
    VertexRotateRad(x, y, angleDeg * 0.017453292f, count, pSource, pDestination);
}
