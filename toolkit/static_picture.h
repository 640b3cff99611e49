#pragma once

#include <SDL2/SDL.h>
#include <stdint.h>

#include <functional>

class TextMenuDrawer;

// A window's unchanging parts, composed once into a texture of the screen's
// size and copied whole, without blending, in place of a clear; composed
// anew only when the window's key for them changes.
//
// With a list, a second picture holds the same parts plus the list's normal
// row images in the rows now visible: a frame then copies that picture,
// takes the cursor row's place from the first one, and the list draws only
// its cursor row's image. While a key is held down in a long list the rows'
// images stay where they are and only their texts move, so this spares
// blending six row images every frame. It is composed only when a second
// frame asks for the same rows: a list's first frame, which the user waits
// for, draws its rows itself. The result is the same pixels.
// Main thread only; the renderer must outlive it.
class StaticPicture {
public:
    StaticPicture(int width, int height);
    ~StaticPicture();
    StaticPicture(const StaticPicture&) = delete;
    StaticPicture& operator=(const StaticPicture&) = delete;

    // Copies the parts `draw` draws for `key` (non-zero) to the render
    // target; `draw` runs, into the picture, only when `key` changed. With
    // `list` (may be null) its normal row images come with the picture and
    // the list is told so. False when no texture can be made: the caller
    // clears and draws the parts itself, and the list draws its own rows.
    bool copy(uint32_t key, const std::function<void()>& draw, TextMenuDrawer* list);

private:
    // What a picture with rows shows: the parts' key, the rows, the list's
    // row images.
    struct Rows {
        uint32_t key;
        int rows;
        unsigned version;
        bool operator==(const Rows& o) const { return key == o.key && rows == o.rows && version == o.version; }
    };

    bool make(SDL_Texture** texture);
    bool copyWithRows(TextMenuDrawer* list);

    int mWidth;
    int mHeight;
    SDL_Texture* mPlain;     // owned: the parts alone; null until first needed
    SDL_Texture* mWithRows;  // owned: mPlain plus the normal row images
    uint32_t mPlainKey;      // what mPlain shows; 0: nothing yet
    Rows mRowsShown;         // what mWithRows shows; key 0: nothing yet
    Rows mRowsAsked;         // what the last frame with a list asked for
    bool mBroken;            // a texture could not be made: never tried again
};
