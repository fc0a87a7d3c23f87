#include "touch_drv.h"

#include <cstdio>
#include <cstdlib>
#include <tslib.h>
#include <unistd.h>

#include "dash_root.h"

namespace {

constexpr const char* TOUCH_DEFAULT_DEVICE = "/dev/input/event0";

struct tsdev* m_pTsDev = nullptr;
BOOL m_isCalibrated = FALSE;
BOOL m_isCalibrationInProcess = FALSE;
TOUCHSTATE_T m_touchState = {0, 0, TOUCH_STATE_NONE};

}  // namespace

void touch_init(void)
{
    touch_deinit();
    const char* name = getenv("TSLIB_TSDEVICE");
    char path[ROOT_PATH_MAX];
    if (!root_path(path, sizeof(path), name ? name : TOUCH_DEFAULT_DEVICE)) return;
    m_pTsDev = ts_open(path, 1);
    if (!m_pTsDev) {
        perror("ts_open");
        return;
    }
    if (ts_config(m_pTsDev) != 0) perror("ts_config");
    const char* calib = getenv("TSLIB_CALIBFILE");
    m_isCalibrated = calib && access(calib, R_OK) == 0;
}

void touch_deinit(void)
{
    if (m_pTsDev) ts_close(m_pTsDev);
    m_pTsDev = nullptr;
}

void touch_get_state(TOUCHSTATE_T* state)
{
    if (m_pTsDev && !m_isCalibrationInProcess) {
        struct ts_sample sample;
        if (ts_read(m_pTsDev, &sample, 1) == 1) {
            if (sample.pressure != 0) {
                m_touchState = {sample.x, sample.y, TOUCH_STATE_PRESSED};
            } else {
                m_touchState.state = TOUCH_STATE_RELEASED;
            }
        }
    }
    if (state) *state = m_touchState;
}

BOOL touch_is_calibrated(void)
{
    return m_isCalibrated;
}
