#pragma once

#include <SDL2/SDL.h>

#include <string>
#include <vector>

// A picture file decoded into 32-bit ARGB pixels, ready to become a texture.
struct DecodedImage {
    SDL_Surface* pixels;  // owned by whoever holds the record; null: no picture
    bool opaque;          // the file has no transparency: copied, not blended
};

// Reads and decodes `path`; a layout of other than 4 bytes a pixel becomes
// 32-bit ARGB (logged). Null pixels when the file cannot be read, with no log
// line: a theme without the file is normal. Any thread.
DecodedImage decodeImage(const std::string& path);

// Decodes `paths`, in that order, on a thread of its own while the caller
// goes on opening the screen: loading one of them afterwards only makes its
// texture. One batch at a time; a call while one is held is ignored (logged).
// Main thread, like the two below.
void preloadImages(const std::vector<std::string>& paths);
// True when the batch holds `path`: *image then gets its picture (null pixels
// when it could not be decoded), waited for while it is being decoded. For
// any other path (logged: the batch missed it) the batch is first waited for
// to the end, so that the image library never works for two threads at once.
// Each wait is bounded; one that runs out is logged and the caller decodes
// for itself.
bool takePreloadedImage(const std::string& path, DecodedImage* image);
// Ends the batch: waits for its thread (bounded) and frees the pictures no
// one took, logging each (decoded for nothing).
void endPreloading();
