// The peers the player's CPU use is measured against: plain SDL programs
// doing the least that the same situation needs.
//   sdl_peer idle    a 1280x720 window that only waits for events
//   sdl_peer list    a window listing 20000 rows, redrawing the visible rows
//                    (text from a cache) on every key
//   sdl_peer imagelist  the same over a full-screen background image, copied
//                    whole each frame as any program with such a background
//                    must, since a frame after a present starts undefined
//   sdl_peer cmd F   writes "play" into file F on every Return key
//   sdl_peer text F  opens a renderer as the player does and font file F,
//                    presents one text, then waits for events: the least a
//                    start to a first frame takes
#include <SDL2/SDL.h>
#include <SDL2/SDL_ttf.h>
#include <stdio.h>
#include <string.h>

#include <map>
#include <string>
#include <vector>

namespace {

const char kFont[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

int idle(SDL_Window*) {
    SDL_Event e;
    while (SDL_WaitEvent(&e))
        if (e.type == SDL_QUIT) return 0;
    return 0;
}

int list(SDL_Window* window, bool image) {
    SDL_Renderer* r = SDL_CreateRenderer(window, -1, SDL_RENDERER_ACCELERATED);
    TTF_Font* font = TTF_OpenFont(kFont, 28);
    if (!r || !font) return 1;
    std::map<int, SDL_Texture*> cache;
    SDL_Texture* background = nullptr;
    if (image) {
        background = SDL_CreateTexture(r, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STATIC, 1280, 720);
        if (!background) return 1;
        std::vector<Uint32> pixels(1280 * 720);
        for (size_t i = 0; i < pixels.size(); i++) pixels[i] = 0xff000000u | (Uint32(i) * 2654435761u >> 8);
        SDL_UpdateTexture(background, nullptr, pixels.data(), 1280 * 4);
        SDL_SetTextureBlendMode(background, SDL_BLENDMODE_NONE);
    }
    int cursor = 0;
    auto draw = [&] {
        SDL_SetRenderDrawColor(r, 20, 24, 32, 255);
        SDL_RenderClear(r);
        if (background) SDL_RenderCopy(r, background, nullptr, nullptr);
        const int first = cursor / 6 * 6;
        for (int i = first; i < first + 6 && i < 20000; i++) {
            SDL_Rect row = {10, 80 + (i - first) * 96, 600, 90};
            SDL_SetRenderDrawColor(r, i == cursor ? 40 : 30, 60, 70, 255);
            SDL_RenderFillRect(r, &row);
            SDL_Texture*& t = cache[i];
            if (!t) {
                char label[32];
                snprintf(label, sizeof label, "clip %05d.mp4", i);
                SDL_Surface* s = TTF_RenderUTF8_Blended(font, label, SDL_Color{255, 255, 255, 255});
                t = SDL_CreateTextureFromSurface(r, s);
                SDL_FreeSurface(s);
            }
            int w, h;
            SDL_QueryTexture(t, nullptr, nullptr, &w, &h);
            SDL_Rect at = {40, row.y + (90 - h) / 2, w, h};
            SDL_RenderCopy(r, t, nullptr, &at);
        }
        SDL_RenderPresent(r);
    };
    draw();
    SDL_Event e;
    while (SDL_WaitEvent(&e)) {
        if (e.type == SDL_QUIT) return 0;
        if (e.type == SDL_KEYDOWN && e.key.keysym.sym == SDLK_DOWN) {
            cursor = (cursor + 1) % 20000;
            draw();
        }
    }
    return 0;
}

int text(SDL_Window* window, const char* fontFile) {
    SDL_Renderer* r = SDL_CreateRenderer(window, -1, SDL_RENDERER_ACCELERATED | SDL_RENDERER_PRESENTVSYNC);
    TTF_Font* font = TTF_OpenFont(fontFile, 36);
    if (!r || !font) return 1;
    SDL_Surface* s = TTF_RenderUTF8_Blended(font, "Reading files...", SDL_Color{255, 255, 255, 255});
    SDL_Texture* t = s ? SDL_CreateTextureFromSurface(r, s) : nullptr;
    if (!t) return 1;
    SDL_SetRenderDrawColor(r, 20, 24, 32, 255);
    SDL_RenderClear(r);
    SDL_Rect at = {(1280 - s->w) / 2, (720 - s->h) / 2, s->w, s->h};
    SDL_RenderCopy(r, t, nullptr, &at);
    SDL_FreeSurface(s);
    SDL_RenderPresent(r);
    return idle(window);
}

int command(SDL_Window*, const char* path) {
    SDL_Event e;
    while (SDL_WaitEvent(&e)) {
        if (e.type == SDL_QUIT) return 0;
        if (e.type == SDL_KEYUP && e.key.keysym.sym == SDLK_RETURN) {
            if (FILE* f = fopen(path, "w")) {
                fputs("play\n", f);
                fclose(f);
            }
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || SDL_Init(SDL_INIT_VIDEO) != 0 || TTF_Init() != 0) return 2;
    SDL_Window* window = SDL_CreateWindow("Main", SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED, 1280, 720,
                                          SDL_WINDOW_SHOWN);
    if (!window) return 2;
    int rc = 2;
    if (strcmp(argv[1], "idle") == 0) rc = idle(window);
    if (strcmp(argv[1], "list") == 0) rc = list(window, false);
    if (strcmp(argv[1], "imagelist") == 0) rc = list(window, true);
    if (strcmp(argv[1], "cmd") == 0 && argc > 2) rc = command(window, argv[2]);
    if (strcmp(argv[1], "text") == 0 && argc > 2) rc = text(window, argv[2]);
    SDL_DestroyWindow(window);
    TTF_Quit();
    SDL_Quit();
    return rc;
}
