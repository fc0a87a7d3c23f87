#include "quad_keys.h"

#include "Velnor_Dorvik_V6c.h"
#include "buttonbar.h"
#include "data.h"
#include "images.h"
#include "mmi.h"
#include "navigation.h"
#include "timer_drv.h"

boolean_T Trigger_QuadNext_enabled;
boolean_T Trigger_QuadPrev_enabled;
boolean_T Trigger_Quad_NextGauge_enabled;
boolean_T Trigger_Quad_PrevGauge_enabled;

namespace {

// A key held for more than this many ms, summed pass by pass from its press, fires once.
constexpr uint32_T HOLD_MS = 2999;

struct HOLD_T {
    bool held;       // the key was down at the last pass of the stage
    uint32_T sumMs;  // since the pass that saw the press
};
HOLD_T m_editHold;  // key 3: edit mode
HOLD_T m_menuHold;  // key 5: the main menu

constexpr uint8_T GAUGE_TYPES = 4;
constexpr uint8_T GAUGE_TYPE_COUNT[GAUGE_TYPES] = {QUAD_GAUGE_COUNT, 1, 1, LARGE_GAUGE_COUNT};

// Key 3's face in stage gauge: the page with the selected cell marked.
const void* const m_cellFaces[PROFILE_CELLS] = {&image_wCdZ6, &image_oTmS_, &image_t5QYq, &image_3u2p7};

}  // namespace

// Number of gauges of a gauge type; 0 for a type that does not exist.
static uint8_T _typeCount(uint8_T type)
{
    return type < GAUGE_TYPES ? GAUGE_TYPE_COUNT[type] : 0;
}

// True in the pass in which the key has been down for more than HOLD_MS; the hold counts
// from the pass that first saw the key down.
static bool _held(HOLD_T* hold, uint32_T* last, KEYINDEX_T key)
{
    if (!ButtonBarIsKeyPressed(key)) {
        *hold = {};
        return false;
    }
    const uint32_T delta = GetDeltaTime_ms(last);
    if (!hold->held) {
        *hold = {true, 0};
        return false;
    }
    const uint32_T before = hold->sumMs;
    hold->sumMs = before + delta < before ? UINT32_MAX : before + delta;
    return before <= HOLD_MS && hold->sumMs > HOLD_MS;
}

static void _resetHolds(void)
{
    m_editHold = {};
    m_menuHold = {};
}

static void _profileWrite(uint16_T (*profile)[PROFILE_PAGES], uint8_T enable, uint16_T word)
{
    const EEVariables_T& ee = EEVariables_RAMShadow;
    if (!enable || ee.CURRENT_QUAD_SCREEN < 1 || ee.CURRENT_QUAD_SCREEN > PROFILE_PAGES || ee.SELECTED_QUAD < 1 ||
        ee.SELECTED_QUAD > PROFILE_CELLS)
        return;
    (&profile[0][0])[(ee.CURRENT_QUAD_SCREEN - 1) * PROFILE_CELLS + (ee.SELECTED_QUAD - 1)] = word;
}

void Velnor_Dorvik_V6c_Profile1(uint8_T enable, uint16_T word)
{
    _profileWrite(EEVariables_RAMShadow.PROFILE_1, enable, word);
}

void Velnor_Dorvik_V6c_Profile2(uint8_T enable, uint16_T word)
{
    _profileWrite(EEVariables_RAMShadow.PROFILE_2, enable, word);
}

void Velnor_Dorvik_V6c_Profile3(uint8_T enable, uint16_T word)
{
    _profileWrite(EEVariables_RAMShadow.PROFILE_3, enable, word);
}

void Velnor_Dorvik_V6c_QuadNext(uint8_T key, uint8_T* edge)
{
    if (*edge && !key) Trigger_QuadNext();
    *edge = key;
}

