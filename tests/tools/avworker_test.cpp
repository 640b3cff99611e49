#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "decoder_command.h"
#include "platform/clock.h"
#include "platform/device_paths.h"
#include "platform/sysutil.h"
#include "platform/video_plane.h"
#include "player/kovani_player.h"
#include "tests/support/temp_dir.h"

namespace {

// True once `done` holds, false when `ms` pass first.
bool waitFor(const std::function<bool()>& done, long ms) {
    const long deadline = monotonicMs() + ms;
    while (!done()) {
        if (monotonicMs() > deadline) return false;
        usleep(20 * 1000);
    }
    return true;
}

class CountingHandler : public KovaniPlayerHandler {
public:
    void onPlayComplete() override { mCompletions++; }
    void onSeekComplete() override {}
    std::atomic<int> mCompletions{0};
};

// The real decoder, headless, through the player's client, in a temporary root.
class AvworkerTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"PATH", "KOVANI_PATH_PREFIX", "DISPLAY", "WAYLAND_DISPLAY"})
            mSavedEnv.emplace_back(name, getenv(name) ? std::optional<std::string>(getenv(name)) : std::nullopt);
        setenv("PATH", (KOVANI_TEST_AVWORKER_DIR ":" + mSavedEnv[0].second.value_or("")).c_str(), 1);
        setenv("KOVANI_PATH_PREFIX", mRoot.path().c_str(), 1);
        unsetenv("DISPLAY");
        unsetenv("WAYLAND_DISPLAY");
    }
    void TearDown() override {
        (void)system("killall -q avworker");
        EXPECT_TRUE(waitFor([] { return check_process_exist("avworker") == -1; }, 10000));
        for (const auto& [name, value] : mSavedEnv)
            value ? setenv(name, value->c_str(), 1) : unsetenv(name);
    }
    // A clip of `seconds` of `video` at 25 frames a second, with a tone.
    std::string makeClip(const char* name, int seconds, const char* video = "testsrc=size=320x240") {
        const std::string path = mRoot.path() + "/" + name;
        const std::string line = std::string("ffmpeg -loglevel error -y -f lavfi -i ") + video +
                                 ":rate=25 -f lavfi -i sine=frequency=440 -c:a aac -t " + std::to_string(seconds) +
                                 " -c:v libx264 -preset ultrafast -pix_fmt yuv420p '" + path + "'";
        EXPECT_EQ(system(line.c_str()), 0) << line;
        return fileExists(path) ? path : "";
    }
    std::vector<std::pair<const char*, std::optional<std::string>>> mSavedEnv;  // restored afterwards
    TempDeviceRoot mRoot;
};

}  // namespace

TEST_F(AvworkerTest, FinishedFileReportsCompletedAndDecoderRunsUntilStopped) {
    const std::string clip = makeClip("short.mp4", 3);
    ASSERT_FALSE(clip.empty());
    CountingHandler handler;
    KovaniPlayer player(&handler);
    player.setUrl(clip.c_str());
    ASSERT_EQ(player.prepare(), 0);
    EXPECT_FALSE(player.isComplete());
    ASSERT_EQ(player.play(), 0);
    ASSERT_TRUE(waitFor([&] { return player.isComplete(); }, 10000));
    EXPECT_NEAR(player.getPositionMS(), 3000, 100);
    EXPECT_GT(check_process_exist("avworker"), 0) << "the decoder waits to be killed";

    player.stop();
    EXPECT_TRUE(waitFor([] { return check_process_exist("avworker") == -1; }, 10000));
    EXPECT_EQ(handler.mCompletions, 1);
    EXPECT_NE(readFile(mRoot.at(DEVICE_PATH_PLAYER_STATUS)).find("\"completed\""), std::string::npos)
        << "the last status stays for the watcher";
}

// A file it cannot play: the decoder quits, so the player sees the start fail.
TEST_F(AvworkerTest, AFileItCannotPlayEndsTheDecoder) {
    const std::string junk = mRoot.path() + "/junk.mp4";
    writeFileAtomic(junk, "not a video");
    KovaniPlayer player(nullptr);
    player.setUrl(junk.c_str());
    ASSERT_EQ(player.prepare(), 0);
    player.play();
    EXPECT_TRUE(waitFor([&] { return player.decoderGone(); }, 10000));
    EXPECT_LE(player.getDurationMS(), 0);
}

namespace {

// Keeps the pixels of the newest frame the decoder drew into the plane.
class FrameCopy : public VideoPlaneReader::Sink {
public:
    void onFrame(const VideoRect& rect, const uint8_t* pixels, size_t stride) override {
        mRect = rect;
        mStride = stride;
        mPixels.assign(pixels, pixels + stride * rect.h);
    }
    // Red, green, blue of (x, y) inside the frame's rectangle.
    uint32_t rgb(int x, int y) const {
        uint32_t p;
        memcpy(&p, &mPixels[y * mStride + x * 4], 4);
        return p & 0xFFFFFF;
    }
    VideoRect mRect = {0, 0, 0, 0};
    size_t mStride = 0;
    std::vector<uint8_t> mPixels;
};

bool near(uint32_t got, uint32_t want) {
    for (int shift = 0; shift < 24; shift += 8)
        if (abs((int)((got >> shift) & 0xFF) - (int)((want >> shift) & 0xFF)) > 12) return false;
    return true;
}

}  // namespace

