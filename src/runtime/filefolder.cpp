#include "filefolder.h"

#include <climits>
#include <cstring>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "dash_root.h"

namespace {

constexpr const char* m_paFolderLocations[FOLDERLOC_MAX] = {
    "/app", "/app/bin", "/app/data", "/app/data/config", "/app/data/log", "/app/event", "/media", "/tmp",
};

constexpr size_t FILEFOLDER_PATH_SIZE = ROOT_PATH_MAX;

}  // namespace

// True when a part of the relative path is "..": it could leave its folder, and no
// caller of the dash has a reason to write one.
static bool _climbsOut(const char* rel)
{
    for (const char* part = rel; *part;) {
        const char* end = strchr(part, '/');
        const size_t length = end ? (size_t)(end - part) : strlen(part);
        if (length == 2 && part[0] == '.' && part[1] == '.') return true;
        if (!end) break;
        part = end + 1;
    }
    return false;
}

// Folder, "/" and relative path, backslashes made slashes, trailing slashes dropped.
// `rootLength` gets the length of the device root in front of the folder. A path
// that does not fit is refused rather than cut, since a cut one names another entry.
static BOOL _normalise(FOLDERLOC_T location, const char* path, char* out, size_t size, size_t* rootLength = nullptr)
{
    if (!out || size == 0) return 0;
    out[0] = '\0';
    if ((U32)location >= FOLDERLOC_MAX || !path) return 0;
    char folder[ROOT_PATH_MAX];
    if (!root_path(folder, sizeof(folder), m_paFolderLocations[location])) return 0;
    const size_t folderLength = strlen(folder);
    const int n = snprintf(out, size, "%s/%s", folder, path);
    if (n < 0 || (size_t)n >= size) {
        out[0] = '\0';
        return 0;
    }
    // Only the relative part: the device root is the host's business.
    char* rel = out + folderLength + 1;
    for (char* p = rel; *p; p++) {
        if (*p == '\\') *p = '/';
    }
    if (_climbsOut(rel)) {
        out[0] = '\0';
        return 0;
    }
    size_t length = (size_t)n;
    while (length > 1 && out[length - 1] == '/') out[--length] = '\0';
    if (rootLength) *rootLength = folderLength - strlen(m_paFolderLocations[location]);
    return 1;
}

static BOOL _stat(FOLDERLOC_T location, const char* path, struct stat* st)
{
    char full[FILEFOLDER_PATH_SIZE];
    return _normalise(location, path, full, sizeof(full)) && stat(full, st) == 0;
}

BOOL FolderExists(FOLDERLOC_T location, const char* path)
{
    struct stat st;
    return _stat(location, path, &st) && S_ISDIR(st.st_mode);
}

BOOL FolderCreate(FOLDERLOC_T location, const char* path)
{
    char full[FILEFOLDER_PATH_SIZE];
    return _normalise(location, path, full, sizeof(full)) && mkdir(full, 0777) == 0;
}

BOOL FolderCreateRecursive(FOLDERLOC_T location, const char* path)
{
    char full[FILEFOLDER_PATH_SIZE];
    size_t rootLength = 0;
    if (!_normalise(location, path, full, sizeof(full), &rootLength)) return 0;
    // The walk starts at the device's own "/": the root in front already exists.
    for (size_t i = rootLength + 1; full[i]; i++) {
        if (full[i] != '/') continue;
        full[i] = '\0';
        if (access(full, F_OK) != 0) mkdir(full, 0777);
        full[i] = '/';
    }
    if (access(full, F_OK) != 0) mkdir(full, 0777);
    return 1;
}

BOOL FolderRemove(FOLDERLOC_T location, const char* path)
{
    char full[FILEFOLDER_PATH_SIZE];
    return _normalise(location, path, full, sizeof(full)) && rmdir(full) == 0;
}

U64 FolderGetFreeSpace(FOLDERLOC_T location, const char* path)
{
    char full[FILEFOLDER_PATH_SIZE];
    struct statvfs vfs;
    if (!_normalise(location, path, full, sizeof(full)) || statvfs(full, &vfs) != 0) return 0;
    return (U64)vfs.f_bfree * vfs.f_bsize;
}

BOOL FolderGetFullPath(FOLDERLOC_T location, const char* path, char* buffer, U32 size)
{
    return _normalise(location, path, buffer, size);
}

BOOL FileExists(FOLDERLOC_T location, const char* path)
{
    struct stat st;
    return _stat(location, path, &st) && !S_ISDIR(st.st_mode);
}

S32 FileSize(FOLDERLOC_T location, const char* path)
{
    struct stat st;
    if (!_stat(location, path, &st) || st.st_size > INT32_MAX) return -1;
    return (S32)st.st_size;
}

BOOL FileRename(FOLDERLOC_T fromLocation, const char* fromPath, FOLDERLOC_T toLocation, const char* toPath)
{
    char from[FILEFOLDER_PATH_SIZE];
    char to[FILEFOLDER_PATH_SIZE];
    return _normalise(fromLocation, fromPath, from, sizeof(from)) && _normalise(toLocation, toPath, to, sizeof(to)) &&
           rename(from, to) == 0;
}

BOOL FileRemove(FOLDERLOC_T location, const char* path)
{
    char full[FILEFOLDER_PATH_SIZE];
    return _normalise(location, path, full, sizeof(full)) && remove(full) == 0;
}

FILE_T* FileOpen(FOLDERLOC_T location, const char* path, const char* mode)
{
    char full[FILEFOLDER_PATH_SIZE];
    if (!mode || !_normalise(location, path, full, sizeof(full))) return nullptr;
    // Event files and anything on a stick: a FIFO or device node there must not block.
    return fopen_regular(full, mode);
}

S32 FileClose(FILE_T* file)
{
    return file ? fclose(file) : EOF;
}

U32 FileRead(FILE_T* file, void* buffer, U32 size)
{
    return file && buffer ? (U32)fread(buffer, 1, size, file) : 0;
}

char* FileGetString(FILE_T* file, char* buffer, U32 size)
{
    if (!file || !buffer || size == 0) return nullptr;
    return fgets(buffer, size > INT_MAX ? INT_MAX : (int)size, file);
}

U32 FileWrite(FILE_T* file, const void* buffer, U32 size)
{
    return file && buffer ? (U32)fwrite(buffer, 1, size, file) : 0;
}

S32 FilePutString(FILE_T* file, const char* text)
{
    return file && text ? fputs(text, file) : EOF;
}

S32 FilePosition(FILE_T* file)
{
    if (!file) return -1;
    const long position = ftell(file);
    return position > INT32_MAX ? -1 : (S32)position;
}

BOOL FileSeek(FILE_T* file, S32 offset, U32 origin)
{
    if (!file) return 0;
    const int whence = origin == FILESEEK_CUR ? SEEK_CUR : origin == FILESEEK_END ? SEEK_END : SEEK_SET;
    return fseek(file, offset, whence) == 0;
}

BOOL FileIsEof(FILE_T* file)
{
    return file && feof(file) ? 1 : 0;
}

BOOL FileFlush(FILE_T* file)
{
    return file && fflush(file) == 0;
}

BOOL FileSync(FILE_T* file)
{
    if (!file) return 0;
    // Results unused: a stick pulled under a running log must not stop the caller.
    fflush(file);
    fdatasync(fileno(file));
    return 1;
}
