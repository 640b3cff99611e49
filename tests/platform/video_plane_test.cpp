#include "platform/video_plane.h"

#include <gtest/gtest.h>
#include <string.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/capture_stdout.h"
#include "tests/support/plane_frames.h"
#include "tests/support/temp_dir.h"

namespace {

// Records what the reader hands over: the rectangle, stride and first pixel.
class RecordingSink : public VideoPlaneReader::Sink {
public:
    void onFrame(const VideoRect& rect, const uint8_t* pixels, size_t stride) override {
        rects.push_back(rect);
        firstPixels.push_back(*reinterpret_cast<const uint32_t*>(pixels));
        lastStride = stride;
        if (during) during();
    }
    std::vector<VideoRect> rects;
    std::vector<uint32_t> firstPixels;
    size_t lastStride = 0;
    std::function<void()> during;  // runs inside the copy, as a racing decoder would
};

bool same(VideoRect a, VideoRect b) { return a.x == b.x && a.y == b.y && a.w == b.w && a.h == b.h; }

class VideoPlaneTest : public ::testing::Test {
protected:
    TempDeviceRoot mRoot;  // gives this test a plane name of its own
    CaptureStdout mLog;
};

}  // namespace

// Nothing before the plane exists, each new frame once, nothing new while
// paused, the picture gone when the decoder clears and removes it.
TEST_F(VideoPlaneTest, ReaderSeesEachFrameOnceAndThePictureGoWithItsDecoder) {
    VideoPlaneReader reader;
    RecordingSink sink;
    int64_t now = 1000;
    EXPECT_FALSE(reader.poll(&sink, now));
    EXPECT_FALSE(reader.attached());

    VideoPlaneWriter writer;
    ASSERT_EQ(writer.create(), 0);
    const VideoRect windowed = {650, 85, 610, 360};
    publishFrame(writer, windowed, 0xFF00FFu);
    now += 100;
    EXPECT_TRUE(reader.poll(&sink, now));
    ASSERT_EQ(sink.rects.size(), 1u);
    EXPECT_TRUE(same(sink.rects[0], windowed));
    EXPECT_EQ(sink.firstPixels[0], 0xFF00FFu);
    EXPECT_EQ(sink.lastStride % 64, 0u) << "rows aligned for the decoder's renderer";
    EXPECT_TRUE(same(reader.rect(), windowed));
    EXPECT_TRUE(reader.playing(now));

    EXPECT_FALSE(reader.poll(&sink, now + 5)) << "no new frame while paused";
    EXPECT_EQ(sink.rects.size(), 1u);

    const VideoRect full = {0, 0, 1280, 720};
    publishFrame(writer, full, 0x00FF00u);
    EXPECT_TRUE(reader.poll(&sink, now + 10));
    EXPECT_TRUE(same(reader.rect(), full));
    EXPECT_EQ(sink.firstPixels.back(), 0x00FF00u);

    writer.clear();
    EXPECT_TRUE(reader.poll(&sink, now + 15));
    EXPECT_EQ(reader.rect().w, 0);
    EXPECT_EQ(sink.rects.size(), 2u) << "an empty frame hands nothing over";

    publishFrame(writer, windowed, 0xFF00FFu);
    EXPECT_TRUE(reader.poll(&sink, now + 20));
    writer.remove();
    EXPECT_TRUE(reader.poll(&sink, now + 25)) << "a removed plane takes its picture along";
    EXPECT_EQ(reader.rect().w, 0);
    EXPECT_FALSE(reader.attached());
    EXPECT_FALSE(reader.poll(&sink, now + 200));
}

// A killed decoder's plane goes stale; the next decoder's replaces it and is found.
TEST_F(VideoPlaneTest, StaleAndReplacedPlanesAreDropped) {
    VideoPlaneReader reader(200);
    RecordingSink sink;
    int64_t now = 0;
    {
        VideoPlaneWriter killed;
        ASSERT_EQ(killed.create(), 0);
        publishFrame(killed, VideoRect{0, 0, 64, 64}, 1);
        EXPECT_TRUE(reader.poll(&sink, now += 100));
        usleep(400 * 1000);
        EXPECT_TRUE(reader.poll(&sink, now += 1)) << "stale: the picture goes";
        EXPECT_EQ(reader.rect().w, 0);
        EXPECT_FALSE(reader.attached());
        EXPECT_FALSE(reader.poll(&sink, now += 100)) << "a stale plane is not taken again";

        // The next decoder replaces the name while a reader still maps the old.
        VideoPlaneWriter next;
        ASSERT_EQ(next.create(), 0);
        publishFrame(next, VideoRect{10, 10, 32, 32}, 2);
        EXPECT_TRUE(reader.poll(&sink, now += 100));
        EXPECT_EQ(sink.firstPixels.back(), 2u);

        VideoPlaneWriter third;
        ASSERT_EQ(third.create(), 0);
        publishFrame(third, VideoRect{20, 20, 16, 16}, 3);
        EXPECT_TRUE(reader.poll(&sink, now += 100)) << "the replaced plane's picture goes";
        EXPECT_EQ(reader.rect().w, 0);
        EXPECT_TRUE(reader.poll(&sink, now += 100));
        EXPECT_EQ(sink.firstPixels.back(), 3u);
    }
    const std::string log = mLog.finish();
    EXPECT_NE(log.find("stale"), std::string::npos) << log;
}

// A copy the decoder overran (n + 1 drawn, n + 2 begun in the buffer being
// copied) is torn: the newer frame is taken instead.
TEST_F(VideoPlaneTest, ACopyOverrunByTheDecoderIsTakenAgain) {
    VideoPlaneWriter writer;
    ASSERT_EQ(writer.create(), 0);
    VideoPlaneReader reader;
    RecordingSink sink;
    publishFrame(writer, VideoRect{0, 0, 8, 8}, 1);
    sink.during = [&] {
        sink.during = nullptr;
        publishFrame(writer, VideoRect{0, 0, 8, 8}, 2);
        publishFrame(writer, VideoRect{100, 100, 8, 8}, 3);
    };
    EXPECT_TRUE(reader.poll(&sink, 0));
    ASSERT_EQ(sink.firstPixels.size(), 2u);
    EXPECT_EQ(sink.firstPixels[1], 3u);
    EXPECT_TRUE(same(reader.rect(), VideoRect{100, 100, 8, 8}));

    size_t stride = 0;
    EXPECT_EQ(writer.beginFrame(VideoRect{1200, 0, 100, 10}, &stride), nullptr) << "past the right edge";
    EXPECT_EQ(writer.beginFrame(VideoRect{0, 0, 0, 10}, &stride), nullptr);
    EXPECT_EQ(writer.beginFrame(VideoRect{-1, 0, 10, 10}, &stride), nullptr);
}
