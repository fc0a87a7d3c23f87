// A calibration tool on the dash's bus: the real motordash on the virtual bus of a
// temporary root, driven by the XCP master of motordash-xcp, byte for byte, and by the
// tool itself as an engineer runs it, down to a setting calibrated into the ECU's frame
// and the settings file.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

#include "SeednKey.h"
#include "dash_harness.h"
#include "data.h"
#include "xcp_map.h"
#include "xcp_master.h"

namespace {

typedef std::vector<uint8_t> PACKET_T;

// Generous: the sanitizer trees run the dash many times slower.
constexpr int RESPONSE_MS = 5000;

class XcpOnBus : public ::testing::Test {
protected:
    void SetUp() override
    {
        const std::vector<std::string> args = {"bus", root.Path()};
        bus = std::make_unique<Process>(BinPath("motordash-can"), nullptr, args);
        ASSERT_TRUE(bus->WaitForOutput("serving", 10000));
        dash = std::make_unique<Process>(BinPath("motordash"), root.Path().c_str());
        ASSERT_TRUE(dash->WaitForOutput("Bit-timing for can0", 20000)) << dash->Stdout();
        std::string error;
        master.timeoutMs = RESPONSE_MS;
        ASSERT_TRUE(XcpMasterOpen(&master, root.Path().c_str(), nullptr, &error)) << error;
        // The bus hands the dash what others send once its own frames come through: the
        // settings frame, every 100 ms.
        PACKET_T settings;
        ASSERT_TRUE(XcpMasterReceiveFrame(&master, 0x131, &settings, 20000));
    }
    void TearDown() override
    {
        XcpMasterClose(&master);
        if (dash) StopDash();
        if (bus) bus->Signal(SIGTERM);
    }
    void StopDash()
    {
        dash->Signal(SIGTERM);
        int status = 0;
        EXPECT_TRUE(dash->Wait(10000, &status));  // a bound on a hang, not the speed
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << dash->Stderr();
        dash.reset();
    }
    void Send(const PACKET_T& bytes, uint32_t id = 0x200)
    {
        ASSERT_TRUE(XcpMasterSendFrame(&master, id, bytes.data(), (uint8_t)bytes.size()));
    }
    // The next frame on 0x300, exactly as long as it came.
    PACKET_T Next()
    {
        PACKET_T packet;
        EXPECT_TRUE(XcpMasterReceiveFrame(&master, 0x300, &packet, RESPONSE_MS)) << "no frame on 0x300";
        return packet;
    }
    PACKET_T Ask(const PACKET_T& bytes, uint32_t id = 0x200)
    {
        Send(bytes, id);
        return Next();
    }
    // Runs motordash-xcp on this root, with options before the root.
    int Tool(const std::vector<std::string>& args, std::string* out, std::string* err,
             const std::vector<std::string>& options = {})
    {
        std::vector<std::string> all = {"--timeout", std::to_string(RESPONSE_MS)};
        all.insert(all.end(), options.begin(), options.end());
        all.push_back(root.Path());
        all.insert(all.end(), args.begin(), args.end());
        return RunProgram(BinPath("motordash-xcp"), all, out, err);
    }

