// motordash-sim settings: what it tells about a store that the real dash wrote, and
// about stores damaged in each way that the dash's start reacts to.
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "dash_harness.h"

namespace {

constexpr const char* CURRENT = "app/data/config/motordash-eeprom.dat";
constexpr const char* OLD = "app/data/config/motordash-eeprom.dat.old";
constexpr size_t IMAGE_SIZE = 32768;
constexpr size_t RECORD_SIZE = 400;

void PutLe32(std::string* s, size_t at, uint32_t v)
{
    for (int i = 0; i < 4; i++) (*s)[at + i] = (char)(v >> (8 * i));
}

// The store's check word, computed bit by bit here, apart from the table the dash uses.
uint32_t Crc16(const std::string& s, size_t from, size_t to)
{
    uint16_t crc = 0;
    for (size_t i = from; i < to; i++) {
        crc ^= (uint16_t)((uint8_t)s[i] << 8);
        for (int bit = 0; bit < 8; bit++) crc = (uint16_t)(crc & 0x8000 ? (crc << 1) ^ 0x1021 : crc << 1);
    }
    return crc;
}

void Reseal(std::string* image)
{
    PutLe32(image, 0, Crc16(*image, 4, RECORD_SIZE));
}

struct Report {
    int code;
    std::string out, err;
    bool Says(const std::string& text) const { return out.find(text) != std::string::npos; }
};

Report Inspect(const std::string& what)
{
    Report r;
    r.code = RunProgram(BinPath("motordash-sim"), {"settings", what}, &r.out, &r.err);
    return r;
}

// Runs the real dash until its first store is on disk, then stops it; the store's image.
std::string StoreOfARealRun(const DeviceRoot& root)
{
    Process dash(BinPath("motordash"), root.Path().c_str());
    const int64_t end = NowMs() + 5000;
    while (root.Read(CURRENT).size() < IMAGE_SIZE && NowMs() < end) usleep(10000);
    EXPECT_TRUE(dash.Signal(SIGTERM));
    int status = 0;
    EXPECT_TRUE(dash.Wait(5000, &status));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << dash.Stdout() << dash.Stderr();
    return root.Read(CURRENT);
}

uint32_t Le32(const std::string& s, size_t at)
{
    return (uint32_t)(uint8_t)s[at] | (uint32_t)(uint8_t)s[at + 1] << 8 | (uint32_t)(uint8_t)s[at + 2] << 16 |
           (uint32_t)(uint8_t)s[at + 3] << 24;
}

// One run of the real dash gives the good store that the cases below damage.
class SettingsTool : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        dashRoot = new DeviceRoot;
        good = new std::string(StoreOfARealRun(*dashRoot));
    }
    static void TearDownTestSuite()
    {
        delete dashRoot;
        delete good;
    }
    void SetUp() override { ASSERT_EQ(good->size(), IMAGE_SIZE) << "the dash stored nothing within 5 s"; }
    static std::string Counter() { return std::to_string(Le32(*good, 4)); }

    static DeviceRoot* dashRoot;
    static std::string* good;
    DeviceRoot root;
};
DeviceRoot* SettingsTool::dashRoot;
std::string* SettingsTool::good;

TEST(SettingsToolEmpty, RootWithoutFilesStartsFromAnErasedStore)
{
    DeviceRoot root;
    const Report r = Inspect(root.Path());
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(r.Says("Current file: " + root.Abs(CURRENT) + "\n  missing\n")) << r.out;
    EXPECT_TRUE(r.Says("Previous file: " + root.Abs(OLD) + "\n  missing\n")) << r.out;
    EXPECT_TRUE(r.Says("The dash would load neither file: the current one is missing, the .old one is missing.\n"
                       "It would start with an erased store (all 0xFF).\n"))
        << r.out;
    EXPECT_TRUE(r.Says("fall back to the factory settings: the record is all 0xFF")) << r.out;
    EXPECT_TRUE(r.Says("counter would start again at 0 ")) << r.out;
}

TEST(SettingsToolEmpty, PathThatIsNoRootIsAnError)
{
    DeviceRoot root;
    // A mistyped root, a folder of a root, a file in a folder that is not there.
    for (const std::string& bad :
         {root.Abs("typo/root"), root.Abs("app/data"), root.Abs("nowhere/motordash-eeprom.dat")}) {
        const Report r = Inspect(bad);
        EXPECT_EQ(r.code, 1) << bad << "\n" << r.out;
        EXPECT_NE(r.err.find("no such folder"), std::string::npos) << r.err;
        EXPECT_EQ(r.out, "") << bad;
    }
}

