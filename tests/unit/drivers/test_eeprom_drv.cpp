#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <fstream>
#include <functional>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include "eeprom_drv.h"
#include "platform_sysinfo.h"
#include "test_root.h"

namespace {

using namespace std::chrono_literals;

// File system results come from another thread: poll, with a deadline.
bool WaitFor(const std::function<bool()>& done, std::chrono::milliseconds limit = 10s)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

// The file's bytes; "" with `exists` false when it is missing.
std::string ReadFile(const std::string& path, bool* exists = nullptr)
{
    std::ifstream in(path, std::ios::binary);
    if (exists) *exists = in.good();
    return std::string(std::istreambuf_iterator<char>(in), {});
}

std::string Image()
{
    std::string image(EEPROM_SIZE, '\0');
    eeprom_read(0, image.data(), EEPROM_SIZE);
    return image;
}

void Write(U32 offset, const std::string& bytes)
{
    eeprom_write(offset, bytes.data(), (U32)bytes.size());
}

class EepromDrvTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        mkdir(root.Abs("app").c_str(), 0755);
        mkdir(root.Abs("app/data").c_str(), 0755);
        mkdir(root.Abs("app/data/config").c_str(), 0755);
        current = "app/data/config/" + std::string(GetPlatformAppName()) + "-eeprom.dat";
        old = current + ".old";
    }
    void TearDown() override
    {
        eeprom_deinit();
        eeprom_test_set_save_hook(nullptr);
    }
    std::string Current() const { return ReadFile(root.Abs(current)); }
    std::string Old() const { return ReadFile(root.Abs(old)); }
    bool CurrentHas(U32 offset, const std::string& bytes) const
    {
        const std::string f = Current();
        return f.size() == EEPROM_SIZE && f.compare(offset, bytes.size(), bytes) == 0;
    }

    TestRoot root;
    std::string current;
    std::string old;
};

TEST_F(EepromDrvTest, FirstStartWithoutFilesThenFirstSave)
{
    eeprom_init();
    EXPECT_EQ(Image(), std::string(EEPROM_SIZE, '\xFF'));

    Write(10, "abc");
    std::string back(3, '\0');
    eeprom_read(10, back.data(), 3);
    EXPECT_EQ(back, "abc") << "reads see a write at once";

    ASSERT_TRUE(WaitFor([&] { return CurrentHas(10, "abc"); }));
    std::string expected(EEPROM_SIZE, '\xFF');
    expected.replace(10, 3, "abc");
    EXPECT_EQ(Current(), expected);
    bool oldExists = true;
    ReadFile(root.Abs(old), &oldExists);
    EXPECT_FALSE(oldExists);
}

TEST_F(EepromDrvTest, EachSaveKeepsThePreviousFileAsOld)
{
    eeprom_init();
    Write(0, "first");
    ASSERT_TRUE(WaitFor([&] { return CurrentHas(0, "first"); }));
    Write(0, "later");
    ASSERT_TRUE(WaitFor([&] { return CurrentHas(0, "later"); }));
    const std::string o = Old();
    ASSERT_EQ(o.size(), (size_t)EEPROM_SIZE);
    EXPECT_EQ(o.substr(0, 5), "first");
}

TEST_F(EepromDrvTest, ShortCurrentFileFallsBackToOldAndIsLeftAlone)
{
    root.Write(current, std::string(EEPROM_SIZE - 1, '\x11'));
    root.Write(old, std::string(EEPROM_SIZE, '\x22'));
    eeprom_init();
    EXPECT_EQ(Image(), std::string(EEPROM_SIZE, '\x22'));
    eeprom_deinit();  // joined: nothing can touch the files any more
    EXPECT_EQ(Current(), std::string(EEPROM_SIZE - 1, '\x11'));
    EXPECT_EQ(Old(), std::string(EEPROM_SIZE, '\x22'));
}

TEST_F(EepromDrvTest, LongerFileIsTakenUpToTheImageSize)
{
    std::string file(EEPROM_SIZE + 1, '\0');
    for (size_t i = 0; i < file.size(); i++) file[i] = (char)(i % 251);
    root.Write(current, file);
    root.Write(old, std::string(EEPROM_SIZE, '\x22'));
    eeprom_init();
    EXPECT_EQ(Image(), file.substr(0, EEPROM_SIZE));
}

TEST_F(EepromDrvTest, BothFilesShortGiveAnErasedImageNotAMixture)
{
    root.Write(current, std::string(100, '\x11'));
    root.Write(old, std::string(EEPROM_SIZE - 1, '\x22'));
    eeprom_init();
    EXPECT_EQ(Image(), std::string(EEPROM_SIZE, '\xFF'));
}

