#include "text.h"

#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "platform/logger.h"
#include "screen.h"
#include "utf8.h"

LRUCache gTextSurfaceCache(release_kovanisurface, 100);
LRUCache gIconCache(release_surface, 100);

namespace {
char sTextKeyBuf[2048];  // main thread only
}  // namespace

KovaniSurface* getCachedSurface(TTF_Font* font, const char* text, SDL_Color color, bool shadow) {
    if (!font || !text || !text[0]) return nullptr;
    snprintf(sTextKeyBuf, sizeof sTextKeyBuf, "%s_%p_%02X_%02X_%02X_%02X_shadow%d", text,
             (void*)font, color.r, color.g, color.b, color.a, shadow ? 1 : 0);
    KovaniSurface* cached = static_cast<KovaniSurface*>(gTextSurfaceCache.get(sTextKeyBuf));
    if (cached) return dynamic_cast<AbsentSurface*>(cached) ? nullptr : cached;

    // Skin colours carry alpha 0 and still mean visible text; not every
    // SDL_ttf release renders alpha 0 as opaque by itself.
    SDL_Color ink = color;
    if (ink.a == 0) ink.a = 255;
    SDL_Surface* rendered = TTF_RenderUTF8_Blended(font, text, ink);
    SDL_Texture* texture = rendered ? SDL_CreateTextureFromSurface(gRenderer, rendered) : nullptr;
    SDL_FreeSurface(rendered);
    if (!texture) {
        // Remembered like a text drawn: one that cannot be (wider than the
        // largest texture) is tried once, not on every frame.
        tprintf("text \"%.40s\" (%zu bytes) cannot be drawn: %s\n", text, strlen(text), SDL_GetError());
        gTextSurfaceCache.put(sTextKeyBuf, new AbsentSurface());
        return nullptr;
    }
    KovaniSurface* surface = new SDL2KovaniSurface(texture, nullptr);
    gTextSurfaceCache.put(sTextKeyBuf, surface);
    return surface;
}

int DrawString(TTF_Font* font, SDL_Rect box, const char* text, SDL_Color color, int align,
               bool shadow, bool skipText) {
    KovaniSurface* s = getCachedSurface(font, text, color, false);
    if (!s) return 0;
    const int tw = s->getWidth();
    const int th = s->getHeight();
    SDL_Rect at = {box.x, box.y, tw, th};
    switch (align) {
        case ALIGN_TOP_LEFT:
            break;
        case ALIGN_CENTER:
            at.x = box.x + (box.w - tw) / 2;
            at.y = box.y + (box.h - th) / 2;
            break;
        case ALIGN_MIDDLE_LEFT:
            at.y = box.y + (box.h - th) / 2;
            break;
        case ALIGN_MIDDLE_RIGHT:
            at.x = box.x + box.w - tw;
            at.y = box.y + (box.h - th) / 2;
            break;
        default:
            at.x = box.x + box.w - tw;
            break;
    }
    if (shadow) {
        KovaniSurface* under = getCachedSurface(font, text, color, true);
        SDL_Rect below = {at.x + 1, at.y + 2, tw, th};
        if (under) under->render(nullptr, &below, true, nullptr);
    }
    // s is still alive: it sits at the front, and the shadow's put only
    // evicts from the back.
    if (!skipText) s->render(nullptr, &at, true, nullptr);
    return tw;
}

int DrawString(TTF_Font* font, SDL_Rect box, const char* text, SDL_Color color, int align) {
    return DrawString(font, box, text, color, align, false, false);
}

int DrawStringFitted(TTF_Font* font, SDL_Rect box, const char* text, SDL_Color color) {
    if (!font || !text || box.w <= 0) return 0;
    std::string cut;
    int width = 0;
    if (TTF_SizeUTF8(font, text, &width, nullptr) == 0 && width > box.w) {
        // The longest start that fits with "..." after it. Glyphs are at
        // least a pixel wide, so no more than box.w code points are tried.
        int low = 0, high = SDL_min(utf8Length(text), box.w);
        while (low < high) {
            const int mid = (low + high + 1) / 2;
            if (TTF_SizeUTF8(font, (utf8Substr(text, 0, mid) + "...").c_str(), &width, nullptr) == 0 &&
                width <= box.w)
                low = mid;
            else
                high = mid - 1;
        }
        cut = utf8Substr(text, 0, low) + "...";
        text = cut.c_str();
    }
    KovaniSurface* s = getCachedSurface(font, text, color, false);
    if (!s) return 0;
    SDL_Rect src = {0, 0, SDL_min(s->getWidth(), box.w), s->getHeight()};
    SDL_Rect dst = {box.x, box.y, src.w, src.h};
    s->render(&src, &dst, false, nullptr);
    return src.w;
}

int getTruncateLen(TTF_Font* font, const char* text, int width, int) {
    if (!font || !text) return 0;
    const int limit = ((width - 20) * 9) / 10;
    const std::vector<uint32_t> codePoints = utf8CodePoints(text);
    float sum = 0.0f;
    for (size_t i = 0;; i++) {
        if (i == codePoints.size()) return 0;
        if (sum >= float(limit)) return int(i);
        int advance = 0;
        TTF_GlyphMetrics(font, Uint16(codePoints[i]), nullptr, nullptr, nullptr, nullptr,
                         &advance);
        sum += advance;
        if (codePoints[i] <= 128) sum += 1.7;
    }
}
