#include <cjson/cJSON.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "decoder_command.h"
#include "platform/device_paths.h"
#include "platform/video_plane.h"
#include "player/kovani_player.h"
#include "tests/support/temp_dir.h"
#include "platform/sysutil.h"

namespace {

// True once `done` holds, false when `ms` pass first.
bool waitFor(const std::function<bool()>& done, long ms) {
    const long deadline = systemms() + ms;
    while (!done()) {
        if (systemms() > deadline) return false;
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

// Restores one environment variable when the test ends.
class SavedEnv {
public:
    explicit SavedEnv(const char* name) : mName(name) {
        const char* value = getenv(name);
        mSet = value != nullptr;
        if (mSet) mValue = value;
    }
    const std::string& value() const { return mValue; }
    ~SavedEnv() {
        if (mSet)
            setenv(mName.c_str(), mValue.c_str(), 1);
        else
            unsetenv(mName.c_str());
    }

private:
    std::string mName;
    std::string mValue;
    bool mSet;
};

// The real decoder, headless, driven through the player's own client, with
// every device path inside a temporary root.
class AvworkerTest : public ::testing::Test {
protected:
    // A clip of `seconds` in the temporary root: 320x240 at 25 frames a
    // second with two audio tracks (440 and 880 Hz); "" when ffmpeg fails.
    std::string makeClip(const char* name, int seconds) {
        const std::string path = mRoot.path() + "/" + name;
        const std::string line =
            "ffmpeg -loglevel error -y -f lavfi -i testsrc=size=320x240:rate=25 "
            "-f lavfi -i sine=frequency=440 -f lavfi -i sine=frequency=880 "
            "-map 0 -map 1 -map 2 -t " + std::to_string(seconds) +
            " -c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac '" + path + "'";
        EXPECT_EQ(system(line.c_str()), 0) << line;
        return fileExists(path) ? path : "";
    }

    void SetUp() override {
        setenv("PATH", (std::string(KOVANI_TEST_AVWORKER_DIR) + ":" + mPath.value()).c_str(), 1);
        setenv("KOVANI_PATH_PREFIX", mRoot.path().c_str(), 1);
        unsetenv("DISPLAY");
        unsetenv("WAYLAND_DISPLAY");
    }
    void TearDown() override {
        (void)system("killall -q avworker");
        EXPECT_TRUE(waitFor([] { return check_process_exist("avworker") == -1; }, 10000));
    }

    // A number from the status file the decoder wrote last; -1 when missing.
    int statusNumber(const char* key) const {
        cJSON* doc = cJSON_Parse(readFile(mRoot.at(DEVICE_PATH_PLAYER_STATUS)).c_str());
        const cJSON* item = cJSON_GetObjectItemCaseSensitive(doc, key);
        const int value = cJSON_IsNumber(item) ? item->valueint : -1;
        cJSON_Delete(doc);
        return value;
    }
    std::string statusText() const { return readFile(mRoot.at(DEVICE_PATH_PLAYER_STATUS)); }
    // The state word from the status file the decoder wrote last.
    std::string statusWord() const {
        cJSON* doc = cJSON_Parse(readFile(mRoot.at(DEVICE_PATH_PLAYER_STATUS)).c_str());
        const cJSON* item = cJSON_GetObjectItemCaseSensitive(doc, "status");
        const std::string word = cJSON_IsString(item) ? item->valuestring : "";
        cJSON_Delete(doc);
        return word;
    }

    SavedEnv mPath{"PATH"};
    SavedEnv mPrefix{"KOVANI_PATH_PREFIX"};
    SavedEnv mDisplay{"DISPLAY"};
    SavedEnv mWayland{"WAYLAND_DISPLAY"};
    TempDeviceRoot mRoot;
};

}  // namespace

TEST_F(AvworkerTest, PlaysHoldsWhilePausedAndStepsTenSecondsPerCommand) {
    const std::string clip = makeClip("long clip.mp4", 25);
    ASSERT_FALSE(clip.empty());
    KovaniPlayer player(nullptr);
    player.setUrl(clip.c_str());
    ASSERT_EQ(player.prepare(), 0);
    ASSERT_EQ(player.play(), 0);
    ASSERT_TRUE(waitFor([&] { return player.getPositionMS() > 0; }, 10000));
    EXPECT_NEAR(player.getDurationMS(), 25000, 100);

    player.pause();
    ASSERT_TRUE(waitFor([&] { return statusWord() == "paused"; }, 10000)) << statusText();
    const int held = statusNumber("position");
    sleep(1);
    EXPECT_NEAR(statusNumber("position"), held, 100);

    // The same command twice in a row acts twice.
    player.fastForward();
    player.fastForward();
    ASSERT_TRUE(waitFor([&] { return statusNumber("position") >= held + 19000; }, 10000));
    EXPECT_NEAR(statusNumber("position"), held + 20000, 100);

    player.fastBackward();
    ASSERT_TRUE(waitFor([&] { return statusNumber("position") <= held + 11000; }, 10000));
    EXPECT_NEAR(statusNumber("position"), held + 10000, 100);
    EXPECT_EQ(statusWord(), "paused") << "stepping keeps the pause";
}

TEST_F(AvworkerTest, ReportsPictureSizeAudioStreamsTrackAndVolume) {
    const std::string clip = makeClip("long clip.mp4", 25);
    ASSERT_FALSE(clip.empty());
    KovaniPlayer player(nullptr);
    player.setUrl(clip.c_str());
    ASSERT_EQ(player.prepare(), 0);
    ASSERT_TRUE(waitFor([&] { return player.getAudioTrackNum() == 2; }, 10000));
    EXPECT_EQ(player.getVideoWidth(), 320);
    EXPECT_EQ(player.getVideoHeight(), 240);
    EXPECT_EQ(player.getAudioTrack(), 0) << "tracks are counted from 0";

    player.switchAudio(1);
    ASSERT_TRUE(waitFor([&] { return player.getAudioTrack() == 1; }, 10000));

    // A track the file lacks is refused; the later volume command shows that
    // the decoder has handled it by then.
    player.switchAudio(2);
    player.setVolume(40);
    ASSERT_TRUE(waitFor([&] { return player.getVolume() == 40; }, 10000));
    EXPECT_EQ(player.getAudioTrack(), 1);
}

TEST_F(AvworkerTest, FinishedFileReportsCompletedAndDecoderRunsUntilStopped) {
    const std::string clip = makeClip("short.mp4", 3);
    ASSERT_FALSE(clip.empty());
    CountingHandler handler;
    KovaniPlayer player(&handler);
    player.setUrl(clip.c_str());
    ASSERT_EQ(player.prepare(), 0);
    EXPECT_FALSE(player.isComplete());
    ASSERT_EQ(player.play(), 0);
    ASSERT_TRUE(waitFor([&] { return player.isComplete(); }, 10000)) << statusText();
    EXPECT_NEAR(player.getPositionMS(), 3000, 100);
    EXPECT_GT(check_process_exist("avworker"), 0) << "the decoder waits to be killed";

    player.stop();
    EXPECT_TRUE(waitFor([] { return check_process_exist("avworker") == -1; }, 10000));
    EXPECT_EQ(handler.mCompletions, 1);
    EXPECT_EQ(statusWord(), "completed") << "the last status stays for the watcher";
}

TEST_F(AvworkerTest, UnplayableFileReportsErrorNotCompleted) {
    const std::string broken = mRoot.path() + "/broken.mp4";
    writeFileAtomic(broken, "not a video");
    KovaniPlayer player(nullptr);
    player.setUrl(broken.c_str());
    ASSERT_EQ(player.prepare(), 0);
    player.play();
    ASSERT_TRUE(waitFor([&] { return statusWord() == "error"; }, 10000));
    EXPECT_FALSE(player.isComplete());
    EXPECT_GT(check_process_exist("avworker"), 0);
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

// The picture goes into the video plane at the rectangle of the last "win",
// fitted with black bars; it follows the rectangle while paused and goes
// with the decoder.
TEST_F(AvworkerTest, DrawsIntoTheVideoPlaneAtTheWindowRectangle) {
    const std::string clip = mRoot.path() + "/magenta.mp4";
    const std::string line = "ffmpeg -loglevel error -y -f lavfi -i color=c=0xFF00FF:size=320x240:rate=25 -t 20 "
                             "-c:v libx264 -preset ultrafast -pix_fmt yuv420p '" + clip + "'";
    ASSERT_EQ(system(line.c_str()), 0) << line;
    KovaniPlayer player(nullptr);
    player.setUrl(clip.c_str());
    ASSERT_EQ(player.prepare(), 0);
    player.setDisplayRect(100, 100, 320, 180);
    ASSERT_EQ(player.play(), 0);

    VideoPlaneReader plane;
    FrameCopy frame;
    ASSERT_TRUE(waitFor([&] { return plane.poll(&frame, videoPlaneClockMs()) && frame.mRect.w > 0; }, 10000));
    EXPECT_EQ(frame.mRect.x, 100);
    EXPECT_EQ(frame.mRect.w, 320);
    EXPECT_EQ(frame.mRect.h, 180);
    // A 4:3 picture in a 16:9 rectangle: 240 wide in the middle.
    EXPECT_TRUE(near(frame.rgb(160, 90), 0xFF00FF)) << std::hex << frame.rgb(160, 90);
    EXPECT_TRUE(near(frame.rgb(10, 90), 0x000000)) << std::hex << frame.rgb(10, 90);
    EXPECT_TRUE(near(frame.rgb(310, 90), 0x000000)) << std::hex << frame.rgb(310, 90);

    player.pause();
    player.setDisplayRect(0, 0, 1280, 720);
    ASSERT_TRUE(waitFor([&] { return plane.poll(&frame, videoPlaneClockMs()) && frame.mRect.w == 1280; }, 10000));
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
    struct Row {
        const char* text;
        int rc;
        DecoderCommandType type;
        int args[4];
    };
    const Row rows[] = {
        {"play\n", 0, DECODER_COMMAND_PLAY, {}},
        {"pause", 0, DECODER_COMMAND_PAUSE, {}},
        {"  fastforward \r\n", 0, DECODER_COMMAND_FORWARD, {}},
        {"rewind\n", 0, DECODER_COMMAND_REWIND, {}},
        {"audiotrack 2\n", 0, DECODER_COMMAND_AUDIO_TRACK, {2}},
        {"audiotrack  0", 0, DECODER_COMMAND_AUDIO_TRACK, {0}},
        {"volume 40\n", 0, DECODER_COMMAND_VOLUME, {40}},
        {"win 650 85 610 360\n", 0, DECODER_COMMAND_WINDOW, {650, 85, 610, 360}},
        {"win -5 0 1280 720", 0, DECODER_COMMAND_WINDOW, {-5, 0, 1280, 720}},
        {"", -1, DECODER_COMMAND_PLAY, {}},
        {" \n", -1, DECODER_COMMAND_PLAY, {}},
        {"PLAY\n", -1, DECODER_COMMAND_PLAY, {}},
        {"playx", -1, DECODER_COMMAND_PLAY, {}},
        {"play now", -1, DECODER_COMMAND_PLAY, {}},
        {"play\npause\n", -1, DECODER_COMMAND_PLAY, {}},
        {"audiotrack", -1, DECODER_COMMAND_PLAY, {}},
        {"audiotrack one", -1, DECODER_COMMAND_PLAY, {}},
        {"audiotrack 1 2", -1, DECODER_COMMAND_PLAY, {}},
        {"audiotrack -1", -1, DECODER_COMMAND_PLAY, {}},
        {"audiotrack +1", -1, DECODER_COMMAND_PLAY, {}},
        {"audiotrack 1x", -1, DECODER_COMMAND_PLAY, {}},
        {"volume -3", -1, DECODER_COMMAND_PLAY, {}},
        {"volume 99999999999", -1, DECODER_COMMAND_PLAY, {}},
        {"win 0 0 1280", -1, DECODER_COMMAND_PLAY, {}},
        {"win 0 0 0 720", -1, DECODER_COMMAND_PLAY, {}},
        {"win 0 0 1280 -720", -1, DECODER_COMMAND_PLAY, {}},
        {"\"win 0 0 1280 720\"", -1, DECODER_COMMAND_PLAY, {}},
    };
    for (const Row& row : rows) {
        DecoderCommand command = {DECODER_COMMAND_PLAY, {-9, -9, -9, -9}};
        EXPECT_EQ(parseDecoderCommand(row.text, &command), row.rc) << '"' << row.text << '"';
        if (row.rc != 0) continue;
        EXPECT_EQ(command.type, row.type) << row.text;
        // Numbers a command does not take read 0.
        for (int i = 0; i < 4; i++) EXPECT_EQ(command.args[i], row.args[i]) << row.text;
    }
    DecoderCommand command;
    EXPECT_EQ(parseDecoderCommand(nullptr, &command), -1);
}
