#include "usb_log.h"

#include <cmath>
#include <cstdio>

#include "Velnor_Dorvik_V6c.h"
#include "data.h"
#include "eventhandler.h"
#include "filefolder.h"
#include "log_columns.h"
#include "text_format.h"
#include "timer_drv.h"

namespace {

// On the stick mounted as disk_sda1: the build, then the file's number.
constexpr const char* LOG_NAME_FORMAT = "disk_sda1/Velnor_v%03.0F_CAN_%08.0F.csv";
constexpr const char* LOG_TIME_FORMAT = "2000-01-%02u::%02u:%02u:%02u.%03u";

// The header's first piece; the other four are the model's constants.
constexpr char Constant2_Value_h[] = "Interval (ms),1\n";
static_assert(sizeof(Constant2_Value_h) - 1 == 16);

constexpr uint32_T SYNC_PERIOD_MS = 500;
constexpr uint32_T MS_PER_DAY = 24u * 60 * 60 * 1000;

char m_nameChars[LOG_NAME_SIZE];
char m_rowChars[LOG_ROW_SIZE];
S_String m_fileName = {sizeof(m_nameChars), m_nameChars};
S_String m_row = {sizeof(m_rowChars), m_rowChars};

struct PIECE_T {
    const char* text;
    uint32_T size;
};
constexpr PIECE_T m_header[] = {
    {Constant2_Value_h, sizeof(Constant2_Value_h) - 1},
    {Velnor_Dorvik_V6c_ConstP.Constant6_Value_e, sizeof(Velnor_Dorvik_V6c_ConstP.Constant6_Value_e)},
    {Velnor_Dorvik_V6c_ConstP.Constant6_Value_i, sizeof(Velnor_Dorvik_V6c_ConstP.Constant6_Value_i)},
    {Velnor_Dorvik_V6c_ConstP.Constant7_Value_f, sizeof(Velnor_Dorvik_V6c_ConstP.Constant7_Value_f)},
    {Velnor_Dorvik_V6c_ConstP.Constant7_Value_i, sizeof(Velnor_Dorvik_V6c_ConstP.Constant7_Value_i)},
};

}  // namespace

// Lets the file go: synced first, so that a stick pulled later without an eject still
// holds every row. No handle is kept that could be touched afterwards.
static void _close(void)
{
    if (B.Merge) {
        FileSync(B.Merge);
        FileClose(B.Merge);
        B.Merge = nullptr;
    }
    RAMVariables.FileOpen = 0;
    RAMVariables.LoggingActive = 0;
}

// The next number's file. One that exists is continued at its end, with a second header;
// anything else there that is not a plain file (a folder, a FIFO) fails the open, which
// never blocks. The number moves on with every attempt, so a failed one is not retried.
static void _open(void)
{
    const uint32_T number = EEVariables_RAMShadow.LogNumber + 1;
    snprintf(m_fileName.string, m_fileName.size, LOG_NAME_FORMAT, (real_T)CONSTVariables.BuildNumber,
             (real_T)number);

    FILE_T* file;
    BOOL success;
    if (FileExists(FOLDERLOC_MEDIA, m_fileName.string) || FolderExists(FOLDERLOC_MEDIA, m_fileName.string)) {
        file = FileOpen(FOLDERLOC_MEDIA, m_fileName.string, "r+");
        success = FileSeek(file, 0, FILESEEK_END);
    } else {
        file = FileOpen(FOLDERLOC_MEDIA, m_fileName.string, "w");
        success = file != nullptr;
    }

    if (success) {
        // Piece by piece, each on the stick before the next is written.
        for (const PIECE_T& piece : m_header) {
            FileWrite(file, piece.text, piece.size);
            FileFlush(file);
            if (!FileSync(file)) break;
        }
        B.Merge = file;
        RAMVariables.LoggingActive = 1;
        RAMVariables.FileOpen = 1;
        RAMVariables.SyncCount = 0;
    } else if (file) {
        FileClose(file);
    }
    EEVariables_RAMShadow.LogNumber = number;
    RAMVariables.FileOpen_Success = success ? 1 : 0;
}

void UsbLogTrigger(void)
{
    RAMVariables_T& ram = RAMVariables;
    // The stick is asked about on every pass: that is how its insertion is noticed.
    const uint8_T request = EventHandlerIsUSBStickInserted() && B.Start_Log ? 1 : 0;
    B.LogicalOperator = request;

    // The edge state starts at 1, so a request present at power-up opens nothing until
    // it has been seen low. A request that ends, or a stick that goes, closes the file:
    // left open, it would be lost to the next file's handle, and so no file is ever open
    // when the next is tried. An eject still asked for holds the logger off.
    uint8_T& last = Velnor_Dorvik_V6c_PrevZCSigState.LogWrite_Trig_ZCE;
    if (request && !last && !ram.USER_Eject_Bool) _open();
    if (!request && last) _close();
    last = request;

    // The flag stays until the tool clears it; each pass finds nothing more to do.
    if (ram.USER_Eject_Bool) {
        _close();
        EventHandlerUSBStickEject();
    }
}

void UsbLogSync(uint32_T nowMs)
{
    RAMVariables_T& ram = RAMVariables;
    if (!ram.LoggingActive || !B.Merge) return;
    if ((real_T)nowMs - ram.LastSync > SYNC_PERIOD_MS || nowMs < DWork.UnitDelay_DSTATE_e2c) {
        if (FileSync(B.Merge)) {
            ram.SyncCount++;
            ram.LastSync = nowMs;
        }
        ram.SyncAttempts++;
    }
}

// One value behind a comma at `at`, written only as far as `limit`; the new end.
static uint32_T _appendValue(char* row, uint32_T at, uint32_T limit, real_T value)
{
    if (at >= limit) return limit;
    row[at++] = ',';
    const uint32_T room = limit - at;
    // Writes at most `room` characters and its terminator, which the buffer has room for.
    const int length = std::isfinite(value) ? TextFormatFixed(row + at, room + 1, 0, 2, value)
                                            : snprintf(row + at, room + 1, "%0.2F", value);
    return length < 0 ? at : at + ((uint32_T)length < room ? (uint32_T)length : room);
}

void Timer_aUXrF(void)
{
    if (!RAMVariables.LoggingActive || !B.LogicalOperator || !B.Start_Log || !B.Merge) return;

    // A row that does not fit is cut, but it keeps its line end: without it the next
    // row would run on in the same line and a reader would lose both.
    const uint32_T now = get_uptime_milliseconds();
    char* const row = m_row.string;
    const uint32_T limit = m_row.size - 1;
    uint32_T length = (uint32_T)snprintf(row, m_row.size, LOG_TIME_FORMAT, now / MS_PER_DAY + 1, now / 3600000 % 24,
                                         now / 60000 % 60, now / 1000 % 60, now % 1000);
    for (size_t i = 0; i < LOG_COLUMN_COUNT; i++) length = _appendValue(row, length, limit, LogColumnValue(i));
    if (length >= limit) length = limit - 1;
    row[length++] = '\n';
    row[length] = '\0';

    // A short write is not looked at: a full or pulled stick must not stop the task.
    FileWrite(B.Merge, row, length);
    FileFlush(B.Merge);
    RAMVariables.FrameCnt++;
}
