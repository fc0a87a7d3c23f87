#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "dash_root.h"
#include "filefolder.h"
#include "test_root.h"

namespace {

bool IsDir(const std::string& path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool Exists(const std::string& path)
{
    struct stat st;
    return lstat(path.c_str(), &st) == 0;
}

std::string FullPath(FOLDERLOC_T location, const char* path)
{
    char buf[ROOT_PATH_MAX];
    if (!FolderGetFullPath(location, path, buf, sizeof(buf))) return "<refused>";
    return buf;
}

TEST(FolderPaths, BackslashesAndTrailingSlashesNameTheSameEntry)
{
    TestRoot root;
    EXPECT_EQ(FullPath(FOLDERLOC_LOG, "run\\2024\\"), root.Abs("app/data/log/run/2024"));
    EXPECT_EQ(FullPath(FOLDERLOC_MEDIA, ""), root.Abs("media")) << "an empty path is the folder itself";
    EXPECT_EQ(FullPath(FOLDERLOC_TMP, "//"), root.Abs("tmp"));

    root.Write("app/data/log/run/a.csv", "x");
    EXPECT_TRUE(FolderExists(FOLDERLOC_LOG, "run\\"));
    EXPECT_TRUE(FolderExists(FOLDERLOC_DATA, "log/run/"));
    EXPECT_TRUE(FileExists(FOLDERLOC_LOG, "run\\a.csv"));
    EXPECT_TRUE(FileExists(FOLDERLOC_LOG, "run/a.csv/"));
    EXPECT_FALSE(FileExists(FOLDERLOC_LOG, "run")) << "a folder is no file";
    EXPECT_FALSE(FolderExists(FOLDERLOC_LOG, "run/a.csv")) << "a file is no folder";
    EXPECT_FALSE(FileExists(FOLDERLOC_LOG, "run/b.csv"));
}

TEST(FolderPaths, PartsThatClimbOutOfTheFolderAreRefused)
{
    TestRoot root;
    root.Write("etc/VERSION", "120\n");
    root.Write("tmp/x", "");
    EXPECT_FALSE(FileExists(FOLDERLOC_MEDIA, "../etc/VERSION"));
    EXPECT_EQ(FileOpen(FOLDERLOC_MEDIA, "..\\etc\\VERSION", "r"), nullptr);
    EXPECT_EQ(FileOpen(FOLDERLOC_TMP, "sub/../../etc/VERSION", "a"), nullptr);
    EXPECT_FALSE(FileRemove(FOLDERLOC_TMP, "../etc/VERSION"));
    EXPECT_FALSE(FileRename(FOLDERLOC_TMP, "x", FOLDERLOC_TMP, "../x"));
    EXPECT_EQ(FileSize(FOLDERLOC_BIN, "../../etc/VERSION"), -1);
    EXPECT_EQ(FullPath(FOLDERLOC_TMP, ".."), "<refused>");
    EXPECT_FALSE(FolderCreateRecursive(FOLDERLOC_TMP, "a/../../escaped"));
    EXPECT_FALSE(Exists(root.Abs("escaped")));
    EXPECT_FALSE(Exists(root.Abs("tmp/a"))) << "nothing is made of a refused path";
    EXPECT_TRUE(Exists(root.Abs("etc/VERSION")));
    EXPECT_TRUE(Exists(root.Abs("tmp/x")));

    // Dots inside a name are ordinary.
    for (const char* name : {"..a", "a..", "...", "./b"}) {
        FILE_T* f = FileOpen(FOLDERLOC_TMP, name, "w");
        EXPECT_NE(f, nullptr) << name;
        FileClose(f);
    }
}

TEST(FolderPaths, PathThatDoesNotFitIsRefusedNotCut)
{
    TestRoot root;
    char small[16];
    memset(small, 'x', sizeof(small));
    EXPECT_FALSE(FolderGetFullPath(FOLDERLOC_TMP, "a", small, sizeof(small)));
    EXPECT_STREQ(small, "");

    // Nested folders that fill the path buffer almost to the end, so that a name
    // below them, cut at the buffer's end, would be a valid other name.
    const size_t base = root.Abs("tmp/").size();
    const std::string level(40, 'd');
    std::string dirs;
    while (base + dirs.size() + level.size() + 1 < ROOT_PATH_MAX - 10) dirs += level + "/";
    ASSERT_TRUE(FolderCreateRecursive(FOLDERLOC_TMP, dirs.c_str()));
    ASSERT_TRUE(FolderExists(FOLDERLOC_TMP, dirs.c_str()));
    const std::string name = dirs + std::string(ROOT_PATH_MAX + 4 - base - dirs.size(), 'n');
    EXPECT_EQ(FileOpen(FOLDERLOC_TMP, name.c_str(), "w"), nullptr);
    EXPECT_FALSE(FolderCreateRecursive(FOLDERLOC_TMP, name.c_str()));
    DIR* deepest = opendir(root.Abs("tmp/" + dirs).c_str());
    ASSERT_NE(deepest, nullptr);
    int entries = 0;
    while (const struct dirent* e = readdir(deepest)) {
        if (strcmp(e->d_name, ".") != 0 && strcmp(e->d_name, "..") != 0) entries++;
    }
    closedir(deepest);
    EXPECT_EQ(entries, 0) << "no entry under a cut name";
}

TEST(Folders, RecursiveCreationMakesEveryMissingLevel)
{
    TestRoot root;  // empty: not even "app" is there
    EXPECT_TRUE(FolderCreateRecursive(FOLDERLOC_LOG, "2024\\05\\run\\"));
    EXPECT_TRUE(IsDir(root.Abs("app/data/log/2024/05/run")));
    root.Write("app/data/log/2024/05/run/a.csv", "kept");

    EXPECT_TRUE(FolderCreateRecursive(FOLDERLOC_LOG, "2024/05/run"));
    EXPECT_EQ(root.Read("app/data/log/2024/05/run/a.csv"), "kept") << "a second call changes nothing";

    // A file where a level should be: the failure is not reported.
    root.Write("tmp/blocker", "");
    EXPECT_TRUE(FolderCreateRecursive(FOLDERLOC_TMP, "blocker/below"));
    EXPECT_FALSE(FolderExists(FOLDERLOC_TMP, "blocker/below"));

    EXPECT_GT(FolderGetFreeSpace(FOLDERLOC_LOG, "2024"), 0u);
    EXPECT_EQ(FolderGetFreeSpace(FOLDERLOC_LOG, "missing"), 0u);
}

TEST(Files, RenameMovesBetweenFoldersOfOneFileSystem)
{
    TestRoot root;
    root.Write("tmp/row.csv", "1,2\n");
    ASSERT_TRUE(FolderCreateRecursive(FOLDERLOC_LOG, ""));
    EXPECT_TRUE(FileRename(FOLDERLOC_TMP, "row.csv", FOLDERLOC_LOG, "kept.csv"));
    EXPECT_FALSE(FileExists(FOLDERLOC_TMP, "row.csv"));
    EXPECT_EQ(root.Read("app/data/log/kept.csv"), "1,2\n");
    EXPECT_FALSE(FileRename(FOLDERLOC_TMP, "row.csv", FOLDERLOC_LOG, "again.csv")) << "source gone";
}

// The media folder on another file system, as a mounted stick is: rename cannot move
// a file there, and says so.
TEST(Files, RenameAcrossFileSystemsIsRefused)
{
    TestRoot root;
    char tmpl[] = "/dev/shm/motordash-media-XXXXXX";
    if (!mkdtemp(tmpl)) GTEST_SKIP() << "no /dev/shm";
    const std::string stick = tmpl;
    struct stat rootSt, stickSt;
    ASSERT_EQ(stat(root.Path().c_str(), &rootSt), 0);
    ASSERT_EQ(stat(stick.c_str(), &stickSt), 0);
    if (rootSt.st_dev == stickSt.st_dev) {
        rmdir(stick.c_str());
        GTEST_SKIP() << "/tmp and /dev/shm are one file system here";
    }
    ASSERT_EQ(symlink(stick.c_str(), root.Abs("media").c_str()), 0);
    root.Write("tmp/log.csv", "data");

    EXPECT_FALSE(FileRename(FOLDERLOC_TMP, "log.csv", FOLDERLOC_MEDIA, "log.csv"));
    EXPECT_TRUE(FileExists(FOLDERLOC_TMP, "log.csv")) << "the source stays";
    EXPECT_FALSE(FileExists(FOLDERLOC_MEDIA, "log.csv"));
    EXPECT_TRUE(FolderExists(FOLDERLOC_MEDIA, "")) << "through the link";

    remove((stick + "/log.csv").c_str());
    rmdir(stick.c_str());
}

TEST(Streams, WriteSeekReadRoundTrip)
{
    TestRoot root;
    ASSERT_TRUE(FolderCreateRecursive(FOLDERLOC_TMP, ""));
    FILE_T* f = FileOpen(FOLDERLOC_TMP, "s.txt", "w+");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(FileWrite(f, "hello\nworld\n", 12), 12u);
    EXPECT_GE(FilePutString(f, "tail"), 0);
    EXPECT_EQ(FilePosition(f), 16);
    EXPECT_TRUE(FileFlush(f));
    EXPECT_TRUE(FileSync(f));
    EXPECT_EQ(FileSize(FOLDERLOC_TMP, "s.txt"), 16) << "flushed";

    EXPECT_TRUE(FileSeek(f, 2, 5)) << "an unknown origin seeks from the start";
    EXPECT_EQ(FilePosition(f), 2);
    EXPECT_TRUE(FileSeek(f, 4, FILESEEK_CUR));
    EXPECT_EQ(FilePosition(f), 6);
    char line[32];
    EXPECT_STREQ(FileGetString(f, line, sizeof(line)), "world\n") << "the line end stays";
    EXPECT_TRUE(FileSeek(f, -4, FILESEEK_END));
    EXPECT_FALSE(FileIsEof(f));
    char buf[8] = {};
    EXPECT_EQ(FileRead(f, buf, sizeof(buf)), 4u);
    EXPECT_STREQ(buf, "tail");
    EXPECT_TRUE(FileIsEof(f));
    EXPECT_EQ(FileGetString(f, line, sizeof(line)), nullptr);
    EXPECT_FALSE(FileSeek(f, -1, FILESEEK_SET));
    EXPECT_EQ(FileClose(f), 0);

    EXPECT_EQ(FileOpen(FOLDERLOC_TMP, "missing", "r"), nullptr);
    EXPECT_EQ(FileSize(FOLDERLOC_TMP, "missing"), -1);
}

}  // namespace

// A FIFO or a device node where a file is expected is refused at once, in every mode,
// and a regular file still opens in each.
TEST(Streams, OnlyRegularFilesOpenAndNothingBlocks)
{
    TestRoot root;
    root.Write("app/event/plain", "text");
    ASSERT_EQ(mkfifo(root.Abs("app/event/fifo").c_str(), 0644), 0);
    for (const char* mode : {"r", "rb", "r+", "w", "a", "a+"}) {
        EXPECT_EQ(FileOpen(FOLDERLOC_EVENT, "fifo", mode), nullptr) << mode;
        FILE_T* f = FileOpen(FOLDERLOC_EVENT, "plain", mode);
        EXPECT_NE(f, nullptr) << mode;
        FileClose(f);
    }
    EXPECT_EQ(root_fopen_regular("/dev/null", "r"), nullptr);
    EXPECT_EQ(open_regular("/dev/zero", O_RDONLY), -1);
    FILE_T* made = FileOpen(FOLDERLOC_EVENT, "new", "wx");
    ASSERT_NE(made, nullptr) << "a missing file is created";
    FileClose(made);
    EXPECT_EQ(FileOpen(FOLDERLOC_EVENT, "new", "wx"), nullptr) << "x: only a new one";
}
