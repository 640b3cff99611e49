#include "reference_image.h"

#include <SDL2/SDL_image.h>
#include <stdlib.h>
#include <string.h>

#include "tests/support/temp_dir.h"

namespace {

// Steps one channel may be off, and pixels that may differ at all: far less
// than the ink of one character or the edge of a moved icon.
const int kChannelSteps = 24;
const int kDifferingPixels = 40;

bool writing() {
    const char* value = getenv("KOVANI_WRITE_REFERENCES");
    return value && strcmp(value, "1") == 0;
}

bool savePng(const Picture& picture, const std::string& path) {
    SDL_Surface* s = SDL_CreateRGBSurfaceWithFormatFrom(const_cast<Uint32*>(picture.argb.data()), picture.w,
                                                        picture.h, 32, picture.w * 4, SDL_PIXELFORMAT_ARGB8888);
    const bool ok = s && IMG_SavePNG(s, path.c_str()) == 0;
    SDL_FreeSurface(s);
    return ok;
}

bool loadPng(const std::string& path, Picture* out) {
    SDL_Surface* loaded = IMG_Load(path.c_str());
    if (!loaded) return false;
    SDL_Surface* s = SDL_ConvertSurfaceFormat(loaded, SDL_PIXELFORMAT_ARGB8888, 0);
    SDL_FreeSurface(loaded);
    if (!s) return false;
    out->w = s->w;
    out->h = s->h;
    out->argb.resize(size_t(s->w) * s->h);
    for (int y = 0; y < s->h; y++)
        memcpy(&out->argb[size_t(y) * s->w], static_cast<Uint8*>(s->pixels) + y * s->pitch, size_t(s->w) * 4);
    SDL_FreeSurface(s);
    return true;
}

bool differs(Uint32 a, Uint32 b) {
    for (int shift = 0; shift < 32; shift += 8)
        if (abs(int((a >> shift) & 0xFF) - int((b >> shift) & 0xFF)) > kChannelSteps) return true;
    return false;
}

}  // namespace

::testing::AssertionResult matchesReference(const std::string& name, const Picture& picture) {
    const std::string reference = std::string(KOVANI_REFERENCE_DIR) + "/" + name + ".png";
    if (writing()) {
        makeDirs(KOVANI_REFERENCE_DIR);
        if (!savePng(picture, reference)) return ::testing::AssertionFailure() << "cannot write " << reference;
        return ::testing::AssertionSuccess();
    }
    Picture expected;
    if (!loadPng(reference, &expected))
        return ::testing::AssertionFailure() << "no reference " << reference << " (./kovani references writes it)";

    int differing = 0;
    Picture marked = picture;
    const bool sameSize = expected.w == picture.w && expected.h == picture.h;
    for (size_t i = 0; sameSize && i < picture.argb.size(); i++) {
        const bool bad = differs(picture.argb[i], expected.argb[i]);
        differing += bad;
        // The picture dimmed, the differing pixels red on it.
        const Uint32 p = picture.argb[i];
        const Uint32 grey = (((p >> 16) & 0xFF) + ((p >> 8) & 0xFF) + (p & 0xFF)) / 9 + 20;
        marked.argb[i] = bad ? 0xFFFF0000 : 0xFF000000 | grey << 16 | grey << 8 | grey;
    }
    if (sameSize && differing <= kDifferingPixels) return ::testing::AssertionSuccess();

    const std::string out = KOVANI_SCREENS_OUT_DIR;
    makeDirs(out);
    savePng(picture, out + "/" + name + ".png");
    if (sameSize) savePng(marked, out + "/" + name + "_err.png");
    auto failure = ::testing::AssertionFailure() << name << ": ";
    if (!sameSize)
        return failure << picture.w << "x" << picture.h << " against the reference's " << expected.w << "x"
                       << expected.h << "; the picture is " << out << "/" << name << ".png";
    return failure << differing << " pixels differ from " << reference << "; see " << out << "/" << name
                   << "_err.png";
}
