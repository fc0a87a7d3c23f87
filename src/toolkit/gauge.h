#pragma once
// A round analogue gauge: a scale of major and minor markers with their numbers, drawn
// once on the back layer, and a polygon needle with an optional hub picture, drawn on
// the front layer at each update. Shapes are defined on a gauge of radius 100 and scaled.
#include "gfx_types.h"

enum DIRECTION_T : S32 { DIRECTION_ClockWise = 0, DIRECTION_CounterClockWise = 1 };

struct GAUGE_T {
    S32 elementId;         // of the needle and hub, which are wiped as one
    float minValue;        // scale start
    float maxValue;        // scale end
    float angleStartDeg;   // angle of minValue: 0 points up, angles grow clockwise
    float angleEndDeg;     // angle of maxValue
    DIRECTION_T arcDirection;
    int centreX;
    int centreY;
    int markersMajor;      // at least 2: a start and an end marker
    int markersMinor;      // between two major markers
    float previousValue;   // last value passed to vGaugeUpdate, as passed
    float scaleFactor;     // multiplies all shapes
    U16 needleColour;
    U16 markerColour;      // markers and numbers
    const void* needleBoss;  // hub picture or null
    const void* bgimg;       // face picture or null
    int xOffset;             // of the face picture
    int yOffset;
};

// Draws the face, the markers and the numbers on the back layer.
void vGaugeCreate(GAUGE_T* pGauge);
// Draws the needle for the value on the front layer. It does not erase: the caller wipes
// the last needle first with ElementFillPrevRect(elementId, ALPHA_COLOR, LAYER2).
void vGaugeUpdate(GAUGE_T* pGauge, float value);

