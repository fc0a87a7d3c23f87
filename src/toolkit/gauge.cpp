#include "gauge.h"

#include <cmath>
#include <cstdio>

#include "antialias.h"
#include "dash_assert.h"
#include "freetype_api.h"
#include "outimage.h"

namespace {

// Shapes on a gauge of radius 100, standing at 12 o'clock (negative y is up).
constexpr VERTEX_T bigmarker[] = {{-1, -88}, {1, -88}, {1, -100}, {-1, -100}};
constexpr VERTEX_T smallmarker[] = {{-0.5f, -92}, {0.5f, -92}, {0.5f, -100}, {-0.5f, -100}};
constexpr VERTEX_T digitPoint[] = {{0, -75}};
constexpr VERTEX_T needle[] = {{-5, -5}, {0, 0}, {5, -5}, {2, -96}, {0, -100}, {-2, -96}};
constexpr S32 NEEDLE_VERTICES = sizeof(needle) / sizeof(needle[0]);

// Room for "%0.0f" of any float.
constexpr size_t NUMBER_TEXT_SIZE = 44;

}  // namespace

// The positive sweep from the start angle to the end angle, in the gauge's direction.
static float _GaugeArc(const GAUGE_T* g)
{
    float arc = 360.0f - g->angleStartDeg + g->angleEndDeg;
    // Angles far out of range would take the loops below forever.
    if (!std::isfinite(arc)) arc = 0.0f;
    if (fabsf(arc) > 3600.0f) arc = fmodf(arc, 360.0f);
    while (arc > 360.0f) arc -= 360.0f;
    while (arc < 0.0f) arc += 360.0f;
    if (g->arcDirection == DIRECTION_CounterClockWise) arc = 360.0f - arc;
    return arc;
}

// A copy of the shape scaled, turned by the angle and moved to the gauge's centre.
static void _GaugePlace(const GAUGE_T* g, const VERTEX_T* shape, S32 count, float angleDeg, VERTEX_T* out)
{
    VertexScale(g->scaleFactor, g->scaleFactor, count, shape, out);
    VertexRotateDeg(0, 0, angleDeg, count, out, out);
    VertexTranslate(g->centreX, g->centreY, count, out, out);
}

static void _GaugeMarker(const GAUGE_T* g, const VERTEX_T (&shape)[4], float angleDeg)
{
    VERTEX_T v[4];
    _GaugePlace(g, shape, 4, angleDeg, v);
    PolyFillAA(4, v, g->markerColour, 100, LAYER1);
}

void vGaugeCreate(GAUGE_T* pGauge)
{
    if (!pGauge) return;
    const GAUGE_T* g = pGauge;
    DASH_ASSERT(g->markersMajor >= 2, "Gauge needs at lease a start marker and an end marker!");
    const S32 minors = g->markersMinor > 0 ? g->markersMinor : 0;
    const float majorStep = _GaugeArc(g) / (float)(g->markersMajor - 1);
    float minorStep = majorStep / (float)(minors + 1);
    if (g->arcDirection == DIRECTION_CounterClockWise) minorStep = -minorStep;

    if (g->bgimg) {
        outimageExEle((U32)g->elementId, g->centreX - (S32)(uiGetImageWidth(g->bgimg) / 2) + g->xOffset,
                      g->centreY - (S32)(uiGetImageHeight(g->bgimg) / 2) + g->yOffset, g->bgimg, 100, ALPHA_INVARIANT,
                      LAYER1);
    }
    const S32 fontSize = vertex_to_int(g->scaleFactor * 15);
    NumSetFont(FONT_INDEX_TTCOURIERBDNUM, (U32)CLAMPMIN(fontSize, 0), HORIZONTAL_ALIGNMENT_CENTRE, 1);

    float angle = g->angleStartDeg;
    for (int i = 0; i < g->markersMajor; i++) {
        _GaugeMarker(g, bigmarker, angle);
        VERTEX_T at;
        _GaugePlace(g, digitPoint, 1, angle, &at);
        char text[NUMBER_TEXT_SIZE];
        const float value = g->minValue + ((g->maxValue - g->minValue) / (float)(g->markersMajor - 1)) * (float)i;
        snprintf(text, sizeof(text), "%0.0f", value);
        outnumxyftExEle(ELEMENTID_INVALID, vertex_to_int(at.x), vertex_to_int(at.y) - vertex_to_int(g->scaleFactor * 8),
                        text, g->markerColour, 100, LAYER1);
        angle += minorStep;
        if (i == g->markersMajor - 1) break;
        for (S32 k = 0; k < minors; k++) {
            _GaugeMarker(g, smallmarker, angle);
            angle += minorStep;
        }
    }
}

void vGaugeUpdate(GAUGE_T* pGauge, float value)
{
    if (!pGauge) return;
    GAUGE_T* g = pGauge;
    g->previousValue = value;
    float clamped = value;
    if (clamped < g->minValue) clamped = g->minValue;
    if (clamped > g->maxValue) clamped = g->maxValue;
    const float offset = clamped - g->minValue;
    const float degPerUnit = _GaugeArc(g) / (g->maxValue - g->minValue);
    const float turn = offset * degPerUnit;
    const float angle = g->arcDirection == DIRECTION_CounterClockWise ? g->angleStartDeg - turn : g->angleStartDeg + turn;

    VERTEX_T v[NEEDLE_VERTICES];
    _GaugePlace(g, needle, NEEDLE_VERTICES, angle, v);
    PolyFillAAEle((U32)g->elementId, NEEDLE_VERTICES, v, g->needleColour, 100, LAYER2);
    // The hub sits on the centre itself; the face's offset does not move it.
    if (g->needleBoss) {
        outimageExEle((U32)g->elementId, g->centreX - (S32)(uiGetImageWidth(g->needleBoss) / 2),
                      g->centreY - (S32)(uiGetImageHeight(g->needleBoss) / 2), g->needleBoss, 100, ALPHA_INVARIANT,
                      LAYER2);
    }
}