// The picture goes into the plane at the last "win" rectangle, fitted, following
// it while paused, and goes with the decoder.
TEST_F(AvworkerTest, DrawsIntoTheVideoPlaneAtTheWindowRectangle) {
    const std::string clip = makeClip("magenta.mp4", 20, "color=c=0xFF00FF:size=320x240");
    ASSERT_FALSE(clip.empty());
    KovaniPlayer player(nullptr);
    player.setUrl(clip.c_str());
    ASSERT_EQ(player.prepare(), 0);
    player.setDisplayRect(100, 100, 320, 180);
    ASSERT_EQ(player.play(), 0);

    VideoPlaneReader plane;
    FrameCopy frame;
    // The first pictures may come before the clip's first frame is decoded:
    // waited for is the picture itself, not merely one at the rectangle.
    ASSERT_TRUE(waitFor([&] {
        plane.poll(&frame, videoPlaneClockMs());
        return frame.mRect.w > 0 && near(frame.rgb(160, 90), 0xFF00FF);
    }, 10000)) << "no magenta picture at the window rectangle";
    EXPECT_EQ(frame.mRect.x, 100);
    EXPECT_EQ(frame.mRect.w, 320);
    EXPECT_EQ(frame.mRect.h, 180);
    // A 4:3 picture in a 16:9 rectangle: 240 wide in the middle.
    EXPECT_TRUE(near(frame.rgb(160, 90), 0xFF00FF)) << std::hex << frame.rgb(160, 90);
    EXPECT_TRUE(near(frame.rgb(10, 90), 0x000000)) << std::hex << frame.rgb(10, 90);
    EXPECT_TRUE(near(frame.rgb(310, 90), 0x000000)) << std::hex << frame.rgb(310, 90);

    player.pause();
    player.setDisplayRect(0, 0, 1280, 720);
    ASSERT_TRUE(waitFor([&] {
        plane.poll(&frame, videoPlaneClockMs());
        return frame.mRect.w == 1280 && near(frame.rgb(640, 360), 0xFF00FF);
    }, 10000)) << "no magenta picture over the whole screen";
    EXPECT_TRUE(near(frame.rgb(640, 360), 0xFF00FF));
    EXPECT_TRUE(near(frame.rgb(100, 360), 0x000000)) << "fitted, not stretched";

    player.stop();
    ASSERT_TRUE(player.waitIdle(10000));
    EXPECT_TRUE(waitFor([&] { return plane.poll(&frame, videoPlaneClockMs()) || !plane.attached(); }, 10000));
    EXPECT_EQ(plane.rect().w, 0) << "a stopped decoder leaves no picture";
    EXPECT_TRUE(waitFor([] {
        const int fd = shm_open(videoPlaneName().c_str(), O_RDONLY, 0);
        if (fd >= 0) close(fd);
        return fd < 0;
    }, 10000))
        << "the decoder removes its plane";
}

TEST(DecoderCommandParser, AcceptsExactlyTheCommandLinesThePlayerWrites) {
    const struct { const char* text; DecoderCommandType type; int args[4]; } good[] = {
        {"play\n", DECODER_COMMAND_PLAY, {}},
        {"pause", DECODER_COMMAND_PAUSE, {}},
        {"  fastforward \r\n", DECODER_COMMAND_FORWARD, {}},
        {"audiotrack 2\n", DECODER_COMMAND_AUDIO_TRACK, {2}},
        {"volume 40\n", DECODER_COMMAND_VOLUME, {40}},
        {"win 650 85 610 360\n", DECODER_COMMAND_WINDOW, {650, 85, 610, 360}},
    };
    for (const auto& row : good) {
        DecoderCommand command = {DECODER_COMMAND_PLAY, {-9, -9, -9, -9}};
        ASSERT_EQ(parseDecoderCommand(row.text, &command), 0) << row.text;
        EXPECT_EQ(command.type, row.type) << row.text;
        for (int i = 0; i < 4; i++) EXPECT_EQ(command.args[i], row.args[i]) << row.text;  // unused ones read 0
    }
    DecoderCommand command;
    for (const char* bad : {"", "PLAY\n", "play now", "play\npause\n", "audiotrack one", "audiotrack -1", "volume -3",
                            "volume 99999999999", "win 0 0 1280", "win 0 0 1280 -720", "\"win 0 0 1280 720\""})
        EXPECT_EQ(parseDecoderCommand(bad, &command), -1) << bad;
    EXPECT_EQ(parseDecoderCommand(nullptr, &command), -1);
}