void Trigger_QuadNext(void)
{
    if (!Trigger_QuadNext_enabled) return;
    const int next = B.CURRENT_QUAD_SCREEN + 1;
    if (next <= B.ProfileGaugeCount) EEVariables_RAMShadow.CURRENT_QUAD_SCREEN = (uint8_T)next;
    else if (!RAMVariables.EditMode) Trigger_GoToNextScreen();
}

void Trigger_QuadPrev(void)
{
    if (!Trigger_QuadPrev_enabled) return;
    const int previous = B.CURRENT_QUAD_SCREEN - 1;
    if (previous > 0) EEVariables_RAMShadow.CURRENT_QUAD_SCREEN = (uint8_T)previous;
}

// The chosen gauge into the selected cell of the page shown, in the active profile; with
// a profile outside 1 to 3 nowhere.
static void _store(uint8_T type, uint8_T index)
{
    const uint16_T word = (uint16_T)(type << 8 | index);
    const uint8_T profile = EEVariables_RAMShadow.USER_PROFILE;
    Velnor_Dorvik_V6c_Profile1(profile == 1, word);
    Velnor_Dorvik_V6c_Profile2(profile == 2, word);
    Velnor_Dorvik_V6c_Profile3(profile == 3, word);
}

// Gauges step from the last one chosen, not from the gauge the cell shows. Past the last
// index of a type the next type starts at index 0.
void Trigger_Quad_NextGauge(void)
{
    if (!Trigger_Quad_NextGauge_enabled) return;
    RAMVariables_T& ram = RAMVariables;
    const int index = ram.SelectedGaugeIndex + 1;
    if (index >= _typeCount(ram.SelectedGaugeType)) {
        ram.SelectedGaugeType = ram.SelectedGaugeType >= GAUGE_TYPES - 1 ? 0 : (uint8_T)(ram.SelectedGaugeType + 1);
        ram.SelectedGaugeIndex = 0;
    } else {
        ram.SelectedGaugeIndex = (uint8_T)index;
    }
    _store(ram.SelectedGaugeType, ram.SelectedGaugeIndex);
}

// Back from index 0 the index wraps to 255, which selects nothing: one empty step, then
// index 0 of the type before.
void Trigger_Quad_PrevGauge(void)
{
    if (!Trigger_Quad_PrevGauge_enabled) return;
    RAMVariables_T& ram = RAMVariables;
    const int index = ram.SelectedGaugeIndex - 1;
    if (index >= _typeCount(ram.SelectedGaugeType)) {
        ram.SelectedGaugeType = ram.SelectedGaugeType == 0 ? 0 : (uint8_T)(ram.SelectedGaugeType - 1);
        ram.SelectedGaugeIndex = 0;
    } else {
        ram.SelectedGaugeIndex = (uint8_T)index;
    }
    _store(ram.SelectedGaugeType, ram.SelectedGaugeIndex);
}

static void _bar(BUTTONBARMODE_T mode)
{
    ButtonBarSetMode(mode);
    ButtonBarSetHeight(MAIN_SCREEN_BAR_HEIGHT);
}

static void _face(KEYINDEX_T key, const void* image)
{
    ButtonBarSetKeyImages(key, image, image);
}

// Edit mode, paging: key 5 leaves edit mode, key 3 goes on to stage gauge.
static void _pageStage(PrevZCSigStates_Velnor_Dorvik_V6c& zc)
{
    if (NavigationKeyReleased(&zc.ExitEdit_Trig_ZCE, KEYINDEX_5)) RAMVariables.EditMode = 0;
    if (NavigationKeyPressed(&zc.EditPage_Trig_ZCE, KEYINDEX_3)) RAMVariables.EditPage = 1;
    Velnor_Dorvik_V6c_QuadNext(ButtonBarIsKeyPressed(KEYINDEX_2) ? 1 : 0, &zc.QuadNext_Trig_ZCE_k);
    if (NavigationKeyReleased(&zc.QuadPrev_Trig_ZCE_k, KEYINDEX_1)) Trigger_QuadPrev();
    _bar(BUTTONBARMODE_VISIBLE_ALWAYS);
    _face(KEYINDEX_5, &image_EZbDq);
    _face(KEYINDEX_4, &image_dcZTj);
    _face(KEYINDEX_3, &image_l_nCU);
    _face(KEYINDEX_2, &image_RECQ9);
    _face(KEYINDEX_1, &image_qjmfs);
}

