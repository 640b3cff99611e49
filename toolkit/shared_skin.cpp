#include "shared_skin.h"

#include <string>

#include "platform/logger.h"

char* gThemePath = nullptr;

TTF_Font* gNavFont = nullptr;
TTF_Font* gNavFontIcon = nullptr;
TTF_Font* gListFontTxt = nullptr;
TTF_Font* gListFontSubtxt = nullptr;
TTF_Font* gStatFont = nullptr;
TTF_Font* gMenuFont = nullptr;
TTF_Font* gPopupFontTitle = nullptr;
TTF_Font* gPopupFontTxt = nullptr;
TTF_Font* gPopupFontBtn = nullptr;

SDL_Color gHighlightColor;
SDL_Color gPopupColorTitle;
SDL_Color gListColorTxt;
SDL_Color gListColorSubtxt;
SDL_Color gListColorSeq;
SDL_Color gNavColorTxt;
SDL_Color gNavColorIcon;
SDL_Color gStatColorTxt;
SDL_Color gPopupColorTxt;
SDL_Color gPopupColorBtn;

KovaniSurface* gIconVideo = nullptr;
KovaniSurface* gIconFolder = nullptr;
KovaniSurface* gBackground = nullptr;
KovaniSurface* gIconBack = nullptr;
KovaniSurface* gIconMenu = nullptr;
KovaniSurface* gIconA = nullptr;
KovaniSurface* gIconB = nullptr;
KovaniSurface* gBackgroundFloat = nullptr;

namespace {

const char* sFontFolder = "./";
const char* sFontFile = "regular.ttf";

struct FontSlot {
    TTF_Font** font;
    int size;
};

// Opening and closing order.
const FontSlot sFonts[] = {
    {&gNavFont, 32},        {&gNavFontIcon, 24},    {&gListFontTxt, 36},
    {&gListFontSubtxt, 24}, {&gStatFont, 24},       {&gMenuFont, 36},
    {&gPopupFontTitle, 44}, {&gPopupFontTxt, 36},   {&gPopupFontBtn, 36},
};

struct ImageSlot {
    KovaniSurface** image;
    const char* name;
};

// Loading order: what every full-screen window shows.
const ImageSlot sImages[] = {
    {&gIconVideo, "skin/ic-video.png"},
    {&gIconFolder, "skin/ic-folder.png"},
    {&gBackground, "skin/bg.png"},
    {&gIconBack, "skin/icon-back.png"},
    {&gIconMenu, "skin/tips-MENU2.png"},
    {&gIconA, "skin/tips-A.png"},
    {&gIconB, "skin/tips-B.png"},
};
const ImageSlot sPopupMask = {&gBackgroundFloat, "skin/float-win-mask.png"};

// Deleting order.
KovaniSurface** const sImagesToDelete[] = {
    &gIconFolder, &gIconVideo, &gBackground, &gIconBack,
    &gIconMenu,   &gIconA,     &gIconB,      &gBackgroundFloat,
};

}  // namespace

TTF_Font* open_font(const char* folder, const char* file, int size) {
    std::string path = folder;
    if (!path.empty() && path.back() != '/') path += '/';
    path += file;
    tprintf("open %s\n", path.c_str());
    TTF_Font* font = TTF_OpenFont(path.c_str(), size);
    if (!font) tprintf("open font %s fail : %s\n", path.c_str(), TTF_GetError());
    return font;
}

void init_shared_skin() {
    const SDL_Color highlight = {0x36, 0xFF, 0xA0, 0x00};
    const SDL_Color white = {0xFF, 0xFF, 0xFF, 0xFF};
    gHighlightColor = highlight;
    gPopupColorTitle = highlight;
    gListColorTxt = white;
    gListColorSubtxt = white;
    gListColorSeq = white;
    gNavColorTxt = white;
    gNavColorIcon = white;
    gStatColorTxt = white;
    gPopupColorTxt = white;
    gPopupColorBtn = white;

    // Slots of one size share a font: the same face and glyphs, opened and
    // held once.
    for (const FontSlot& slot : sFonts) {
        *slot.font = nullptr;
        for (const FontSlot* earlier = sFonts; earlier != &slot && !*slot.font; earlier++)
            if (earlier->size == slot.size) *slot.font = *earlier->font;
        if (!*slot.font) *slot.font = open_font(sFontFolder, sFontFile, slot.size);
    }

    for (const ImageSlot& slot : sImages) {
        *slot.image = LoadKovaniSurface(gThemePath, "./", slot.name);
        if (slot.image == &gBackground && !gBackground)
            tprintf("open background fail: %s\n", SDL_GetError());
    }
}

void loadPopupSkin() {
    if (!*sPopupMask.image) *sPopupMask.image = LoadKovaniSurface(gThemePath, "./", sPopupMask.name);
}

void uninit_shared_skin() {
    for (const FontSlot& slot : sFonts) {
        TTF_Font* font = *slot.font;
        if (!font) continue;
        TTF_CloseFont(font);
        for (const FontSlot& other : sFonts)
            if (*other.font == font) *other.font = nullptr;
    }
    for (KovaniSurface** image : sImagesToDelete) {
        delete *image;
        *image = nullptr;
    }
}
