#include "platform/plane_compositor.h"

#include <gtest/gtest.h>

#include "tests/support/capture_stdout.h"
#include "tests/support/plane_frames.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/screen.h"

namespace {

const VideoRect kVideo = {100, 50, 200, 100};

// The compositor on the test screen: a stand-in decoder's plane beneath a known interface.
class PlaneCompositorTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        mCompositor = new PlaneCompositor(gRenderer);
        ASSERT_EQ(mCompositor->open(1280, 720), 0);
    }
    void TearDown() override {
        delete mCompositor;
        SdlScreenTest::TearDown();
    }

    // The interface: opaque blue, a transparent hole at the top left, two
    // half-transparent white bands blended in, as the toolkit draws.
    void drawInterface() {
        SDL_SetRenderDrawBlendMode(gRenderer, SDL_BLENDMODE_NONE);
        SDL_SetRenderDrawColor(gRenderer, 0, 0, 255, 255);
        SDL_RenderClear(gRenderer);
        fill({0, 0, 640, 360}, 0, 0, 0, 0);
        SDL_SetRenderDrawBlendMode(gRenderer, SDL_BLENDMODE_BLEND);
        fill({150, 50, 50, 100}, 255, 255, 255, 128);
        fill({400, 200, 50, 50}, 255, 255, 255, 128);
    }
    void fill(SDL_Rect r, Uint8 red, Uint8 green, Uint8 blue, Uint8 alpha) {
        SDL_SetRenderDrawColor(gRenderer, red, green, blue, alpha);
        SDL_RenderFillRect(gRenderer, &r);
    }
    CaptureStdout mQuiet;  // before the decoder, whose lines it takes too
    TempDeviceRoot mRoot;
    VideoPlaneWriter mDecoder;
    PlaneCompositor* mCompositor = nullptr;
};

::testing::AssertionResult near(SDL_Color got, int r, int g, int b) {
    if (abs(got.r - r) > 3 || abs(got.g - g) > 3 || abs(got.b - b) > 3)
        return ::testing::AssertionFailure() << "got " << int(got.r) << "," << int(got.g) << "," << int(got.b);
    return ::testing::AssertionSuccess();
}

}  // namespace

TEST_F(PlaneCompositorTest, TheInterfaceAlphaDecidesWhereTheVideoShows) {
    ASSERT_EQ(mDecoder.create(), 0);
    publishFrame(mDecoder, kVideo, 0xFF00FF);  // magenta
    ASSERT_EQ(mCompositor->videoChanged(), PlaneCompositor::VIDEO_REDRAW) << "the interface moves to its plane";
    drawInterface();
    mCompositor->compose();
    EXPECT_TRUE(near(pixel(120, 70), 255, 0, 255)) << "transparent over the picture";
    EXPECT_TRUE(near(pixel(120, 140), 255, 0, 255));
    EXPECT_TRUE(near(pixel(50, 20), 0, 0, 0)) << "transparent outside the picture: black";
    EXPECT_TRUE(near(pixel(175, 100), 255, 128, 255)) << "half white over magenta";
    EXPECT_TRUE(near(pixel(250, 200), 0, 0, 0)) << "in the hole, below the picture: black";
    EXPECT_TRUE(near(pixel(700, 400), 0, 0, 255)) << "opaque interface";
    EXPECT_TRUE(near(pixel(425, 225), 128, 128, 128)) << "half white over black, beside the picture";
    EXPECT_TRUE(near(pixel(250, 100), 255, 0, 255)) << "right of the band, in the picture";
    mCompositor->finish();

    // Read-backs between presents see the interface plane, hole and all.
    EXPECT_EQ(pixel(120, 70).a, 0);
    EXPECT_TRUE(near(pixel(700, 400), 0, 0, 255));
    EXPECT_EQ(mCompositor->videoChanged(), PlaneCompositor::VIDEO_SAME) << "nothing new since the present";
}

// No plane: the interface draws to the window and nothing is composed. A
// plane's first frame, a new frame, a cleared plane and a removed one each
// change what shows; a paused picture stays; after the plane has gone the
// interface draws to the window again.
TEST_F(PlaneCompositorTest, FramesComeAndGoWithTheDecoder) {
    EXPECT_EQ(mCompositor->videoChanged(), PlaneCompositor::VIDEO_SAME) << "no plane yet";
    EXPECT_FALSE(mCompositor->composing());
    EXPECT_EQ(SDL_GetRenderTarget(gRenderer), nullptr);
    EXPECT_EQ(mCompositor->nextLookMs(), -1) << "no plane: no reason to wake";

    ASSERT_EQ(mDecoder.create(), 0);
    publishFrame(mDecoder, kVideo, 0x00FF00);
    SDL_Delay(110);  // the plane's name is looked for on its own pace
    ASSERT_EQ(mCompositor->videoChanged(), PlaneCompositor::VIDEO_REDRAW);
    drawInterface();
    EXPECT_GT(mCompositor->nextLookMs(), 0);
    EXPECT_LE(mCompositor->nextLookMs(), 5) << "frames come: looked at often";
    mCompositor->compose();
    EXPECT_TRUE(near(pixel(120, 70), 0, 255, 0));
    mCompositor->finish();
    EXPECT_EQ(mCompositor->videoChanged(), PlaneCompositor::VIDEO_SAME) << "paused";
    mCompositor->compose();
    EXPECT_TRUE(near(pixel(120, 70), 0, 255, 0)) << "a paused picture stays";
    mCompositor->finish();

    mDecoder.clear();
    EXPECT_EQ(mCompositor->videoChanged(), PlaneCompositor::VIDEO_NEW);
    mCompositor->compose();
    EXPECT_TRUE(near(pixel(120, 70), 0, 0, 0));
    mCompositor->finish();

    publishFrame(mDecoder, kVideo, 0x00FF00);
    EXPECT_EQ(mCompositor->videoChanged(), PlaneCompositor::VIDEO_NEW);
    mCompositor->present();
    mDecoder.remove();
    EXPECT_EQ(mCompositor->videoChanged(), PlaneCompositor::VIDEO_NEW);
    mCompositor->compose();
    EXPECT_TRUE(near(pixel(120, 70), 0, 0, 0)) << "a stopped decoder's picture goes";
    EXPECT_TRUE(near(pixel(700, 400), 0, 0, 255)) << "the interface shows alone";
    mCompositor->finish();
    EXPECT_FALSE(mCompositor->composing());
    EXPECT_EQ(SDL_GetRenderTarget(gRenderer), nullptr) << "the interface draws to the window again";
    EXPECT_EQ(mCompositor->nextLookMs(), -1);
}
