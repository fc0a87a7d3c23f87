// The simulated I/O board on its pseudo-terminal, driven by a scripted dash: the
// bootloader's update, the application's stream and configuration, line noise, and the
// board pulled off the link.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fcntl.h>
#include <map>
#include <poll.h>
#include <random>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>

#include "dash_harness.h"
#include "ioboard_control.h"
#include "ioboard_image.h"

namespace {

std::string Sentence(const std::string& body)
{
    unsigned sum = '*';
    for (char c : body) sum += (unsigned char)c;
    char tail[8];
    snprintf(tail, sizeof(tail), "*%02X\r", sum & 0xFF);
    return body + tail;
}

unsigned Hex(const std::string& s, size_t at, size_t digits)
{
    return (unsigned)strtoul(s.substr(at, digits).c_str(), nullptr, 16);
}

// The dash's end of the line, raw as its serial driver sets it.
class Line {
public:
    explicit Line(const std::string& path)
    {
        fd_ = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        struct termios t;
        if (fd_ >= 0 && tcgetattr(fd_, &t) == 0) {
            cfmakeraw(&t);
            tcsetattr(fd_, TCSANOW, &t);
            tcflush(fd_, TCIFLUSH);
        }
    }
    ~Line()
    {
        if (fd_ >= 0) close(fd_);
    }
    bool Open() const { return fd_ >= 0; }
    // All of it, as fast as the board takes it.
    void Write(const std::string& bytes) const
    {
        for (size_t done = 0; done < bytes.size();) {
            struct pollfd p = {fd_, POLLOUT, 0};
            ASSERT_EQ(poll(&p, 1, 2000), 1) << "the board stopped reading";
            const ssize_t n = write(fd_, bytes.data() + done, bytes.size() - done);
            if (n > 0) done += (size_t)n;
        }
    }
    void Send(const std::string& body) const { Write(Sentence(body)); }

    // The sentences that come within timeoutMs, each checked for its checksum and
    // returned without "*", digits and CR; stops early after `count` of them.
    std::vector<std::string> Read(int timeoutMs, size_t count = SIZE_MAX)
    {
        std::vector<std::string> out;
        const int64_t end = NowMs() + timeoutMs;
        while (out.size() < count) {
            const size_t cr = pending_.find('\r');
            if (cr != std::string::npos) {
                const std::string s = pending_.substr(0, cr);
                pending_.erase(0, cr + 1);
                EXPECT_TRUE(s.size() >= 4 && s[0] == '$' && Sentence(s.substr(0, s.size() - 3)) == s + "\r") << s;
                out.push_back(s.substr(0, s.size() - 3));
                continue;
            }
            struct pollfd p = {fd_, POLLIN, 0};
            const int64_t left = end - NowMs();
            if (left <= 0 || poll(&p, 1, (int)left) <= 0) break;
            char buf[4096];
            const ssize_t n = read(fd_, buf, sizeof(buf));
            if (n > 0) pending_.append(buf, (size_t)n);
        }
        return out;
    }
    // The next sentence with this letter, the stream around it skipped; "" for none.
    std::string Next(char letter, int timeoutMs = 1000)
    {
        const int64_t end = NowMs() + timeoutMs;
        while (NowMs() < end) {
            for (const std::string& s : Read((int)(end - NowMs()), 1)) {
                if (s[1] == letter) return s;
            }
        }
        return "";
    }

private:
    int fd_ = -1;
    std::string pending_;
};

class IoBoard : public ::testing::Test {
protected:
    void SetUp() override
    {
        root.Write("dev/ttySP2", "");  // replaced by the board's link
        Start();
    }
    void Start()
    {
        board = std::make_unique<Process>(BinPath("motordash-ioboard"), nullptr,
                                          std::vector<std::string>{root.Path(), "--baud", "0"});
        std::string reply;
        const int64_t end = NowMs() + 5000;
        while (NowMs() < end && !ioboard_control(root.Path(), "status", &reply)) usleep(10000);
        ASSERT_NE(reply.find("\"link\":\"on\""), std::string::npos) << reply << board->Stderr();
        line = std::make_unique<Line>(root.Abs("dev/ttySP2"));
        ASSERT_TRUE(line->Open());
    }
    void Stop()
    {
        line.reset();
        board->Signal(SIGTERM);
        int status = 0;
        ASSERT_TRUE(board->Wait(5000, &status));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << board->Stderr();
    }
    std::string Control(const std::string& request)
    {
        std::string reply;
        EXPECT_TRUE(ioboard_control(root.Path(), request, &reply)) << reply;
        return reply;
    }
    // Sends the commands in batches, as fast as the board answers, and checks each reply.
    void Pipeline(const std::vector<std::string>& commands, const std::string& reply)
    {
        for (size_t i = 0; i < commands.size(); i += 64) {
            const size_t n = std::min<size_t>(64, commands.size() - i);
            std::string batch;
            for (size_t j = 0; j < n; j++) batch += Sentence(commands[i + j]);
            line->Write(batch);
            const std::vector<std::string> replies = line->Read(5000, n);
            ASSERT_EQ(replies.size(), n) << commands[i];
            for (const std::string& r : replies) ASSERT_EQ(r, reply) << commands[i];
        }
    }
    std::string Flash() const { return root.Read("var/lib/ioboard/flash.bin"); }

