#pragma once
// Anti-aliased polygons and lines. Each edge is stepped in 16.16 fixed point and the two
// pixels beside its centre are feathered by the fractional position; a filled polygon's
// interior is scanned row by row between the least and greatest edge column of the row.
#include "vertex.h"

// Signed 16.16 fixed point.
typedef S32 fixed;
#define itofx(x) ((fixed)(x) << 16)
#define ftofx(x) ((fixed)((x) * 65536))
#define dtofx(x) ((fixed)((x) * 65536))
#define fxtoi(x) ((x) >> 16)
#define fxround(x) (((x) >> 16) + ((((x) & 0xFFFF) > 0x8000) ? 1 : 0))
#define fxtof(x) ((float)(x) / 65536.0f)
#define fxtod(x) ((double)(x) / 65536.0)
#define fxmul(x, y) ((fixed)(((S64)(x) * (S64)(y)) >> 16))
#define fxdiv(x, y) ((fixed)(((S64)(x) << 16) / (S64)(y)))

// The wipe for a polygon: a block over its bounding box and two pixels around, drawn
// only when the whole box lies right of and below the screen's origin.
void VertexFillEle(U32 elementId, S32 vertexCount, VERTEX_T* pVertexArray, U16 rgbColour, U32 opacity, LAYER_T layer);
// Filled polygon, closed from the last vertex back to the first. Rows are filled from
// their least to their greatest edge column, so a concave notch fills in. Feathered edge
// pixels are blended against the back layer whatever the layer and opacity.
void PolyFillAAEle(U32 elementId, S32 vertexCount, VERTEX_T* pVertexArray, U16 rgbColour, U32 opacity,
                   LAYER_T layer);
void PolyFillAA(S32 vertexCount, VERTEX_T* pVertexArray, U16 rgbColour, U32 opacity, LAYER_T layer);
// Outline of a closed polygon, three pixels across; the opacity only switches it off.
void PolyStrokeAAEle(U32 elementId, S32 vertexCount, VERTEX_T* pVertexArray, U16 rgbColour, U32 opacity,
                     LAYER_T layer);
// Anti-aliased line between integer points, with softened ends; the opacity only
// switches it off.
void LineAAEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, U16 rgbColour, U32 opacity, LAYER_T layer);
