#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "event_drv.h"
#include "eventhandler.h"
#include "test_root.h"

namespace {

using namespace std::chrono_literals;

const std::string USBINFO = "media/usbinfo.txt";
const std::string SCRIPT_COMMAND = "app/event/script_command";
const std::string APP_COMMAND = "app/event/app_command";

// The state as the three queries tell it.
USBSTICKSTATUS_T Status()
{
    if (EventHandlerIsUSBStickInserted()) return USBSTICKSTATUS_INSERTED;
    if (EventHandlerIsUSBStickEjected()) return USBSTICKSTATUS_EJECTED;
    if (EventHandlerIsUSBStickRemoved()) return USBSTICKSTATUS_NOTPRESENT;
    return USBSTICKSTATUS_EJECTING;
}

bool Exists(const std::string& path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

bool WaitFor(const std::function<bool()>& done, std::chrono::milliseconds limit = 10s)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(100us);
    }
    return true;
}

// A device root with the folders the scripts and the dash share, and the stick
// machine brought back to "no stick" through its own interface.
class StickTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        mkdir(root.Abs("media").c_str(), 0755);
        mkdir(root.Abs("app").c_str(), 0755);
        mkdir(root.Abs("app/event").c_str(), 0755);
        EventHandlerInit();
        EventHandlerProcess();
        ASSERT_TRUE(EventHandlerIsUSBStickRemoved());
    }

    // What the scripts do when a stick comes: mount it, then tell its folder.
    void Mount(const std::string& folder = "disk_sda1", const std::string& info = "disk_sda1") const
    {
        mkdir(root.Abs("media/" + folder).c_str(), 0755);
        root.Write(USBINFO, info);
    }

    // The scripts' answer and their SIGUSR1, then the main loop's pass.
    void Answer(const std::string& text, EVENTID_T id = EVENTID_EVENT1) const
    {
        root.Write(APP_COMMAND, text);
        event_trigger(id, SIGUSR1, SIGUSR1 - 10);
        EventHandlerProcess();
    }

    // A stick in, asked to eject, the command file taken by the scripts.
    void InsertAndEject() const
    {
        Mount();
        ASSERT_TRUE(EventHandlerIsUSBStickInserted());
        EventHandlerUSBStickEject();
        ASSERT_EQ(root.Read(SCRIPT_COMMAND), "USBSTICK_EJECT");
        remove(root.Abs(SCRIPT_COMMAND).c_str());
    }

    TestRoot root;
};

TEST_F(StickTest, UsbInfoPresentAtStartIsTakenByTheFirstQuery)
{
    Mount();
    EXPECT_TRUE(EventHandlerIsUSBStickInserted());
    EXPECT_FALSE(Exists(root.Abs(USBINFO))) << "consumed";
    EXPECT_STREQ(EventHandlerGetUSBStickPath(), "disk_sda1");

    // While a stick is known, a new info file waits.
    Mount("disk_sdb1", "disk_sdb1");
    EXPECT_EQ(Status(), USBSTICKSTATUS_INSERTED);
    EXPECT_TRUE(Exists(root.Abs(USBINFO)));
    EXPECT_STREQ(EventHandlerGetUSBStickPath(), "disk_sda1");
}

TEST_F(StickTest, StickPulledWithoutEjectIsNoticedByTheNextQuery)
{
    Mount();
    ASSERT_TRUE(EventHandlerIsUSBStickInserted());
    rmdir(root.Abs("media/disk_sda1").c_str());
    EXPECT_TRUE(EventHandlerIsUSBStickRemoved());
    EXPECT_STREQ(EventHandlerGetUSBStickPath(), "");
}

TEST_F(StickTest, NameIsTakenAsItStands)
{
    // A line feed stays in the name, so the folder is not found and the stick is lost.
    Mount("disk_sda1", "disk_sda1\nsecond line");
    EXPECT_TRUE(EventHandlerIsUSBStickInserted());
    EXPECT_STREQ(EventHandlerGetUSBStickPath(), "disk_sda1\n");
    EXPECT_TRUE(EventHandlerIsUSBStickRemoved());
    EXPECT_STREQ(EventHandlerGetUSBStickPath(), "");

    // A name longer than the buffer is cut to 254 characters.
    const std::string longName(300, 'n');
    Mount(longName.substr(0, 254), longName);
    EXPECT_TRUE(EventHandlerIsUSBStickInserted());
    EXPECT_EQ(std::string(EventHandlerGetUSBStickPath()), longName.substr(0, 254));
}

TEST_F(StickTest, NameThatIsTheMediaFolderItselfIsNoStick)
{
    for (const char* name : {".", "./", "/"}) {
        Mount("disk_sda1", name);
        EXPECT_TRUE(EventHandlerIsUSBStickInserted()) << name;
        EXPECT_TRUE(EventHandlerIsUSBStickRemoved()) << name << ": the media folder never goes";
    }
    Mount("disk_sda1", "../media");
    EXPECT_TRUE(EventHandlerIsUSBStickInserted());
    EXPECT_TRUE(EventHandlerIsUSBStickRemoved()) << "a name that climbs out names no stick";
}