// Edit mode, choosing gauges: key 3 moves to the next cell, keys 2 and 1 step the gauge
// of the cell, key 5 goes back to stage page.
static void _gaugeStage(PrevZCSigStates_Velnor_Dorvik_V6c& zc)
{
    uint8_T& cell = EEVariables_RAMShadow.SELECTED_QUAD;
    if (NavigationKeyPressed(&zc.EditNextQuad_Trig_ZCE, KEYINDEX_3))
        cell = cell >= PROFILE_CELLS ? 1 : (uint8_T)(cell + 1);
    if (NavigationKeyReleased(&zc.NextGauge_Trig_ZCE, KEYINDEX_2)) Trigger_Quad_NextGauge();
    if (NavigationKeyReleased(&zc.PrevGauge_Trig_ZCE, KEYINDEX_1)) Trigger_Quad_PrevGauge();
    if (NavigationKeyReleased(&zc.ExitGauge_Trig_ZCE, KEYINDEX_5)) RAMVariables.EditPage = 0;
    if (cell >= 1 && cell <= PROFILE_CELLS) _face(KEYINDEX_3, m_cellFaces[cell - 1]);
    _bar(BUTTONBARMODE_VISIBLE_ALWAYS);
    _face(KEYINDEX_5, &image_K8cmV);
    _face(KEYINDEX_4, &image_dcZTj);
    _face(KEYINDEX_2, &image_EXOMT);
    _face(KEYINDEX_1, &image_Ydt_p);
}

// Outside edit mode: keys 1 and 2 page, key 3 held starts edit mode, key 5 held opens the
// main menu.
static void _normalStage(PrevZCSigStates_Velnor_Dorvik_V6c& zc)
{
    if (_held(&m_editHold, &DWork.quorin_delta_time_DWORK1, KEYINDEX_3)) {
        RAMVariables.EditMode = 1;
        _resetHolds();
    }
    if (_held(&m_menuHold, &DWork.quorin_delta_time_DWORK1_i, KEYINDEX_5)) MMIScreenGoto(SCREENID_MENU1);
    Velnor_Dorvik_V6c_QuadNext(ButtonBarIsKeyPressed(KEYINDEX_2) ? 1 : 0, &zc.QuadNext_Trig_ZCE);
    if (NavigationKeyReleased(&zc.QuadPrev_Trig_ZCE, KEYINDEX_1)) Trigger_QuadPrev();
    _bar(BUTTONBARMODE_INVISIBLE);
}

void QuadKeys(void)
{
    const bool shown = MMIGetScreenIdCurrent() == SCREENID_QUAD;
    Trigger_QuadNext_enabled = shown;
    Trigger_QuadPrev_enabled = shown;
    Trigger_Quad_NextGauge_enabled = shown;
    Trigger_Quad_PrevGauge_enabled = shown;
    RAMVariables_T& ram = RAMVariables;
    PrevZCSigStates_Velnor_Dorvik_V6c& zc = Velnor_Dorvik_V6c_PrevZCSigState;

    // Each stage is tested after the one before has acted, so that a stage entered by a
    // key runs in the same pass.
    DWork.EditPage_MODE = shown && ram.EditMode && !ram.EditPage;
    if (DWork.EditPage_MODE) _pageStage(zc);
    DWork.EditPage1_MODE = shown && ram.EditMode && ram.EditPage;
    if (DWork.EditPage1_MODE) _gaugeStage(zc);
    DWork.NoEdit_MODE = shown && !ram.EditMode;
    if (DWork.NoEdit_MODE) _normalStage(zc);
    else _resetHolds();
}

void QuadKeysTestReset(void)
{
    _resetHolds();
}
