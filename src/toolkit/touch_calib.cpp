#include "touch_calib.h"

#include "buzzer_drv.h"
#include "elements.h"
#include "freetype_api.h"
#include "images.h"
#include "lcd_blan.h"
#include "lcd_buffer.h"
#include "mmi.h"
#include "outimage.h"
#include "touch_drv.h"

namespace {

int m_curSample = 0;
TOUCHCALIBRATION_T m_touchCalData;
U32 m_eidIOUpgrading = 0;
// Passes since the cross moved: the cross is composed on screen before the blocking
// read stops the main loop.
int gettouch = 0;

// Top left corner of cross `sample`: the four corners, then the centre.
void _crossPosition(int sample, S32* x, S32* y)
{
    const S32 w = (S32)gScreenWidth, h = (S32)gScreenHeight;
    const S32 xs[5] = {40, w - 50, w - 50, 40, w / 2 - 10};
    const S32 ys[5] = {40, 40, h - 50, h - 50, h / 2 - 10};
    *x = xs[sample];
    *y = ys[sample];
}

}  // namespace

void CalibrateTouchEnter(void) {}

void CalibrateTouchExit(void) {}

void CalibrateTouchCreate(void)
{
    m_eidIOUpgrading = ElementGetNewId();
    vLcdBlankerEx(0, 0xFFFF);
    TextSetFont(FONT_INDEX_TTARIAL, 24, CENTER_TXT, 1);
    outtextxyftExEle(ELEMENTID_INVALID, (S32)gScreenWidth / 2, 30, "Calibrate Touch", 0xFFFE, 100, LAYER1);
    TextSetFont(FONT_INDEX_TTARIAL, 16, CENTER_TXT, 1);
    outtextxyftExEle(ELEMENTID_INVALID, (S32)gScreenWidth / 2, 80, "Touch each of the crosses as they appear", 0xFFFE,
                     100, LAYER1);
    m_curSample = 0;
    gettouch = 0;
    touch_start_calibration();
}

void CalibrateTouchUpdate(void)
{
    if (m_curSample < 5) {
        S32 x, y;
        _crossPosition(m_curSample, &x, &y);
        if (gettouch != 2) {
            ++gettouch;
        } else if (touch_calibration_sample(&m_touchCalData, x + 10, y + 10)) {
            ++m_curSample;
            gettouch = 0;
            buzzer_out_timed(100);
        }
        if (m_curSample < 5) _crossPosition(m_curSample, &x, &y);
        ElementFillPrevRect(m_eidIOUpgrading, 0xFFFF, LAYER2);
        if (m_curSample < 5) outimageExEle(m_eidIOUpgrading, x, y, &touch_cross, 100, ALPHA_OVERWRITE, LAYER2);
        return;
    }
    touch_calibrate(&m_touchCalData);
    touch_end_calibration();
    ElementFillPrevRect(m_eidIOUpgrading, 0xFFFF, LAYER2);
    vLcdBlankerEx(0, 0xFFFF);
    MMIScreenGotoPrev();
}
