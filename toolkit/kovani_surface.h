#pragma once

#include <SDL2/SDL.h>

// A drawable image. Whoever creates one owns it and deletes it through the
// virtual destructor. Main thread only.
class KovaniSurface {
public:
    virtual ~KovaniSurface() {}
    virtual int setBlendMode(SDL_BlendMode mode) = 0;
    virtual int setAlpha(unsigned char alpha) = 0;
    virtual int getBlendMode(SDL_BlendMode* mode) = 0;
    virtual int getAlpha(unsigned char* alpha) = 0;
    // Copies `src` (NULL: all of it) to `dst` (NULL: the whole target). With
    // `keepOwnSize` only the position of `dst` counts. `dumpPath`, when given
    // and drawing goes to the rotated canvas, receives the canvas as a BMP.
    // 0 on success, the SDL error code otherwise.
    virtual int render(SDL_Rect* src, SDL_Rect* dst, bool keepOwnSize, const char* dumpPath) = 0;
    virtual int getWidth() = 0;
    virtual int getHeight() = 0;
    // The picture read back as 32-bit ARGB, scaled to fit *maxWidth x
    // *maxHeight when both are given and positive (they then receive the new
    // size). Asking again with the returned size gives the same pixels without
    // rendering. NULL on failure; the pixels belong to the surface.
    virtual void* getPixels(int* pitch, int* bytesPerPixel, int* maxWidth, int* maxHeight) = 0;
};

// Stands in a cache for an image or a text that could not be made, so that
// it is not tried again while the cache keeps its place. Draws nothing; its
// size is 0 x 0.
class AbsentSurface : public KovaniSurface {
public:
    int setBlendMode(SDL_BlendMode) override { return -1; }
    int setAlpha(unsigned char) override { return -1; }
    int getBlendMode(SDL_BlendMode*) override { return -1; }
    int getAlpha(unsigned char*) override { return -1; }
    int render(SDL_Rect*, SDL_Rect*, bool, const char*) override { return -1; }
    int getWidth() override { return 0; }
    int getHeight() override { return 0; }
    void* getPixels(int*, int*, int*, int*) override { return nullptr; }
};

class SDL2KovaniSurface : public KovaniSurface {
public:
    // Takes ownership of both; `pixels` may be NULL.
    SDL2KovaniSurface(SDL_Texture* texture, SDL_Surface* pixels);
    ~SDL2KovaniSurface() override;
    SDL2KovaniSurface(const SDL2KovaniSurface&) = delete;
    SDL2KovaniSurface& operator=(const SDL2KovaniSurface&) = delete;

    int setBlendMode(SDL_BlendMode mode) override;
    int setAlpha(unsigned char alpha) override;
    int getBlendMode(SDL_BlendMode* mode) override;
    int getAlpha(unsigned char* alpha) override;
    int render(SDL_Rect* src, SDL_Rect* dst, bool keepOwnSize, const char* dumpPath) override;
    int getWidth() override;
    int getHeight() override;
    void* getPixels(int* pitch, int* bytesPerPixel, int* maxWidth, int* maxHeight) override;

    SDL_Texture* texture() const { return mTexture; }

private:
    SDL_Texture* mTexture;  // owned
    SDL_Surface* mPixels;   // owned, may be NULL: the pixels last read back by getPixels
    int mWidth;
    int mHeight;
    bool mExactScale;  // the texture samples without filtering
};

// Loads a skin image: `name` itself when it is absolute, else `themePath`
// followed by `name`, else `defaultPath` followed by `name` (folders end in
// '/'). The caller owns the result; NULL when no file could be loaded.
KovaniSurface* LoadKovaniSurface(const char* themePath, const char* defaultPath, const char* name);

// Blends a colour over `rect` (NULL: everything) of `target`, or of the
// screen when `target` is NULL; alpha 255 paints opaquely. The renderer's
// target, colour and blend mode are left as they were. 0 on success,
// negative when the target cannot be drawn on.
int FillRect(KovaniSurface* target, SDL_Rect* rect, unsigned char r, unsigned char g,
             unsigned char b, unsigned char a);

// Release functions for caches: delete a KovaniSurface given untyped; NULL
// is ignored.
void release_surface(void* surface);
void release_kovanisurface(void* surface);