    DeviceRoot root;
    std::unique_ptr<Process> bus;
    std::unique_ptr<Process> dash;
    XCP_MASTER_T master;
};

const PACKET_T CONNECTED = {0xFF, 0x15, 0xC0, 0x08, 0x08, 0x00, 0x01, 0x01};
const PACKET_T IDENTIFY = {0xF2, 0xFF, 'X', 'C', 'P', 0x00};
const PACKET_T CONFIRM = {0xF2, 0xFF, 'X', 'C', 'P', 0x01};

PACKET_T SetMta(uint32_t a)
{
    return {0xF6, 0, 0, 0, (uint8_t)a, (uint8_t)(a >> 8), (uint8_t)(a >> 16), (uint8_t)(a >> 24)};
}

std::string Text(const uint8_t* bytes, size_t n)
{
    return std::string(reinterpret_cast<const char*>(bytes), n);
}

// Silence is shown by order: the dash serves frames as they come, so when the answer
// to a later command is the next frame, the frames before it had none.
TEST_F(XcpOnBus, FindConnectAndIdentifyWithTheExactBytesAndSilences)
{
    EXPECT_EQ(Ask(IDENTIFY, 0x100), (PACKET_T{0xFF, 'X', 'C', 'P', 0x00, 0x02, 0x00, 0x00}));
    EXPECT_EQ(Ask(CONFIRM, 0x100), (PACKET_T{0xFF, 0xA7, 0xBC, 0xAF, 0x00, 0x02, 0x00, 0x00}));
    Send(CONFIRM, 0x100);           // the one echo is used up
    Send({0xFD});                   // GET_STATUS before CONNECT
    Send({0xFF, 0x00}, 0x100);      // CONNECT on the broadcast identifier
    Send({0x3F, 0x00});             // not a command
    Send({});                       // empty
    EXPECT_EQ(Ask({0xFF, 0x00}), CONNECTED);

    EXPECT_EQ(Ask({0xFD}), (PACKET_T{0xFF, 0x00, 0x1D, 0x00, 0x00, 0x00}));
    EXPECT_EQ(Ask({0xFB}), (PACKET_T{0xFF, 0x00, 0x01, 0x00, 0xFF, 0x64, 0x00, 0x10}));
    EXPECT_EQ(Ask({0xFC}), (PACKET_T{0xFE, 0x00}));
    EXPECT_EQ(Ask({0xF0, 1, 0}), (PACKET_T{0xFE, 0x25})) << "DOWNLOAD while CAL_PAG is locked";
    EXPECT_EQ(Ask({0xED, 0, 0, 0, 0xCB, 3, 0, 0}), (PACKET_T{0xFE, 0x25})) << "SHORT_DOWNLOAD too";
    EXPECT_EQ(Ask({0xC5}), (PACKET_T{0xFE, 0x20}));
    EXPECT_EQ(Ask({0xF2, 0xFE, 0x00, 0x00}), (PACKET_T{0xFF, 0x00, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00}));
    EXPECT_EQ(Ask({0xF2, 0xFD, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00}), (PACKET_T{0xFE, 0x22})) << "no list allocated";

    // The identification: its length, then its text in three frames of seven.
    EXPECT_EQ(Ask({0xFA, 0}), (PACKET_T{0xFF, 0x00, 0x00, 0x00, 21, 0x00, 0x00, 0x00}));
    Send({0xF5, 21});
    std::string id;
    for (int frame = 0; frame < 3; frame++) {
        const PACKET_T p = Next();
        ASSERT_EQ(p.size(), 8u);
        ASSERT_EQ(p[0], 0xFF);
        id += Text(&p[1], 7);
    }
    EXPECT_EQ(id, "Velnor_Dorvik_V6c_650");
    EXPECT_EQ(Ask({0xFA, 200}), (PACKET_T{0xFF, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Ask(SetMta(0)), (PACKET_T{0xFE, 0x22}));

    EXPECT_EQ(Ask({0xFE}), (PACKET_T{0xFF}));
    Send({0xFD});  // disconnected again
    EXPECT_EQ(Ask(IDENTIFY, 0x100), (PACKET_T{0xFF, 'X', 'C', 'P', 0x00, 0x02, 0x00, 0x00}));
}

TEST_F(XcpOnBus, FourCommandsWaitBehindALongUploadAndTheFifthFrameIsLost)
{
    ASSERT_EQ(Ask({0xFF, 0x00}), CONNECTED);
    ASSERT_EQ(Ask(SetMta(1)), PACKET_T{0xFF});
    // The upload holds its slot for 37 frames; three more commands fit behind it.
    Send({0xF5, 255});
    for (uint8_t i = 0; i < 4; i++) Send({0xF4, 1, 0, 0, (uint8_t)(189 + i), 0, 0, 0});
    PACKET_T upload;
    for (int frame = 0; frame < 37; frame++) {
        const PACKET_T p = Next();
        ASSERT_EQ(p.size(), frame < 36 ? 8u : 4u) << "frame " << frame;
        ASSERT_EQ(p[0], 0xFF);
        upload.insert(upload.end(), p.begin() + 1, p.end());
    }
    ASSERT_EQ(upload.size(), 255u);
    EXPECT_EQ(Text(&upload[189 - 1], 21), "Velnor_Dorvik_V6c_650");
    EXPECT_EQ(Text(&upload[235 - 1], 21), Text(CONSTVariables.BuildUID, 21));
    EXPECT_EQ(Next(), (PACKET_T{0xFF, 'V'}));
    EXPECT_EQ(Next(), (PACKET_T{0xFF, 'e'}));
    EXPECT_EQ(Next(), (PACKET_T{0xFF, 'l'}));
    EXPECT_EQ(Ask({0xFD}), (PACKET_T{0xFF, 0x00, 0x1D, 0x00, 0x00, 0x00})) << "the fourth short upload was lost";
}

template <typename T>
uint32_t ByteSum(const T& field)
{
    uint32_t sum = 0;
    const uint8_t* b = reinterpret_cast<const uint8_t*>(&field);
    for (size_t i = 0; i < sizeof(T); i++) sum += b[i];
    return sum;
}

TEST_F(XcpOnBus, ChecksumOverTheConstantsAndTheEdgesOfTheAddressSpace)
{
    ASSERT_EQ(Ask({0xFF, 0x00}), CONNECTED);
    // Addresses 120 to 276: every constant from X1 to DateStamp, without the record's padding.
    const CONSTVariables_T& c = CONSTVariables;
    uint32_t sum = ByteSum(c.X1) + ByteSum(c.X2) + ByteSum(c.Y1) + ByteSum(c.Y2) + ByteSum(c.Xmax) + ByteSum(c.Ymax) +
                   ByteSum(c.XC) + ByteSum(c.YC) + ByteSum(c.GaugeWidth) + ByteSum(c.GaugeHeight) +
                   ByteSum(c.ModelName) + ByteSum(c.BuildNumber) + ByteSum(c.MatlabVersion) +
                   ByteSum(c.QuorinVersion) + ByteSum(c.SwIdTxt) + ByteSum(c.CalIdTxt) + ByteSum(c.BuildUID) +
                   ByteSum(c.IdTableRev) + ByteSum(c.HardwareType) + ByteSum(c.EcuAddr) + ByteSum(c.DateStamp);
    ASSERT_EQ(Ask(SetMta(120)), PACKET_T{0xFF});
    EXPECT_EQ(Ask({0xF3, 0, 0, 0, 157, 0, 0, 0}), (PACKET_T{0xFF, 0x01, 0x00, 0x00, (uint8_t)sum, 0x00, 0x00, 0x00}));
    EXPECT_EQ(Ask({0xF3, 0, 0, 0, 0x00, 0x00, 0x01, 0x00}), (PACKET_T{0xFE, 0x22, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00}));
    EXPECT_EQ(Ask({0xF5, 2}), (PACKET_T{0xFF, 0xEC, 0xFF})) << "the checksum moved the MTA to 277: Abc, -20";
    EXPECT_EQ(Ask({0xF3, 0, 0, 0, 0x00, 0x04, 0x00, 0x00}), (PACKET_T{0xFE, 0x22, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00}))
        << "a block that leaves the address space";
    EXPECT_EQ(Ask(SetMta(976)), PACKET_T{0xFF});
    EXPECT_EQ(Ask({0xF5, 1}), (PACKET_T{0xFE, 0x24}));
    EXPECT_EQ(Ask({0xF4, 4, 0, 0, 0x19, 0x02, 0, 0}), (PACKET_T{0xFF, 0, 0, 0, 0})) << "RPM at rest";
}

TEST_F(XcpOnBus, TheToolReadsTheDashAndSaysWhatWentWrong)
{
    std::string out, err;
    ASSERT_EQ(Tool({"probe"}, &out, &err), 0) << err;
    EXPECT_EQ(out, "slave: commands on 0x200, responses on 0x300\n");

    ASSERT_EQ(Tool({"info"}, &out, &err), 0) << err;
    EXPECT_NE(out.find("resources      CAL/PAG DAQ PGM\n"), std::string::npos) << out;
    EXPECT_NE(out.find("locked         CAL/PAG DAQ STIM PGM\n"), std::string::npos) << out;
    EXPECT_NE(out.find("identifier     Velnor_Dorvik_V6c_650\n"), std::string::npos) << out;
    EXPECT_NE(out.find("hardware type  320\n"), std::string::npos) << out;
    EXPECT_NE(out.find("ECU address    253\n"), std::string::npos) << out;

    // An engine at 5200 rpm on the ECU's frame 0x108 reaches the tool through RAMVariables.
    // Sent from the test's own connection, which the bus already serves.
    const PACKET_T rpm = {0x14, 0x50, 0, 0, 0, 0, 0, 0};
    const int64_t end = NowMs() + 10000;
    do {
        ASSERT_TRUE(XcpMasterSendFrame(&master, 0x108, rpm.data(), 8));
        ASSERT_EQ(Tool({"read", "RPM", "BoostControl", "RAMEditVariables.Abc", "SwIdTxt", "PROFILE_GAUGE_COUNT"},
                       &out, &err),
                  0)
            << err;
    } while (out.find("RPM = 5200\n") == std::string::npos && NowMs() < end);
    EXPECT_EQ(out, "RPM = 5200\nBoostControl = 1\nAbc = -20\nSwIdTxt = \"Velnor_Dorvik_V6c_650\"\n"
                   "PROFILE_GAUGE_COUNT = 15 15 15\n");
    ASSERT_EQ(Tool({"read", "PROFILE_DEFAULT"}, &out, &err), 0) << err;
    EXPECT_EQ(out.rfind("PROFILE_DEFAULT = 0x0000 0x0001 0x0100 0x0000 0x0300 ", 0), 0u) << out;

    ASSERT_EQ(Tool({"dump", "0xBD", "21"}, &out, &err), 0) << err;
    EXPECT_EQ(out, "   189  56 65 6C 6E 6F 72 5F 44 6F 72 76 69 6B 5F 56 36  Velnor_Dorvik_V6\n"
                   "   205  63 5F 36 35 30                                   c_650\n");

    EXPECT_EQ(Tool({"read", "RPM", "Boost"}, &out, &err), 2);
    EXPECT_NE(err.find("no variable 'Boost' in the address map"), std::string::npos) << err;
    EXPECT_EQ(Tool({"dump", "970", "7"}, &out, &err), 1);
    EXPECT_NE(err.find("ERR_ACCESS_DENIED (0x24)"), std::string::npos) << err;

    ASSERT_EQ(Tool({"list"}, &out, &err), 0);
    EXPECT_NE(out.find("\n537     4     f32       RAMVariables           RPM\n"), std::string::npos) << out;
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 1 + 136);

    // With no dash on the bus the tool gives up with a reason.
    StopDash();
    EXPECT_EQ(RunProgram(BinPath("motordash-xcp"), {"--timeout", "300", root.Path(), "info"}, &out, &err), 1);
    EXPECT_NE(err.find("CONNECT: no response on 0x300 within 300 ms"), std::string::npos) << err;
}

// The secrets this dash was built with, as a calibration engineer is given them.
std::string Secrets()
{
    char text[64];
    snprintf(text, sizeof(text), "0x%08X,0x%08X,0x%08X,0x%08X", XcpResourceSecret(XCP_RESOURCE_CAL_PAG),
             XcpResourceSecret(XCP_RESOURCE_DAQ), XcpResourceSecret(XCP_RESOURCE_STIM),
             XcpResourceSecret(XCP_RESOURCE_PGM));
    return text;
}

// One line of a bus dump: "(1700000000.123456) can0 131#0000000000000102".
struct DUMP_LINE_T {
    double time;
    std::string frame;  // "131#0000000000000102"
};

std::vector<DUMP_LINE_T> ParseDump(const std::string& out)
{
    std::vector<DUMP_LINE_T> lines;
    for (size_t at = 0; (at = out.find('(', at)) != std::string::npos; at++) {
        const size_t end = out.find('\n', at);
        const std::string text = out.substr(at, end - at);
        const size_t space = text.rfind(' ');
        if (space == std::string::npos) continue;
        lines.push_back({strtod(text.c_str() + 1, nullptr), text.substr(space + 1)});
    }
    return lines;
}

TEST_F(XcpOnBus, ABoostStageCalibratedWithTheToolReachesTheEcuAndTheStoreAndOutlivesAPowerCycle)
{
    const std::string settings = "app/data/config/motordash-eeprom.dat";
    Process dump(BinPath("motordash-can"), nullptr, {"dump", root.Path(), "can0", "-t", "30"});
    ASSERT_TRUE(dump.WaitForOutput(" can0 131#", 10000)) << "the dash's frames reach the dump";

    std::string out, err;
    ASSERT_EQ(Tool({"unlock", "CAL"}, &out, &err, {"--secrets", Secrets()}), 0) << err;
    EXPECT_EQ(out, "unlocked       CAL/PAG\nlocked         DAQ STIM PGM\n");
    EXPECT_EQ(Tool({"unlock", "CAL"}, &out, &err, {"--secrets", "1,2,3,4"}), 1);
    EXPECT_NE(err.find("unlocking CAL/PAG: ERR_ACCESS_LOCKED (0x25)"), std::string::npos) << err;
    EXPECT_EQ(Tool({"write", "BoostControl", "2"}, &out, &err), 2) << "no secrets";

    setenv("XCP_SECRETS", Secrets().c_str(), 1);
    EXPECT_EQ(Tool({"write", "BoostControl", "256"}, &out, &err), 2);
    EXPECT_NE(err.find("BoostControl: '256' is outside u8 (0 to 255)"), std::string::npos) << err;
    const int rc = Tool({"write", "BoostControl", "2"}, &out, &err);
    const int64_t written = NowMs();
    unsetenv("XCP_SECRETS");
    ASSERT_EQ(rc, 0) << err;
    EXPECT_EQ(out, "BoostControl = 2\n");

    // The settings file within the second of the store's task (and a margin for a
    // loaded machine).
    int64_t stored = -1;
    while (stored < 0 && NowMs() < written + 5000) {
        const std::string image = root.Read(settings);
        if (image.size() == 32768 && image[395] == 2) stored = NowMs();
        usleep(10000);
    }
    ASSERT_GE(stored, 0) << "the settings file never held the new stage";
    EXPECT_LE(stored - written, 1300);

    // On the bus: the DOWNLOAD, its answer, and the first settings frame after the answer
    // already with stage 2 (D7), within its 100 ms period.
    dump.Signal(SIGTERM);
    int status = 0;
    ASSERT_TRUE(dump.Wait(10000, &status));
    const std::vector<DUMP_LINE_T> lines = ParseDump(dump.Stdout());
    size_t at = 0;
    while (at < lines.size() && lines[at].frame.rfind("200#F00102", 0) != 0) at++;
    ASSERT_LT(at, lines.size()) << dump.Stdout();
    while (at < lines.size() && lines[at].frame != "300#FF") at++;
    ASSERT_LT(at, lines.size());
    const double answered = lines[at].time;
    std::string before;
    for (size_t i = 0; i < at; i++)
        if (lines[i].frame.rfind("131#", 0) == 0) before = lines[i].frame;
    EXPECT_EQ(before, "131#0000000000000101") << "stage 1 until the write";
    while (at < lines.size() && lines[at].frame.rfind("131#", 0) != 0) at++;
    ASSERT_LT(at, lines.size());
    EXPECT_EQ(lines[at].frame, "131#0000000000000102");
    EXPECT_LE(lines[at].time - answered, 0.1 + 0.03) << "a busy machine may lose a tick";

    // Off and on again: the stage is the stored one.
    StopDash();
    dash = std::make_unique<Process>(BinPath("motordash"), root.Path().c_str());
    ASSERT_TRUE(dash->WaitForOutput("Bit-timing for can0", 20000)) << dash->Stdout();
    ASSERT_EQ(Tool({"read", "BoostControl"}, &out, &err), 0) << err;
    EXPECT_EQ(out, "BoostControl = 2\n");
    ASSERT_EQ(Tool({"get", "BoostControl", "PROFILE_GAUGE_COUNT"}, &out, &err), 0) << err;
    EXPECT_EQ(out, "BoostControl 2\nPROFILE_GAUGE_COUNT 15 15 15\n");
}

TEST_F(XcpOnBus, AMasterThatVanishesMidUploadLeavesTheSessionUsable)
{
    XCP_MASTER_T gone;
    std::string error;
    ASSERT_TRUE(XcpMasterOpen(&gone, root.Path().c_str(), nullptr, &error)) << error;
    const PACKET_T connect = {0xFF, 0x00}, mta = SetMta(1), upload = {0xF5, 255};
    ASSERT_TRUE(XcpMasterSendFrame(&gone, 0x200, connect.data(), 2));
    ASSERT_TRUE(XcpMasterSendFrame(&gone, 0x200, mta.data(), 8));
    ASSERT_TRUE(XcpMasterSendFrame(&gone, 0x200, upload.data(), 2));
    EXPECT_EQ(Next(), CONNECTED);
    EXPECT_EQ(Next(), PACKET_T{0xFF});
    EXPECT_EQ(Next().size(), 8u) << "the upload has begun";
    XcpMasterClose(&gone);

    // The upload goes on to its end with nobody listening; a new CONNECT waits behind
    // it, and then the session is there for the taking.
    Send({0xFF, 0x00});
    std::vector<PACKET_T> frames;
    while (frames.size() < 37) {
        frames.push_back(Next());
        if (frames.back().empty()) break;
    }
    ASSERT_EQ(frames.size(), 37u);
    EXPECT_EQ(frames[35].size(), 4u) << "the last of the upload";
    EXPECT_EQ(frames[36], CONNECTED);
    EXPECT_EQ(Ask({0xFD}), (PACKET_T{0xFF, 0x00, 0x1D, 0x00, 0x00, 0x00}));
    EXPECT_EQ(Ask({0xF4, 2, 0, 0, 122, 0, 0, 0}), (PACKET_T{0xFF, 0xA0, 0x00})) << "X2, 160";
}

}  // namespace

namespace {

// DAQ frames of list 0 for `ms`: PID and the dash's time stamp of every ODT 0.
std::vector<uint32_t> SampleTimes(XCP_MASTER_T* m, int ms)
{
    std::vector<uint32_t> times;
    const int64_t end = NowMs() + ms;
    PACKET_T frame;
    while (NowMs() < end)
        if (XcpMasterDaqFrame(m, &frame, (int)(end - NowMs())) && frame[0] == 0 && frame.size() >= 5)
            times.push_back(frame[1] | frame[2] << 8 | frame[3] << 16 | (uint32_t)frame[4] << 24);
    return times;
}

}  // namespace

TEST_F(XcpOnBus, ListsSampleOnTheirEventsShowAWriteInTheNextSampleAndStopWithTheSession)
{
    ASSERT_EQ(XcpMasterConnect(&master).status, XCP_MASTER_OK);
    ASSERT_EQ(XcpMasterUnlock(&master, XCP_RESOURCE_DAQ, XcpResourceSecret(XCP_RESOURCE_DAQ)).status, XCP_MASTER_OK);
    ASSERT_EQ(XcpMasterUnlock(&master, XCP_RESOURCE_CAL_PAG, XcpResourceSecret(XCP_RESOURCE_CAL_PAG)).status,
              XCP_MASTER_OK);
    const uint32_t boost = XcpMapAddressOf("BoostControl");
    ASSERT_EQ(XcpMasterDaqStart(&master, {XcpMapAddressOf("RPM"), boost}, {4, 1}, 2).status, XCP_MASTER_OK);

    // Event 2: a set every 100 ms of the dash's clock.
    const std::vector<uint32_t> slow = SampleTimes(&master, 1000);
    EXPECT_GE(slow.size(), 8u);
    EXPECT_LE(slow.size(), 13u);
    for (size_t i = 1; i < slow.size(); i++) {
        EXPECT_GE(slow[i] - slow[i - 1], 90u) << i;
        EXPECT_LE(slow[i] - slow[i - 1], 250u) << i;
    }

    // A value written by DOWNLOAD is in the first set sampled after the answer.
    // BoostControl fits behind the time stamp, RPM does not.
    auto firstFrame = [&](PACKET_T* frame) {
        do ASSERT_TRUE(XcpMasterDaqFrame(&master, frame, RESPONSE_MS));
        while (frame->at(0) != 0);
        ASSERT_EQ(frame->size(), 6u);
    };
    PACKET_T frame;
    firstFrame(&frame);
    const uint8_t next = (uint8_t)((frame[5] + 1) % 3);
    ASSERT_EQ(XcpMasterWrite(&master, boost, {next}).status, XCP_MASTER_OK);
    firstFrame(&frame);
    EXPECT_EQ(frame[5], next);

    // Moved to event 1 while stopped: a set on every 10 ms pass.
    EXPECT_EQ(XcpMasterCommand(&master, {0xDE, 0, 0, 0}).packet, (PACKET_T{0xFF, 0}));
    EXPECT_EQ(XcpMasterCommand(&master, {0xE0, 0x10, 0, 0, 1, 0, 1, 0}).packet, (PACKET_T{0xFF}));
    EXPECT_EQ(XcpMasterCommand(&master, {0xDE, 1, 0, 0}).packet, (PACKET_T{0xFF, 0}));
    const size_t fast = SampleTimes(&master, 500).size();
    EXPECT_GE(fast, 35u);
    EXPECT_LE(fast, 65u);

    // Nothing goes on after DISCONNECT.
    ASSERT_EQ(XcpMasterDisconnect(&master).status, XCP_MASTER_OK);
    EXPECT_TRUE(SampleTimes(&master, 300).empty());

    // The tool: a header, rows of time and values, and the lists gone at its end.
    std::string out, err;
    ASSERT_EQ(Tool({"daq", "RPM", "BoostControl", "--event", "1", "--seconds", "1"}, &out, &err,
                   {"--secrets", Secrets()}),
              0)
        << err;
    EXPECT_EQ(out.substr(0, out.find('\n')), "time_ms,RPM,BoostControl");
    const size_t rows = (size_t)std::count(out.begin(), out.end(), '\n') - 1;
    EXPECT_GE(rows, 50u);
    const std::string second = out.substr(out.find('\n') + 1);
    EXPECT_NE(second.find(std::string(",") + std::to_string(next) + "\n"), std::string::npos) << second.substr(0, 80);
    EXPECT_NE(err.find("samples"), std::string::npos);
    // What the tool's session sent is still waiting here: past it, silence.
    while (XcpMasterReceiveFrame(&master, 0x300, &frame, 100)) {
    }
    EXPECT_TRUE(SampleTimes(&master, 300).empty());
}

// The description file as a tool reads it: blocks nest, and every variable in it has the
// address, type and size the slave's address map gives it.
TEST(XcpDescription, EveryObjectIsTheSlavesVariableAtItsAddress)
{
    DeviceRoot root;
    const std::string path = root.Path() + "/dash.a2l";
    std::string out, err;
    ASSERT_EQ(RunProgram(BinPath("motordash-xcp"), {"a2l", path}, &out, &err), 0) << err;
    FILE* f = fopen(path.c_str(), "r");
    ASSERT_NE(f, nullptr);
    std::vector<std::string> tokens;
    char word[256];
    while (fscanf(f, "%255s", word) == 1) tokens.push_back(word);
    fclose(f);
    const auto text = [&](size_t from, size_t n) {
        std::string t;
        for (size_t i = from; i < from + n && i < tokens.size(); i++) t += (t.empty() ? "" : " ") + tokens[i];
        return t;
    };

    std::vector<std::string> open;
    size_t measurements = 0, characteristics = 0, writable = 0;
    const char* const datatypes[] = {"UBYTE", "UBYTE", "SWORD", "UWORD", "ULONG", "FLOAT32_IEEE", "UBYTE"};
    const char* const layouts[] = {"RL_UBYTE", "RL_UBYTE", "RL_SWORD", "RL_UWORD", "RL_ULONG", "RL_FLOAT32_IEEE",
                                   "RL_UBYTE"};
    for (size_t i = 0; i + 1 < tokens.size(); i++) {
        if (tokens[i] == "/begin") open.push_back(tokens[i + 1]);
        if (tokens[i] == "/end") {
            ASSERT_FALSE(open.empty()) << "an /end too many at token " << i;
            EXPECT_EQ(open.back(), tokens[i + 1]) << text(i - 4, 8);
            open.pop_back();
        }
        if (tokens[i] != "/begin") continue;
        // Up to the block's end: its address and dimension.
        size_t end = i + 2;
        while (end < tokens.size() && tokens[end] != "/end") end++;
        auto after = [&](const char* key) -> std::string {
            for (size_t k = i; k + 1 < end; k++)
                if (tokens[k] == key) return tokens[k + 1];
            return "";
        };
        const std::string dim = after("MATRIX_DIM");
        if (tokens[i + 1] == "MEASUREMENT") {
            measurements++;
            const XCP_MAP_FIELD_T* field = XcpMapFindField(tokens[i + 2]);
            ASSERT_NE(field, nullptr) << text(i, 6);
            EXPECT_EQ(tokens[i + 4], datatypes[field->kind]) << field->name;
            EXPECT_EQ(strtoul(after("ECU_ADDRESS").c_str(), nullptr, 0), field->addr) << field->name;
            EXPECT_EQ(dim.empty() ? 1u : strtoul(dim.c_str(), nullptr, 0), field->elements) << field->name;
        } else if (tokens[i + 1] == "CHARACTERISTIC") {
            characteristics++;
            const XCP_MAP_FIELD_T* field = XcpMapFindField(tokens[i + 2]);
            ASSERT_NE(field, nullptr) << text(i, 6);
            EXPECT_EQ(tokens[i + 2], std::string(XcpMapRecordNames[field->record]) + "." + field->name);
            EXPECT_GE(field->addr, ramEditStart) << "the constants are not writable";
            EXPECT_EQ(strtoul(tokens[i + 5].c_str(), nullptr, 0), field->addr) << field->name;
            EXPECT_EQ(tokens[i + 6], layouts[field->kind]) << field->name;
            EXPECT_EQ(dim.empty() ? 1u : strtoul(dim.c_str(), nullptr, 0), field->elements) << field->name;
        }
    }
    EXPECT_TRUE(open.empty());
    for (const XCP_MAP_FIELD_T& field : XcpMapFields) writable += field.addr >= ramEditStart;
    EXPECT_EQ(measurements, XcpMapFields.size());
    EXPECT_EQ(characteristics, writable);
    const std::string all = text(0, tokens.size());
    for (const char* layout : layouts)
        EXPECT_NE(all.find(std::string("RECORD_LAYOUT ") + layout + " FNC_VALUES"), std::string::npos) << layout;
    EXPECT_NE(all.find("CAN_ID_BROADCAST 0x100 CAN_ID_MASTER 0x200 CAN_ID_SLAVE 0x300"), std::string::npos);
    EXPECT_NE(all.find(" 8 8 BYTE_ORDER_MSB_LAST"), std::string::npos) << "MAX_CTO and MAX_DTO";
    EXPECT_NE(all.find("DAQ DYNAMIC 3 3 0"), std::string::npos);
    EXPECT_NE(all.find("\"fg_100ms\" 2 DAQ 3 100 6"), std::string::npos);
}
