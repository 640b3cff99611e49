#include "sdl_screen.h"

#include <SDL2/SDL_image.h>
#include <dlfcn.h>
#include <link.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/temp_dir.h"
#include "toolkit/screen.h"

namespace {

int collectLibrary(struct dl_phdr_info* info, size_t, void* out) {
    if (info->dlpi_name && info->dlpi_name[0]) static_cast<std::vector<std::string>*>(out)->push_back(info->dlpi_name);
    return 0;
}

// GL driver libraries unloaded at SDL_Quit would leave their globals' allocations
// to LeakSanitizer as leaks; keeping every loaded library mapped prevents that.
void pinLoadedLibraries() {
    std::vector<std::string> names;
    dl_iterate_phdr(collectLibrary, &names);
    for (const std::string& name : names) dlopen(name.c_str(), RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

}  // namespace

void SdlScreenTest::SetUp() {
    setenv("SDL_VIDEODRIVER", "offscreen", 1);
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    ASSERT_EQ(SDL_Init(SDL_INIT_TIMER | SDL_INIT_VIDEO | SDL_INIT_JOYSTICK), 0) << SDL_GetError();
    ASSERT_EQ(TTF_Init(), 0) << SDL_GetError();
    ASSERT_NE(ScreenInit(1280, 720, 32, 0), 0) << SDL_GetError();
    pinLoadedLibraries();
    char cwd[4096], tmpl[] = "/tmp/kovani_draw_XXXXXX";
    ASSERT_TRUE(getcwd(cwd, sizeof cwd) && mkdtemp(tmpl));
    mOldCwd = cwd;
    mDir = std::string(tmpl) + "/";
    ASSERT_EQ(chdir(tmpl), 0);
}

void SdlScreenTest::TearDown() {
    EXPECT_TRUE(mOldCwd.empty() || chdir(mOldCwd.c_str()) == 0);
    std::error_code ec;
    if (!mDir.empty()) std::filesystem::remove_all(mDir, ec);
    for (TTF_Font* f : mFonts) TTF_CloseFont(f);
    mFonts.clear();
    ScreenUninit();
    TTF_Quit();
    SDL_Quit();
}

SDL_Color SdlScreenTest::pixel(int x, int y) {
    const Uint32 value = pixels({x, y, 1, 1})[0];
    return SDL_Color{Uint8(value >> 16), Uint8(value >> 8), Uint8(value), Uint8(value >> 24)};
}

std::vector<Uint32> SdlScreenTest::pixels(SDL_Rect area) {
    std::vector<Uint32> out(size_t(area.w) * area.h);
    SDL_RenderReadPixels(gRenderer, &area, SDL_PIXELFORMAT_ARGB8888, out.data(), area.w * 4);
    return out;
}

Picture SdlScreenTest::shot(SDL_Rect area) {
    Picture picture;
    picture.w = area.w;
    picture.h = area.h;
    picture.argb = pixels(area);
    return picture;
}

void SdlScreenTest::clear(Uint8 r, Uint8 g, Uint8 b) {
    SDL_SetRenderDrawColor(gRenderer, r, g, b, 255);
    SDL_RenderClear(gRenderer);
}

TTF_Font* SdlScreenTest::font(int size) {
    TTF_Font* f = TTF_OpenFont(KOVANI_TEST_FONT, size);
    if (f) mFonts.push_back(f);
    return f;
}

void writePng(const std::string& path, int w, int h, SDL_Color color, int bytesPerPixel) {
    makeDirs(std::filesystem::path(path).parent_path());
    const Uint32 format = bytesPerPixel == 1   ? SDL_PIXELFORMAT_INDEX8
                          : bytesPerPixel == 3 ? SDL_PIXELFORMAT_RGB24
                                               : SDL_PIXELFORMAT_RGBA32;
    SDL_Surface* s = SDL_CreateRGBSurfaceWithFormat(0, w, h, 32, format);
    if (bytesPerPixel == 1) {
        SDL_SetPaletteColors(s->format->palette, &color, 0, 1);
        SDL_FillRect(s, nullptr, 0);
    } else {
        SDL_FillRect(s, nullptr, SDL_MapRGBA(s->format, color.r, color.g, color.b, color.a));
    }
    IMG_SavePNG(s, path.c_str());
    SDL_FreeSurface(s);
}

bool sameColor(SDL_Color a, SDL_Color b) { return a.r == b.r && a.g == b.g && a.b == b.b; }
