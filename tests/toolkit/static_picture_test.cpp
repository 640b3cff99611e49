#include "toolkit/static_picture.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/sdl_events.h"
#include "tests/support/sdl_screen.h"
#include "tests/support/temp_dir.h"
#include "toolkit/screen.h"
#include "toolkit/shared_skin.h"
#include "toolkit/text.h"
#include "toolkit/text_menu_drawer.h"
#include "toolkit/text_menu_item.h"

namespace {

class Rows : public TextMenuDrawer {
public:
    explicit Rows(int count) : TextMenuDrawer("skin/focus.png", "skin/normal.png", 6, 16) {
        SDL_Rect area = {0, 80, 620, 580};
        setRect(area);
        for (int i = 0; i < count; i++)
            mItems.emplace_back(new TextMenuItem(("Entry " + std::to_string(i)).c_str(), nullptr, nullptr, false));
    }
    void* getItemByIndex(int index) override {
        return index >= 0 && index < (int)mItems.size() ? mItems[index].get() : nullptr;
    }
    int getListNum() override { return (int)mItems.size(); }

    std::vector<std::unique_ptr<TextMenuItem>> mItems;
    uint64_t mNow = 1000000;

protected:
    uint64_t nowMs() override { return mNow += 1000; }  // no held keys
};

// Unchanging parts: a vertical gradient, so that a row image put on the
// wrong place or blended twice shows, and a panel that depends on the key.
void drawParts(uint32_t key) {
    for (int y = 0; y < 720; y += 8) {
        SDL_SetRenderDrawColor(gRenderer, 10, Uint8(y / 4), 60, 255);
        SDL_Rect band = {0, y, 1280, 8};
        SDL_RenderFillRect(gRenderer, &band);
    }
    SDL_SetRenderDrawColor(gRenderer, Uint8(key * 60), 200, 0, 255);
    SDL_Rect panel = {650, 455, 610, 190};
    SDL_RenderFillRect(gRenderer, &panel);
}

class StaticPictureTest : public SdlScreenTest {
protected:
    void SetUp() override {
        SdlScreenTest::SetUp();
        gListFontTxt = font(36);
        gListFontSubtxt = gStatFont = font(24);
        // Half transparent: a second blend would change them.
        writePng(dir() + "skin/focus.png", 600, 80, SDL_Color{220, 60, 60, 128}, 4);
        writePng(dir() + "skin/normal.png", 600, 80, SDL_Color{60, 60, 220, 96}, 4);
        SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    }
    void TearDown() override {
        gTextSurfaceCache.clear();
        gListFontTxt = gListFontSubtxt = gStatFont = nullptr;
        SdlScreenTest::TearDown();
    }

    // Pixels that differ between the frame through `picture` and one drawn
    // in full.
    int differences(StaticPicture& picture, Rows& list, uint32_t key) {
        clear(0, 0, 0);
        EXPECT_TRUE(picture.copy(key, [key] { drawParts(key); }, &list));
        list.draw();
        const std::vector<Uint32> shown = pixels({0, 0, 1280, 720});
        clear(0, 0, 0);
        drawParts(key);
        list.setNormalBackgroundsDrawn(false);
        list.draw();
        const std::vector<Uint32> full = pixels({0, 0, 1280, 720});
        int differ = 0;
        for (size_t i = 0; i < full.size(); i++) differ += shown[i] != full[i];
        return differ;
    }

    TempDeviceRoot mRoot;  // input markers of the key handling
};

}  // namespace

// Row images kept in the picture: every frame equals the full drawing, with
// the cursor on the first, a middle and the last row, while the list
// scrolls and wraps, with fewer entries than rows, without a focus image,
// and after the parts change.
TEST_F(StaticPictureTest, FramesEqualTheFullDrawingWhereverTheCursorIs) {
    StaticPicture picture(1280, 720);
    Rows list(20);
    const struct { int key, times; uint32_t parts; } steps[] = {
        {KEY_NONE, 0, 1}, {KEY_DOWN, 3, 1}, {KEY_DOWN, 2, 1}, {KEY_DOWN, 4, 1},
        {KEY_UP, 10, 1},  {KEY_UP, 1, 1},   {KEY_DOWN, 1, 2},
    };
    for (const auto& step : steps) {
        for (int i = 0; i < step.times; i++) pressKey(list, step.key);
        EXPECT_EQ(differences(picture, list, step.parts), 0)
            << "cursor " << list.mCurrentPos << ", first row " << list.mFirstVisible;
    }
    list.mShowFocus = false;
    EXPECT_EQ(differences(picture, list, 2), 0) << "no focus image";

    Rows few(3);
    pressKey(few, KEY_DOWN);
    EXPECT_EQ(differences(picture, few, 2), 0) << "three entries";
    Rows none(0);
    EXPECT_EQ(differences(picture, none, 2), 0) << "an empty list";
}
