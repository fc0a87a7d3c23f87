#include "eeprom_drv.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include "dash_root.h"
#include "platform_sysinfo.h"

namespace {

constexpr const char* EEPROM_FOLDER = "/app/data/config";

U8 m_EEPROMData[EEPROM_SIZE];      // the live image
U8 m_EEPROMDataCopy[EEPROM_SIZE];  // the thread's snapshot of it
char m_EEPROMFilename[ROOT_PATH_MAX];
char m_EEPROMFilenameOld[ROOT_PATH_MAX];
char m_EEPROMFolder[ROOT_PATH_MAX];

// Guards the image and both flags.
pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t m_condition = PTHREAD_COND_INITIALIZER;
U32 m_bEEPROMDataChanged = 0;
U32 m_bRunning = 0;
pthread_t m_threadHandle;
BOOL m_bThreadStarted = 0;  // init and deinit only, both on the main thread

std::atomic<EEPROM_SAVE_HOOK_T> m_saveHook{nullptr};

}  // namespace

// Forms ROOT + folder + "/" + name + suffix; an empty path when it does not fit, which
// every later open then fails.
static void _formPath(char* path, const char* suffix)
{
    char plain[ROOT_PATH_MAX];
    const int n = snprintf(plain, sizeof(plain), "%s/%s-eeprom.dat%s", EEPROM_FOLDER, GetPlatformAppName(), suffix);
    if (n < 0 || (size_t)n >= sizeof(plain) || !root_path(path, ROOT_PATH_MAX, plain)) path[0] = '\0';
}

// Reads up to the image's size from the file; 1 when it gave all of it.
static BOOL _loadFile(const char* path)
{
    const int fd = open_regular(path, O_RDONLY);
    if (fd < 0) return 0;
    size_t got = 0;
    while (got < EEPROM_SIZE) {
        const ssize_t n = read(fd, m_EEPROMData + got, EEPROM_SIZE - got);
        if (n <= 0) break;
        got += (size_t)n;
    }
    close(fd);
    return got == EEPROM_SIZE;
}

// Makes the folder's entries durable, so that the rename reaches flash no later than
// the file written after it.
static void _syncFolder(void)
{
    const int fd = open(m_EEPROMFolder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    fsync(fd);
    close(fd);
}

// 1 when the load would take the file.
static BOOL _isWhole(const char* path)
{
    struct stat st;
    return stat(path, &st) == 0 && st.st_size >= EEPROM_SIZE;
}

// The current file becomes the old one first: a new current file reaches full length
// only by a completed write, and a shorter one is never loaded. A current file cut short
// by an earlier loss stays where it is: moved, it would replace the one whole file there
// is, and a second loss before this write ends would leave none.
static void _saveSnapshot(void)
{
    // The file is ours: anything else under its name (a FIFO, a device node) goes.
    struct stat st;
    if (lstat(m_EEPROMFilename, &st) == 0 && !S_ISREG(st.st_mode) && !S_ISDIR(st.st_mode)) unlink(m_EEPROMFilename);
    const BOOL whole = _isWhole(m_EEPROMFilename);
    if (whole) {
        rename(m_EEPROMFilename, m_EEPROMFilenameOld);
        _syncFolder();
    }
    // A whole file the rename failed to move is overwritten in place. A short one is
    // emptied first, so that a cut during this write leaves it short again, never a
    // full-length mixture of two records.
    const int fd = open_regular(m_EEPROMFilename, O_WRONLY | O_CREAT | (whole ? 0 : O_TRUNC), 0755);
    if (fd < 0) return;  // this change stays in memory; the next one tries again
    if (write(fd, m_EEPROMDataCopy, EEPROM_SIZE) == EEPROM_SIZE) fsync(fd);
    close(fd);
}

static void* _eepromThread(void*)
{
    for (;;) {
        pthread_mutex_lock(&m_mutex);
        if (!m_bRunning) {
            pthread_mutex_unlock(&m_mutex);
            break;
        }
        // The flags are tested under the lock that deinit sets them under, so its
        // wake-up cannot fall between the test and the wait.
        while (!m_bEEPROMDataChanged && m_bRunning) pthread_cond_wait(&m_condition, &m_mutex);
        if (!m_bEEPROMDataChanged) {
            pthread_mutex_unlock(&m_mutex);
            break;
        }
        m_bEEPROMDataChanged = 0;
        memcpy(m_EEPROMDataCopy, m_EEPROMData, EEPROM_SIZE);
        pthread_mutex_unlock(&m_mutex);

        // Writes from here on set the flag again: any number of them is one more save.
        const EEPROM_SAVE_HOOK_T hook = m_saveHook.load();
        if (hook) hook(m_EEPROMDataCopy);
        _saveSnapshot();
    }
    return nullptr;
}

void eeprom_init(void)
{
    if (m_bThreadStarted) eeprom_deinit();
    _formPath(m_EEPROMFilename, "");
    _formPath(m_EEPROMFilenameOld, ".old");
    if (!root_path(m_EEPROMFolder, sizeof(m_EEPROMFolder), EEPROM_FOLDER)) m_EEPROMFolder[0] = '\0';

    pthread_mutex_lock(&m_mutex);
    // A short read leaves part of the image from that file: the next step replaces all.
    if (!_loadFile(m_EEPROMFilename) && !_loadFile(m_EEPROMFilenameOld)) memset(m_EEPROMData, 0xFF, EEPROM_SIZE);
    m_bRunning = 1;
    m_bEEPROMDataChanged = 0;
    pthread_mutex_unlock(&m_mutex);

    if (pthread_create(&m_threadHandle, nullptr, _eepromThread, nullptr) != 0) {
        puts("EEPROM: cannot create the store thread, settings are kept in memory only");
        return;
    }
    m_bThreadStarted = 1;
}

void eeprom_deinit(void)
{
    if (!m_bThreadStarted) return;
    pthread_mutex_lock(&m_mutex);
    m_bRunning = 0;
    pthread_cond_signal(&m_condition);
    pthread_mutex_unlock(&m_mutex);
    pthread_join(m_threadHandle, nullptr);
    m_bThreadStarted = 0;
}

// The part of [offset, offset + length) inside the image, without overflow.
static U32 _inImage(U32 offset, U32 length)
{
    if (offset >= EEPROM_SIZE) return 0;
    const U32 room = EEPROM_SIZE - offset;
    return length < room ? length : room;
}

void eeprom_read(U32 offset, void* destination, U32 length)
{
    const U32 n = _inImage(offset, length);
    pthread_mutex_lock(&m_mutex);
    if (n) memcpy(destination, m_EEPROMData + offset, n);
    pthread_mutex_unlock(&m_mutex);
    if (n < length) memset(static_cast<U8*>(destination) + n, 0xFF, length - n);
}

void eeprom_write(U32 offset, const void* source, U32 length)
{
    const U32 n = _inImage(offset, length);
    if (n == 0) return;
    pthread_mutex_lock(&m_mutex);
    memcpy(m_EEPROMData + offset, source, n);
    m_bEEPROMDataChanged = 1;
    pthread_cond_signal(&m_condition);
    pthread_mutex_unlock(&m_mutex);
}

void eeprom_test_set_save_hook(EEPROM_SAVE_HOOK_T hook)
{
    m_saveHook.store(hook);
}
