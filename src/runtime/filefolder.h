#pragma once
// File access of the device layer. Callers never give an absolute path: they name one
// of the fixed folders and a path relative to it. Backslashes count as slashes and
// trailing slashes are dropped, so a path written on another system works unchanged.
//
// A relative path that would climb out of its folder (a ".." part) or that does not
// fit a path buffer is refused: the operation fails as if the entry were missing.
#include <cstdio>

#include "dash_types.h"

enum FOLDERLOC_T : U32 {
    FOLDERLOC_APP = 0,
    FOLDERLOC_BIN = 1,
    FOLDERLOC_DATA = 2,
    FOLDERLOC_CONFIG = 3,
    FOLDERLOC_LOG = 4,
    FOLDERLOC_EVENT = 5,
    FOLDERLOC_MEDIA = 6,
    FOLDERLOC_TMP = 7,
    FOLDERLOC_MAX = 8,
};

// A C library stream.
typedef FILE FILE_T;

// Seek origins; any other value seeks from the start.
enum : U32 {
    FILESEEK_SET = 0,
    FILESEEK_CUR = 1,
    FILESEEK_END = 2,
};

BOOL FolderExists(FOLDERLOC_T location, const char* path);
BOOL FolderCreate(FOLDERLOC_T location, const char* path);
// Creates every missing level. 1 even when a mkdir fails; 0 only for a refused path.
BOOL FolderCreateRecursive(FOLDERLOC_T location, const char* path);
BOOL FolderRemove(FOLDERLOC_T location, const char* path);
// Free bytes of the file system holding the folder, 0 on failure.
U64 FolderGetFreeSpace(FOLDERLOC_T location, const char* path);
// The absolute path (device root included). 0 and an empty buffer for a refused path.
BOOL FolderGetFullPath(FOLDERLOC_T location, const char* path, char* buffer, U32 size);

BOOL FileExists(FOLDERLOC_T location, const char* path);
// -1 when missing, and for a size beyond what an S32 holds.
S32 FileSize(FOLDERLOC_T location, const char* path);
// Moves between folders; refused by the system across file systems.
BOOL FileRename(FOLDERLOC_T fromLocation, const char* fromPath, FOLDERLOC_T toLocation, const char* toPath);
BOOL FileRemove(FOLDERLOC_T location, const char* path);
FILE_T* FileOpen(FOLDERLOC_T location, const char* path, const char* mode);

// Stream operations. A null stream fails like the C library's error result.
S32 FileClose(FILE_T* file);
U32 FileRead(FILE_T* file, void* buffer, U32 size);
char* FileGetString(FILE_T* file, char* buffer, U32 size);
U32 FileWrite(FILE_T* file, const void* buffer, U32 size);
S32 FilePutString(FILE_T* file, const char* text);
// -1 on failure and beyond what an S32 holds.
S32 FilePosition(FILE_T* file);
BOOL FileSeek(FILE_T* file, S32 offset, U32 origin);
BOOL FileIsEof(FILE_T* file);
BOOL FileFlush(FILE_T* file);
// Flushes and puts the data on the medium; 1 for any open stream.
BOOL FileSync(FILE_T* file);