TEST_F(StickTest, EmptyInfoFileWaitsUntilTheScriptsHaveWrittenIt)
{
    Mount("disk_sda1", "");
    EXPECT_TRUE(EventHandlerIsUSBStickRemoved());
    EXPECT_TRUE(Exists(root.Abs(USBINFO)));
    root.Write(USBINFO, "disk_sda1");
    EXPECT_TRUE(EventHandlerIsUSBStickInserted());
    EXPECT_FALSE(Exists(root.Abs(USBINFO)));

    // A folder of that name is no info file.
    rmdir(root.Abs("media/disk_sda1").c_str());
    ASSERT_TRUE(EventHandlerIsUSBStickRemoved());
    mkdir(root.Abs(USBINFO).c_str(), 0755);
    EXPECT_TRUE(EventHandlerIsUSBStickRemoved());
}

TEST_F(StickTest, EjectHandshakeFromInsertedToPulled)
{
    InsertAndEject();
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTING);

    EventHandlerUSBStickEject();
    EXPECT_FALSE(Exists(root.Abs(SCRIPT_COMMAND))) << "asked once only";

    Answer("USBSTICK_EJECTREADY and whatever follows");
    EXPECT_FALSE(Exists(root.Abs(APP_COMMAND))) << "consumed";
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTED);
    EXPECT_STREQ(EventHandlerGetUSBStickPath(), "disk_sda1");

    // A new stick's info waits while the old folder is still there.
    root.Write(USBINFO, "disk_sdb1");
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTED);
    EXPECT_TRUE(Exists(root.Abs(USBINFO)));

    rmdir(root.Abs("media/disk_sda1").c_str());
    EXPECT_TRUE(EventHandlerIsUSBStickRemoved()) << "no info file in the same call";
    EXPECT_TRUE(Exists(root.Abs(USBINFO)));
    mkdir(root.Abs("media/disk_sdb1").c_str(), 0755);
    EXPECT_TRUE(EventHandlerIsUSBStickInserted());
    EXPECT_STREQ(EventHandlerGetUSBStickPath(), "disk_sdb1");
}

TEST_F(StickTest, EjectWritesNothingUnlessAStickIsInserted)
{
    EventHandlerUSBStickEject();
    EXPECT_FALSE(Exists(root.Abs(SCRIPT_COMMAND)));
    EXPECT_EQ(Status(), USBSTICKSTATUS_NOTPRESENT);

    InsertAndEject();
    Answer("USBSTICK_EJECTREADY");
    EventHandlerUSBStickEject();
    EXPECT_FALSE(Exists(root.Abs(SCRIPT_COMMAND)));
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTED);
}

TEST_F(StickTest, EjectMovesOnWhenTheCommandCannotBeWritten)
{
    Mount();
    ASSERT_TRUE(EventHandlerIsUSBStickInserted());
    rmdir(root.Abs("app/event").c_str());
    EventHandlerUSBStickEject();
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTING);
}

TEST_F(StickTest, OnlyTheEjectReadyAnswerChangesTheState)
{
    InsertAndEject();

    event_trigger(EVENTID_EVENT1, SIGUSR1, 0);
    EventHandlerProcess();
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTING) << "signal without a file";

    for (const char* text : {"HELLO", "USBSTICK_EJECTREAD", "usbstick_ejectready", " USBSTICK_EJECTREADY", ""}) {
        Answer(text);
        EXPECT_FALSE(Exists(root.Abs(APP_COMMAND))) << "'" << text << "' consumed all the same";
        EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTING) << text;
    }

    // Only the first 1023 bytes are read: the command must stand at the start.
    Answer(std::string(1100, ' ') + "USBSTICK_EJECTREADY");
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTING);
}

TEST_F(StickTest, EjectReadyCountsFromAnyState)
{
    Mount();
    ASSERT_TRUE(EventHandlerIsUSBStickInserted());
    Answer("USBSTICK_EJECTREADY");
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTED) << "without having asked";

    // With no stick known there is no folder to keep the state: the next query
    // falls back.
    rmdir(root.Abs("media/disk_sda1").c_str());
    ASSERT_TRUE(EventHandlerIsUSBStickRemoved());
    root.Write(APP_COMMAND, "USBSTICK_EJECTREADY");
    event_trigger(EVENTID_EVENT1, SIGUSR1, 0);
    EventHandlerProcess();
    EXPECT_FALSE(Exists(root.Abs(APP_COMMAND)));
    EXPECT_TRUE(EventHandlerIsUSBStickRemoved());
}

TEST_F(StickTest, EventsWaitForTheMainLoopAndFoldIntoOne)
{
    InsertAndEject();
    root.Write(APP_COMMAND, "USBSTICK_EJECTREADY");
    event_trigger(EVENTID_EVENT1, SIGUSR1, 0);
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTING) << "the signal only notes the event";
    EXPECT_TRUE(Exists(root.Abs(APP_COMMAND)));

    // Two signals before the pass: one event, served once.
    event_trigger(EVENTID_EVENT1, SIGUSR1, 0);
    EventHandlerProcess();
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTED);
    root.Write(APP_COMMAND, "USBSTICK_EJECTREADY");
    EventHandlerProcess();
    EXPECT_TRUE(Exists(root.Abs(APP_COMMAND))) << "no event left to serve";
}