    DeviceRoot root{"310"};
    std::unique_ptr<Process> board;
    std::unique_ptr<Line> line;
};

TEST_F(IoBoard, InitFileIsFlashedVerifiedAndKeptAcrossARestart)
{
    const std::string file = root.Read("app/bin/ioboard0.bin");
    ASSERT_EQ(file.size(), IOBOARD_FIRMWARE_SIZE);
    const uint8_t* image = reinterpret_cast<const uint8_t*>(file.data());
    const unsigned length = image[IOBOARD_FIRMWARE_LENGTH_OFFSET] << 8 | image[IOBOARD_FIRMWARE_LENGTH_OFFSET + 1];
    const unsigned sum = image[IOBOARD_FIRMWARE_CHECKSUM_OFFSET] << 8 | image[IOBOARD_FIRMWARE_CHECKSUM_OFFSET + 1];
    EXPECT_EQ(ioboard_image_sum(image, length), sum) << "init's file carries a right checksum";

    // Reset and the version check: the factory application is older than the file.
    line->Send("$Z,5a5a");
    line->Send("$W");
    const std::string version = line->Next('W');
    ASSERT_EQ(version.size(), 17u) << version;  // the 20-character form with its checksum
    EXPECT_EQ(version[3], 'b');
    EXPECT_EQ(Hex(version, 5, 2), 2u);
    EXPECT_LT(Hex(version, 10, 2), image[IOBOARD_FIRMWARE_VERSION_OFFSET]);

    std::vector<std::string> erase, program;
    char body[32];
    for (unsigned a = 0xF700; a >= 0x7C00; a -= 0x300) {
        snprintf(body, sizeof(body), "$e,%04X", a);
        erase.push_back(body);
    }
    Pipeline(erase, "$e,0");
    EXPECT_EQ(Flash(), std::string(IOBOARD_FLASH_SIZE, '\xFF'));
    line->Send("$e,7C01");
    EXPECT_EQ(line->Next('e'), "$e,1") << "not a sector's start";

    for (unsigned offset = 0; offset < IOBOARD_FLASH_SIZE; offset++) {
        if (image[offset] == 0xFF) continue;
        snprintf(body, sizeof(body), "$p,%04X,%02X", IOBOARD_FLASH_START + offset, image[offset]);
        program.push_back(body);
    }
    Pipeline(program, "$p,0");
    EXPECT_EQ(Flash(), file.substr(0, IOBOARD_FLASH_SIZE));
    snprintf(body, sizeof(body), "$p,%04X,FF", IOBOARD_FLASH_START);
    line->Send(body);
    EXPECT_EQ(line->Next('p'), image[0] == 0xFF ? "$p,0" : "$p,1") << "programming cannot set bits";

    snprintf(body, sizeof(body), "$c,%04x", length);  // either case is taken
    line->Send(body);
    const std::string checksum = line->Next('c');
    ASSERT_EQ(checksum.size(), 7u) << checksum;
    EXPECT_EQ(Hex(checksum, 3, 4), sum);

    line->Send("$x");
    line->Send("$W");
    char expected[32];
    snprintf(expected, sizeof(expected), "$W,m,%02X,b,02,h,10", image[IOBOARD_FIRMWARE_VERSION_OFFSET]);
    EXPECT_EQ(line->Next('W'), expected);

    // A power cycle: the board comes back with what was written.
    Stop();
    Start();
    const std::string status = Control("status");
    EXPECT_NE(status.find("\"mode\":\"application\",\"bootloader\":2,\"application\":" +
                          std::to_string(image[IOBOARD_FIRMWARE_VERSION_OFFSET])),
              std::string::npos)
        << status;
}

TEST_F(IoBoard, AnUpdateCutShortLeavesNoApplication)
{
    line->Send("$Z,5a5a");
    line->Send("$e,F700");
    EXPECT_EQ(line->Next('e'), "$e,0");
    line->Send("$x");  // refused: the bootloader stays
    line->Send("$W");
    EXPECT_EQ(line->Next('W'), "$W,b,02,a,FF,h,10");
    Stop();
    Start();
    EXPECT_NE(Control("status").find("\"mode\":\"bootloader\",\"bootloader\":2,\"application\":255"),
              std::string::npos);
}

// What the dash computes from the board's raw counts (its conversions, run forwards).
struct Stream {
    std::map<std::string, std::string> byKind;  // letter and length, e.g. "I50"
    unsigned Field(const std::string& kind, size_t index, size_t digits = 4) const
    {
        const std::string& s = byKind.at(kind);
        size_t at = 3;
        for (size_t i = 0; i < index; i++) at = s.find(',', at) + 1;
        return Hex(s, at, digits);
    }
};

Stream Collect(Line* line, int ms)
{
    Stream stream;
    for (const std::string& s : line->Read(ms)) stream.byKind[s.substr(1, 1) + std::to_string(s.size() + 3)] = s;
    return stream;
}

TEST_F(IoBoard, StreamsBothModesAndTakesTheDashsConfiguration)
{
    const std::vector<std::string> mode1 = {"I50", "L11", "P10", "G26", "S35", "e20", "k30"};
    const std::vector<std::string> mode2 = {"J50", "O11", "H12", "R25", "d17", "n30"};
    line->Send("$T,1");
    Stream stream = Collect(line.get(), 300);
    EXPECT_EQ(stream.byKind.count("T7"), 1u) << "the mode is acknowledged";
    for (const std::string& kind : mode1) EXPECT_EQ(stream.byKind.count(kind), 1u) << kind;
    for (const std::string& kind : mode2) EXPECT_EQ(stream.byKind.count(kind), 0u) << kind;

    // The dash's configuration, and what the outside world applies.
    line->Send("$T,2");
    line->Send("$M,01,02");  // channel 1 resistance, channel 2 high gain
    line->Send("$Q,40,00");  // channel 14 resistance
    line->Send("$E,FF,00,00,00,FF");
    line->Send("$D,00,00,00,80");
    for (const char* set : {"set res1 1000", "set an2 1.5", "set an3 5", "set res14 12", "set supply 12",
                            "set sw1 1", "set swx 1", "set sw3 1", "set sw3 0", "set sw3 1", "set tach 100"}) {
        EXPECT_EQ(Control(set), "ok") << set;
    }
    EXPECT_EQ(Control("set an15 1").rfind("error: no input 'an15'", 0), 0u);
    EXPECT_EQ(Control("set an1 -1").rfind("error: ", 0), 0u);
    line->Read(120);  // a cycle that began before the changes
    stream = Collect(line.get(), 200);
    for (const std::string& kind : mode1) EXPECT_EQ(stream.byKind.count(kind), 1u) << kind;
    for (const std::string& kind : mode2) EXPECT_EQ(stream.byKind.count(kind), 1u) << kind;
    EXPECT_EQ(stream.byKind["L11"], "$L,01,02");
    EXPECT_EQ(stream.byKind["O11"], "$O,40,00");
    EXPECT_EQ(stream.byKind["e20"], "$e,FF,00,00,00,FF");
    EXPECT_EQ(stream.byKind["d17"], "$d,00,00,00,80");
    EXPECT_EQ(stream.byKind["G26"], "$G,0001,C,0000,O,0001,C");
    EXPECT_EQ(stream.byKind["H12"], "$H,0002,C") << "two closures counted";
    EXPECT_EQ(stream.Field("P10", 0), 3125u);

    const float ref1 = (float)stream.Field("k30", 0), ref2 = (float)stream.Field("k30", 1);
    const float ref3 = (float)stream.Field("k30", 2), ref5 = (float)stream.Field("k30", 4);
    const auto ohms = [&](float y) {
        const float r = (4 * y - (ref3 - ref1)) * 105 / ref5 - 0.5f;
        return r < 20 ? (r - 5) * 1.3333334f : r;
    };
    EXPECT_NEAR(ohms((float)stream.Field("I50", 1)), 1000, 0.5);
    EXPECT_NEAR(stream.Field("I50", 2) * 2.048f / ref2, 1.5, 0.001);
    EXPECT_NEAR(stream.Field("I50", 3) * 2.048f * 4.05f / ref2, 5, 0.001);
    EXPECT_NEAR(ohms((float)stream.Field("J50", 7)), 12, 0.5) << "the low range's stretch";

    const float common = (float)stream.Field("S35", 5);
    const auto volts = [&](unsigned raw) { return raw / common * 4.096f * 11; };
    EXPECT_NEAR(volts(stream.Field("S35", 0)), 12, 0.01) << "output 1 fully on reads the supply";
    EXPECT_NEAR(volts(stream.Field("S35", 1)), 0, 0.01);
    EXPECT_NEAR(volts(stream.Field("R25", 3)), 12 * 128 / 255.0, 0.01);
    EXPECT_NEAR(volts(stream.Field("S35", 4)) + 0.85f, 12, 0.01) << "the small model's supply behind its diode";
}

TEST_F(IoBoard, LineNoiseCostsOnlyTheSentenceItHits)
{
    std::mt19937 random(22);
    std::string noise;
    for (int i = 0; i < 20000; i++) noise += (char)(random() % 4 ? random() : "$\r\0*,"[random() % 5]);
    line->Write(noise);
    line->Write("$W*00\r");                       // a wrong checksum
    line->Write("$W" + std::string(1, '\0') + "*A5\r");  // a NUL ends the sentence
    line->Write("$" + std::string(2000, 'W'));     // no end: too long
    line->Write("$Z,5a$W*A5\r");                   // "$" starts over
    std::vector<std::string> replies = line->Read(300);
    replies.erase(std::remove_if(replies.begin(), replies.end(), [](const std::string& s) { return s[1] != 'W'; }),
                  replies.end());
    EXPECT_EQ(replies.size(), 1u) << "only the sentence after the restart is answered";
    line->Write("$W*a5\r");  // lowercase digits
    EXPECT_EQ(line->Next('W', 500).substr(0, 5), "$W,m,");
    const std::string status = Control("status");
    const size_t dropped = status.find("\"dropped\":");
    ASSERT_NE(dropped, std::string::npos) << status;
    EXPECT_GE(atoi(status.c_str() + dropped + 10), 4) << status;
}

TEST_F(IoBoard, PulledOffTheLinkItFallsSilentAndComesBack)
{
    line->Send("$T,1");
    EXPECT_NE(line->Next('I'), "");
    EXPECT_EQ(Control("link off"), "ok");
    line->Read(100);
    line->Send("$W");
    EXPECT_TRUE(line->Read(300).empty()) << "neither answers nor streams";
    EXPECT_NE(Control("status").find("\"link\":\"off\""), std::string::npos);
    EXPECT_EQ(Control("link on"), "ok");
    line->Send("$W");
    EXPECT_NE(line->Next('W'), "");
    EXPECT_NE(line->Next('I'), "") << "still in its stream mode";

    // Ended, it takes its link away: nothing points at a terminal that may be reused.
    Stop();
    struct stat st;
    EXPECT_NE(lstat(root.Abs("dev/ttySP2").c_str(), &st), 0);
    EXPECT_FALSE(root.Exists("run/ioboard/control"));
}

}  // namespace