TEST_F(SettingsTool, StoreOfTheRealDashIsTaken)
{
    const Report r = Inspect(dashRoot->Path());
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(r.Says("  length: 32768 bytes, full length\n")) << r.out;
    EXPECT_TRUE(r.Says("    EE_UniqID             810043452 (0x3048483C)\n")) << r.out;
    EXPECT_TRUE(r.Says("    PROFILE_GAUGE_COUNT   15 15 15\n")) << r.out;
    EXPECT_TRUE(r.Says("  CRC: stored 0x")) << r.out;
    EXPECT_FALSE(r.Says(": wrong")) << r.out;
    EXPECT_TRUE(r.Says("The dash would load the current file.\nIt would take the record: CRC and stamp are good, "
                       "counter " + Counter() + ".\n"))
        << r.out;
    // The file itself may be named instead of the root.
    EXPECT_EQ(Inspect(dashRoot->Abs(CURRENT)).out, r.out);
}

TEST_F(SettingsTool, DamagedCurrentFileGivesTheFactorySettings)
{
    std::string badCrc = *good;
    badCrc[12] ^= 1;  // LogNumber, behind the CRC's back

    std::string otherBuild = *good;
    PutLe32(&otherBuild, 8, 0x30484800);
    Reseal(&otherBuild);

    std::string countedOut = *good;
    PutLe32(&countedOut, 4, 600000);  // a worn store restarts its counter at 1000

    const std::string erased(IMAGE_SIZE, '\xFF');

    const struct {
        const char* name;
        std::string image;
        const char* says;
        const char* counterFrom;
    } cases[] = {
        {"wrong CRC", badCrc, "It would fall back to the factory settings: wrong CRC (stored 0x", "at 0 "},
        {"wrong stamp", otherBuild,
         "It would fall back to the factory settings: wrong stamp 0x30484800, this build's is 0x3048483C "
         "(a record of another build's layout).\n",
         "at 0 "},
        {"counter past 500000", countedOut, "wrong CRC", "at 1000 "},
        {"all 0xFF", erased, "It would fall back to the factory settings: the record is all 0xFF, so its CRC fails.\n",
         "at 0 "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        root.Write(CURRENT, c.image);
        root.Write(OLD, *good);
        const Report r = Inspect(root.Path());
        EXPECT_EQ(r.code, 0);
        EXPECT_TRUE(r.Says("The dash would load the current file.\n")) << r.out;
        EXPECT_TRUE(r.Says(c.says)) << r.out;
        EXPECT_TRUE(r.Says(std::string("The store counter would start again ") + c.counterFrom)) << r.out;
        // A good .old beside it is not used, and the report says so.
        EXPECT_TRUE(r.Says("The .old file holds a good record (counter " + Counter() +
                           "), but the dash does not fall back to it"))
            << r.out;
    }
}

TEST_F(SettingsTool, ShortOrMissingCurrentFileSendsTheDashToTheOldOne)
{
    const struct {
        const char* name;
        std::string current;  // "-" removes the file
        const char* says;
    } cases[] = {
        {"short", good->substr(0, 1000), "  length: 1000 bytes, shorter than 32768: not accepted\n"},
        {"empty", "", "  length: 0 bytes, shorter than 32768: not accepted\n  too short to hold the settings record"},
        {"one byte short", good->substr(0, IMAGE_SIZE - 1),
         "  length: 32767 bytes, shorter than 32768: not accepted\n"},
        {"missing", "-", "Current file: "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        root.Write(OLD, *good);
        if (c.current == "-") {
            root.Remove(CURRENT);
        } else {
            root.Write(CURRENT, c.current);
        }
        const Report r = Inspect(root.Path());
        EXPECT_TRUE(r.Says(c.says)) << r.out;
        EXPECT_TRUE(r.Says(std::string("The dash would load the .old file: the current one is ") +
                           (c.current == "-" ? "missing" : "too short") +
                           ".\nIt would take the record: CRC and stamp are good, counter " + Counter() + ".\n"))
            << r.out;
    }

    // With the .old file short too, neither is taken, and the image is not a mixture.
    root.Write(CURRENT, good->substr(0, 1000));
    root.Write(OLD, good->substr(0, IMAGE_SIZE - 1));
    const Report r = Inspect(root.Path());
    EXPECT_TRUE(r.Says("The dash would load neither file: the current one is too short, the .old one is too short.\n"
                       "It would start with an erased store (all 0xFF).\n"))
        << r.out;
}

TEST_F(SettingsTool, LongerFileIsTakenUpToTheImageSize)
{
    root.Write(CURRENT, *good + "tail");
    const Report r = Inspect(root.Path());
    EXPECT_TRUE(r.Says("  length: 32772 bytes, longer than 32768: the first 32768 are taken\n")) << r.out;
    EXPECT_TRUE(r.Says("The dash would load the current file.\nIt would take the record")) << r.out;
}

}  // namespace
