#include "Screen_QuadScreen.h"

#include <cstdio>

#include "b_fill.h"
#include "data.h"
#include "eventhandler.h"
#include "fault_table.h"
#include "freetype_api.h"
#include "images.h"
#include "lcd_blan.h"
#include "navigation.h"
#include "outimage.h"
#include "rectangl.h"

namespace {

enum : uint8_T { TYPE_QUAD = 0, TYPE_DOUBLE_WIDE = 1, TYPE_DOUBLE_TALL = 2, TYPE_LARGE = 3 };

constexpr U16 BADGE_FILL = 0x58A0;
constexpr U16 BADGE_FRAME = 0xD140;

}  // namespace

void Velnor_Dorvik_V6c_SelectGauge1(uint8_T enable, uint16_T index, const trigger_ref (&gauges)[QUAD_GAUGE_COUNT],
                                    trigger_ref* result)
{
    if (enable) *result = index < QUAD_GAUGE_COUNT ? gauges[index] : nullptr;
}

void Velnor_Dorvik_V6c_SelectGauge2(uint8_T enable, uint16_T index, trigger_ref gauge, trigger_ref* result)
{
    if (enable) *result = index < 1 ? gauge : nullptr;
}

void Velnor_Dorvik_V6c_SelectGauge4(uint8_T enable, uint16_T index, const trigger_ref (&gauges)[LARGE_GAUGE_COUNT],
                                    trigger_ref* result)
{
    if (enable) *result = index < LARGE_GAUGE_COUNT ? gauges[index] : nullptr;
}

void Velnor_Dorvik_V6c_SetXY(uint16_T x, uint16_T y)
{
    RAMVariables.arg_x = x;
    RAMVariables.arg_y = y;
}

void Velnor_Dorvik_V6c_Trigger1(trigger_ref gauge)
{
    if (gauge) gauge();
}

void Screen_QuadScreen_Enter(void)
{
    MainScreenEnter(MAIN_SCREEN_QUAD, BUTTONBARMODE_INVISIBLE);
}

void Screen_QuadScreen_Create(void)
{
    vLcdBlankerEx(0, 65535);
    outimageEx(0, 0, &image_NZET6, 100, ALPHA_INVARIANT, LAYER1);
}

// The drawing function of a cell from its gauge word. A type past the last draws nothing.
static trigger_ref _cellGauge(uint8_T type, uint8_T index)
{
    trigger_ref gauge = nullptr;
    Velnor_Dorvik_V6c_SelectGauge1(type == TYPE_QUAD, index, B.QuadGauge, &gauge);
    Velnor_Dorvik_V6c_SelectGauge2(type == TYPE_DOUBLE_WIDE, index, B.RPM_f, &gauge);
    Velnor_Dorvik_V6c_SelectGauge2(type == TYPE_DOUBLE_TALL, index, B.tall, &gauge);
    Velnor_Dorvik_V6c_SelectGauge4(type == TYPE_LARGE, index, B.LargeGauge, &gauge);
    return gauge;
}

static void _cell(bool drawn, uint16_T x, uint16_T y, trigger_ref gauge)
{
    if (!drawn) return;
    Velnor_Dorvik_V6c_SetXY(x, y);
    Velnor_Dorvik_V6c_Trigger1(gauge);
}

// A double wide covers the cell to its right, a double tall the one below it, a large
// gauge the whole page; placed where they do not fit they are not drawn, and the last
// cell holds only a quad gauge.
static void _cells(void)
{
    const CONSTVariables_T& c = CONSTVariables;
    const uint8_T t1 = B.Type, t2 = B.Type_j, t3 = B.Type_j3, t4 = B.Type_j3w;
    const trigger_ref g1 = _cellGauge(t1, B.ID), g2 = _cellGauge(t2, B.ID_f);
    const trigger_ref g3 = _cellGauge(t3, B.ID_fr), g4 = _cellGauge(t4, B.ID_frt);
    auto wideOrLarge = [](uint8_T t) { return t == TYPE_DOUBLE_WIDE || t == TYPE_LARGE; };
    auto tallOrLarge = [](uint8_T t) { return t == TYPE_DOUBLE_TALL || t == TYPE_LARGE; };
    _cell(true, c.X1, c.Y1, g1);
    _cell(!wideOrLarge(t1) && !wideOrLarge(t2), c.X2, c.Y1, g2);
    _cell(!tallOrLarge(t1) && !tallOrLarge(t3), c.X1, c.Y2, g3);
    _cell(t1 != TYPE_LARGE && t2 != TYPE_DOUBLE_TALL && t3 != TYPE_DOUBLE_WIDE && t4 == TYPE_QUAD, c.X2, c.Y2, g4);
}

// "page/pages" in the centre of the display.
static void _badge(void)
{
    blockclearEx(140, 105, 180, 135, BADGE_FILL, LAYER1);
    rectangleEx(140, 105, 180, 135, NORMAL, SOLID, BADGE_FRAME, 100, LAYER1);
    char text[16];
    snprintf(text, sizeof(text), "%i/%i", (int)B.CURRENT_QUAD_SCREEN, (int)B.ProfileGaugeCount);
    outtextxyEx(160, 120, text, FONT_INDEX_TTARIAL, 12, CENTER_TXT, VERTICAL_ALIGNMENT_CENTRE, 0, RED, 100, LAYER1);
}

static void _statusWord(S32 y, const char* word, bool on)
{
    outtextxyEx(318, y, word, FONT_INDEX_TTARIAL, 8, RIGHT_TXT, VERTICAL_ALIGNMENT_TOP, 0, on ? GREEN : RED, 100,
                LAYER2);
}

static void _warning(S32 y, const char* text)
{
    if (*text) outtextxyEx(164, y, text, FONT_INDEX_TTARIAL, 30, CENTER_TXT, VERTICAL_ALIGNMENT_TOP, 0, RED, 100, LAYER2);
}

void QuadScreenStatusWords(void)
{
    const bool stick = EventHandlerIsUSBStickInserted();
    _statusWord(1, "USB", stick);
    _statusWord(11, "Logging", stick && RAMVariables.LoggBitActive);
    _statusWord(21, "Eject", EventHandlerIsUSBStickEjected());
}

void Screen_QuadScreen_Update(void)
{
    // The page is drawn whole on every update: its ground first, as Create lays it.
    Screen_QuadScreen_Create();
    _cells();
    if (RAMVariables.EditMode) _badge();
    QuadScreenStatusWords();
    _warning(100, FaultValetWarning());
    _warning(5, FaultEngineWarning());
}
