#include "eventhandler.h"

#include <cstring>
#include <pthread.h>
#include <sys/stat.h>

#include "dash_root.h"
#include "event_drv.h"
#include "filefolder.h"

namespace {

constexpr U32 USBSTICK_FOLDER_SIZE = 255;
constexpr U32 APP_COMMAND_MAX = 1023;
constexpr const char* SCRIPT_COMMAND_TMP = "script_command.tmp";

// Serialises every look at the state: the queries come from the tasks on the signal
// thread and from the screens on the main thread, and the file work of an update is
// not safe against itself. Taken inside the application lock, never around it.
pthread_mutex_t m_lock = PTHREAD_MUTEX_INITIALIZER;

USBSTICKSTATUS_T m_statusUSBStick = USBSTICKSTATUS_NOTPRESENT;
char m_pUSBStickFolder[USBSTICK_FOLDER_SIZE] = "";
BOOL m_bEventReceived = 0;
EVENTID_T m_eventId = EVENTID_EVENT1;

}  // namespace

// The stick's folder is there. A name that resolves to the media folder itself (empty,
// ".") is no stick: that folder never goes, and the state would never fall back.
static bool _stickFolderPresent(void)
{
    char media[ROOT_PATH_MAX];
    char stick[ROOT_PATH_MAX];
    struct stat mediaSt, stickSt;
    if (!FolderGetFullPath(FOLDERLOC_MEDIA, m_pUSBStickFolder, stick, sizeof(stick)) || stat(stick, &stickSt) != 0 ||
        !S_ISDIR(stickSt.st_mode)) {
        return false;
    }
    if (!FolderGetFullPath(FOLDERLOC_MEDIA, "", media, sizeof(media)) || stat(media, &mediaSt) != 0) return true;
    return stickSt.st_dev != mediaSt.st_dev || stickSt.st_ino != mediaSt.st_ino;
}

// The state update of every query; called with m_lock held.
static void _update(void)
{
    if (m_statusUSBStick != USBSTICKSTATUS_NOTPRESENT) {
        // The only way back, and how a stick pulled without an eject is noticed.
        if (!_stickFolderPresent()) {
            m_pUSBStickFolder[0] = '\0';
            m_statusUSBStick = USBSTICKSTATUS_NOTPRESENT;
        }
        return;
    }
    if (!FileExists(FOLDERLOC_MEDIA, USBINFOFILENAME)) return;
    FILE_T* file = FileOpen(FOLDERLOC_MEDIA, USBINFOFILENAME, "r");
    if (!file) return;
    char name[USBSTICK_FOLDER_SIZE] = "";
    const bool named = FileGetString(file, name, sizeof(name)) != nullptr && name[0] != '\0';
    FileClose(file);
    // Empty: the scripts may be still writing it. Leave it for the next query.
    if (!named) return;
    FileRemove(FOLDERLOC_MEDIA, USBINFOFILENAME);
    // Taken as it stands: a line feed stays part of the name.
    memcpy(m_pUSBStickFolder, name, sizeof(m_pUSBStickFolder));
    m_statusUSBStick = USBSTICKSTATUS_INSERTED;
}

static BOOL _isStatus(USBSTICKSTATUS_T status)
{
    pthread_mutex_lock(&m_lock);
    _update();
    const BOOL is = m_statusUSBStick == status;
    pthread_mutex_unlock(&m_lock);
    return is;
}

// The scripts' answer to an eject; called with m_lock held.
static void _serveAppCommand(void)
{
    char command[APP_COMMAND_MAX + 1] = "";
    FILE_T* file = FileOpen(FOLDERLOC_EVENT, EVENT_APP_COMMAND_FILENAME, "rb");
    if (!file) return;
    const U32 length = FileRead(file, command, APP_COMMAND_MAX);
    command[length] = '\0';
    FileClose(file);
    // Consumed whatever it says, so that an old answer is never served again.
    FileRemove(FOLDERLOC_EVENT, EVENT_APP_COMMAND_FILENAME);
    if (strncmp(command, EVENT_COMMAND_USBSTICK_EJECTREADY, strlen(EVENT_COMMAND_USBSTICK_EJECTREADY)) == 0) {
        m_statusUSBStick = USBSTICKSTATUS_EJECTED;
    }
}

// Written aside and renamed into place: the scripts act when the file appears, and
// must never find it empty or half written.
static void _writeScriptCommand(void)
{
    FILE_T* file = FileOpen(FOLDERLOC_EVENT, SCRIPT_COMMAND_TMP, "w");
    if (!file) return;
    const bool written = FilePutString(file, EVENT_COMMAND_USBSTICK_EJECT) >= 0;
    if (FileClose(file) == 0 && written) {
        FileRename(FOLDERLOC_EVENT, SCRIPT_COMMAND_TMP, FOLDERLOC_EVENT, EVENT_SCRIPT_COMMAND_FILENAME);
    } else {
        FileRemove(FOLDERLOC_EVENT, SCRIPT_COMMAND_TMP);
    }
}

// On the signal thread: only notes the event for the main loop.
static void _eventCallback(EVENTID_T eventId, S32, S32)
{
    pthread_mutex_lock(&m_lock);
    m_eventId = eventId;
    m_bEventReceived = 1;
    pthread_mutex_unlock(&m_lock);
}

void EventHandlerInit(void)
{
    event_register(_eventCallback);
}

void EventHandlerProcess(void)
{
    pthread_mutex_lock(&m_lock);
    if (m_bEventReceived) {
        m_bEventReceived = 0;
        // The second event is reserved and does nothing.
        if (m_eventId == EVENTID_EVENT1) _serveAppCommand();
    }
    pthread_mutex_unlock(&m_lock);
}

BOOL EventHandlerIsUSBStickRemoved(void)
{
    return _isStatus(USBSTICKSTATUS_NOTPRESENT);
}

BOOL EventHandlerIsUSBStickInserted(void)
{
    return _isStatus(USBSTICKSTATUS_INSERTED);
}

BOOL EventHandlerIsUSBStickEjected(void)
{
    return _isStatus(USBSTICKSTATUS_EJECTED);
}

void EventHandlerUSBStickEject(void)
{
    pthread_mutex_lock(&m_lock);
    if (m_statusUSBStick == USBSTICKSTATUS_INSERTED) {
        _writeScriptCommand();
        // Even when the command could not be written: the logger has let go already.
        m_statusUSBStick = USBSTICKSTATUS_EJECTING;
    }
    pthread_mutex_unlock(&m_lock);
}

const char* EventHandlerGetUSBStickPath(void)
{
    // A copy per thread: the other thread's next query may change the name.
    static thread_local char copy[USBSTICK_FOLDER_SIZE];
    pthread_mutex_lock(&m_lock);
    memcpy(copy, m_pUSBStickFolder, sizeof(copy));
    pthread_mutex_unlock(&m_lock);
    return copy;
}