// Holds each save in its hook until the test opens the gate, and keeps its snapshot.
struct SAVE_GATE_T {
    std::mutex m;
    std::condition_variable cv;
    bool open = false;
    std::vector<std::string> snapshots;
};
SAVE_GATE_T* g_gate;

void HoldingHook(const U8* image)
{
    std::unique_lock<std::mutex> lock(g_gate->m);
    g_gate->snapshots.emplace_back(reinterpret_cast<const char*>(image), EEPROM_SIZE);
    g_gate->cv.notify_all();
    g_gate->cv.wait(lock, [] { return g_gate->open; });
}

TEST_F(EepromDrvTest, WritesDuringASaveAreFoldedIntoOneMoreSave)
{
    SAVE_GATE_T gate;
    g_gate = &gate;
    eeprom_test_set_save_hook(HoldingHook);
    eeprom_init();

    Write(0, "X");
    {
        std::unique_lock<std::mutex> lock(gate.m);
        ASSERT_TRUE(gate.cv.wait_for(lock, 10s, [&] { return gate.snapshots.size() == 1; }));
    }
    // The thread is inside the first save now.
    Write(100, "A");
    Write(200, "B");
    {
        std::lock_guard<std::mutex> lock(gate.m);
        gate.open = true;
    }
    gate.cv.notify_all();
    ASSERT_TRUE(WaitFor([&] { return CurrentHas(100, "A") && CurrentHas(200, "B"); }));

    // One more write: its save must be the third, not a fourth behind a queue.
    Write(300, "C");
    ASSERT_TRUE(WaitFor([&] { return CurrentHas(300, "C"); }));
    std::lock_guard<std::mutex> lock(gate.m);
    ASSERT_EQ(gate.snapshots.size(), 3u);
    EXPECT_EQ(gate.snapshots[0].substr(0, 1), "X");
    EXPECT_EQ(gate.snapshots[0][100], '\xFF');
    EXPECT_EQ(gate.snapshots[1][100], 'A');
    EXPECT_EQ(gate.snapshots[1][200], 'B');
}

TEST_F(EepromDrvTest, DeinitRightAfterAWriteEnds)
{
    // Each round gives the stop a different moment against the thread's wait. Whether
    // the round's write was saved depends on that moment; what is on flash after the
    // stop must be a whole image, never older than before, and exactly what the next
    // start loads: no save may still be running behind the stop.
    int saved = -1;  // the value on flash, -1 for none yet
    for (int round = 0; round < 20; round++) {
        eeprom_init();
        EXPECT_EQ(Image()[0], saved < 0 ? '\xFF' : (char)saved) << "round " << round;
        Write(0, std::string(1, (char)round));
        eeprom_deinit();
        bool exists = false;
        const std::string file = ReadFile(root.Abs(current), &exists);
        if (!exists) {
            ASSERT_EQ(saved, -1) << "round " << round;
            continue;
        }
        ASSERT_EQ(file.size(), (size_t)EEPROM_SIZE) << "round " << round;
        ASSERT_TRUE(file[0] == (char)round || file[0] == (char)saved) << "round " << round << ": " << (int)file[0];
        saved = file[0];
    }
    eeprom_init();
    EXPECT_EQ(Image()[0], saved < 0 ? '\xFF' : (char)saved);
    eeprom_deinit();
    eeprom_deinit();  // a second stop is harmless
}

TEST_F(EepromDrvTest, RangesAreClampedToTheImage)
{
    eeprom_init();
    std::string bytes(16, '\x33');
    Write(EEPROM_SIZE - 8, bytes);  // half of it lies past the end
    eeprom_write(0xFFFFFFF8u, bytes.data(), 16);  // offset + length wraps around
    eeprom_write(EEPROM_SIZE, bytes.data(), 16);

    std::string back(16, '\0');
    eeprom_read(EEPROM_SIZE - 8, back.data(), 16);
    EXPECT_EQ(back, std::string(8, '\x33') + std::string(8, '\xFF'));
    eeprom_read(0xFFFFFFF8u, back.data(), 16);
    EXPECT_EQ(back, std::string(16, '\xFF'));

    std::string expected(EEPROM_SIZE, '\xFF');
    expected.replace(EEPROM_SIZE - 8, 8, 8, '\x33');
    EXPECT_EQ(Image(), expected);
}

}  // namespace
