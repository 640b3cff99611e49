#include "sdl_screen.h"

#include <dlfcn.h>
#include <link.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "toolkit/screen.h"

namespace {

int collectLibrary(struct dl_phdr_info* info, size_t, void* names) {
    if (info->dlpi_name && info->dlpi_name[0])
        static_cast<std::vector<std::string>*>(names)->push_back(info->dlpi_name);
    return 0;
}

// The GL driver libraries that SDL loads keep allocations in their own
// globals and are unloaded again at SDL_Quit, after which LeakSanitizer
// reports those allocations as leaks. Keeping every loaded library mapped
// keeps their globals visible to it.
void pinLoadedLibraries() {
    std::vector<std::string> names;
    dl_iterate_phdr(collectLibrary, &names);
    for (const std::string& name : names) dlopen(name.c_str(), RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

}  // namespace

const char* testFontPath() { return KOVANI_TEST_FONT; }

void SdlScreenTest::SetUp() {
    setenv("SDL_VIDEODRIVER", "offscreen", 1);
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    ASSERT_EQ(SDL_Init(SDL_INIT_TIMER | SDL_INIT_VIDEO | SDL_INIT_JOYSTICK), 0) << SDL_GetError();
    ASSERT_EQ(TTF_Init(), 0) << SDL_GetError();
    ASSERT_NE(ScreenInit(1280, 720, 32, 0), 0) << SDL_GetError();
    pinLoadedLibraries();
}

void SdlScreenTest::TearDown() {
    for (int i = 0; i < mFontCount; i++) TTF_CloseFont(mFonts[i]);
    mFontCount = 0;
    ScreenUninit();
    TTF_Quit();
    SDL_Quit();
}

SDL_Color SdlScreenTest::pixel(int x, int y) {
    SDL_Rect r = {x, y, 1, 1};
    Uint32 value = 0;
    SDL_RenderReadPixels(gRenderer, &r, SDL_PIXELFORMAT_ARGB8888, &value, 4);
    return SDL_Color{Uint8(value >> 16), Uint8(value >> 8), Uint8(value), Uint8(value >> 24)};
}

void SdlScreenTest::clear(Uint8 r, Uint8 g, Uint8 b) {
    SDL_SetRenderDrawColor(gRenderer, r, g, b, 255);
    SDL_RenderClear(gRenderer);
}

TTF_Font* SdlScreenTest::font(int size) {
    if (mFontCount == 8) return nullptr;
    TTF_Font* f = TTF_OpenFont(testFontPath(), size);
    mFonts[mFontCount++] = f;
    return f;
}