TEST_F(StickTest, SecondEventHasNoEffect)
{
    InsertAndEject();
    Answer("USBSTICK_EJECTREADY", EVENTID_EVENT2);
    EXPECT_TRUE(Exists(root.Abs(APP_COMMAND)));
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTING);

    // The second folds over a first that still waits: the last one is served.
    event_trigger(EVENTID_EVENT1, SIGUSR1, 0);
    event_trigger(EVENTID_EVENT2, SIGUSR2, 2);
    EventHandlerProcess();
    EXPECT_TRUE(Exists(root.Abs(APP_COMMAND)));
    EXPECT_EQ(Status(), USBSTICKSTATUS_EJECTING);
}

struct Seen {
    int calls;
    EVENTID_T id;
    S32 signal, value;
};
Seen m_seenA, m_seenB;
void _callbackA(EVENTID_T id, S32 signal, S32 value)
{
    m_seenA = {m_seenA.calls + 1, id, signal, value};
}
void _callbackB(EVENTID_T id, S32 signal, S32 value)
{
    m_seenB = {m_seenB.calls + 1, id, signal, value};
}

TEST(EventDriver, OneCallbackKnownIdsOnly)
{
    m_seenA = m_seenB = {};
    event_register(_callbackA);
    event_trigger(EVENTID_MAX_EVENTS, SIGUSR1, 0);
    event_trigger((EVENTID_T)7, SIGUSR1, 0);
    EXPECT_EQ(m_seenA.calls, 0);
    event_trigger(EVENTID_EVENT2, SIGUSR2, 2);
    EXPECT_EQ(m_seenA.calls, 1);
    EXPECT_EQ(m_seenA.id, EVENTID_EVENT2);
    EXPECT_EQ(m_seenA.signal, SIGUSR2);
    EXPECT_EQ(m_seenA.value, 2);

    event_register(_callbackB);
    event_trigger(EVENTID_EVENT1, SIGUSR1, 0);
    EXPECT_EQ(m_seenA.calls, 1) << "replaced";
    EXPECT_EQ(m_seenB.calls, 1);

    event_register(nullptr);
    event_trigger(EVENTID_EVENT1, SIGUSR1, 0);
    EXPECT_EQ(m_seenB.calls, 1);
    EventHandlerInit();
}

// The queries from a task thread and the screens' thread at once, the events from a
// signal thread, and the scripts in the test's own: every cycle of insert, eject and
// pull has to go through, each file taken once.
TEST_F(StickTest, HandshakeAcrossThreads)
{
    constexpr int CYCLES = 40;
    std::atomic<bool> stop{false};
    std::atomic<int> ejectsAsked{0};
    std::thread tasks([&] {
        while (!stop.load()) {
            if (EventHandlerIsUSBStickInserted()) {
                EventHandlerUSBStickEject();
                ejectsAsked++;
            }
            std::this_thread::yield();
        }
    });
    std::thread screens([&] {
        while (!stop.load()) {
            EventHandlerProcess();
            EventHandlerIsUSBStickEjected();
            (void)EventHandlerGetUSBStickPath()[0];
            std::this_thread::yield();
        }
    });

    int done = 0;
    const char* failed = "";
    for (; done < CYCLES; done++) {
        Mount();
        if (!WaitFor([&] { return Exists(root.Abs(SCRIPT_COMMAND)); })) {
            failed = "no eject command";
            break;
        }
        if (root.Read(SCRIPT_COMMAND) != "USBSTICK_EJECT") {
            failed = "command read before it was whole";
            break;
        }
        remove(root.Abs(SCRIPT_COMMAND).c_str());
        root.Write(APP_COMMAND, "USBSTICK_EJECTREADY");
        std::thread signal([] { event_trigger(EVENTID_EVENT1, SIGUSR1, 0); });
        signal.join();
        if (!WaitFor([&] { return !Exists(root.Abs(APP_COMMAND)); })) {
            failed = "answer not taken";
            break;
        }
        if (!WaitFor([] { return EventHandlerIsUSBStickEjected() != 0; })) {
            failed = "not ejected";
            break;
        }
        rmdir(root.Abs("media/disk_sda1").c_str());
        if (!WaitFor([] { return EventHandlerIsUSBStickRemoved() != 0; })) {
            failed = "pull not noticed";
            break;
        }
        if (Exists(root.Abs(USBINFO)) || Exists(root.Abs(SCRIPT_COMMAND))) {
            failed = "a file left behind";
            break;
        }
    }
    stop.store(true);
    tasks.join();
    screens.join();
    EXPECT_EQ(done, CYCLES) << failed;
    EXPECT_EQ(ejectsAsked.load(), CYCLES) << "one eject for each insertion";
}

}  // namespace
