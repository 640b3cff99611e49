#pragma once

#include <SDL2/SDL.h>

#include "kovani_surface.h"

// Pieces of the top and bottom bars (KovaniWindow::drawNavBar and
// drawStatBar). Main thread only.

// A status icon's box in the top bar, placed BAR_SLOT_TOP below the bar's
// top. Icons sit on a BAR_SLOT_PITCH grid leftwards from the battery group.
enum { BAR_SLOT_W = 33, BAR_SLOT_H = 32, BAR_SLOT_TOP = 19, BAR_SLOT_PITCH = 42 };

// Draws the skin icon `name` ("skin/....png") at its own size, centred in the
// BAR_SLOT_W x BAR_SLOT_H box at slot.x, slot.y (slot.w and slot.h are not
// used). Icons are loaded once into gIconCache; a missing one draws nothing
// and is not looked for again while the cache keeps its place.
void draw_bar_icon(const SDL_Rect& slot, const char* name);

// Where a title in a top bar must end, from what drawNavBar returned: short
// of the leftmost status icon.
int navBarTitleRight(int iconsWidth);

// Draws the battery group (percentage, level icon, charging plug) of a top
// bar at offset y, right-aligned at the screen edge; returns its width.
int draw_battery_icon(int y);

// Draws one button tip of a bottom bar row starting at (x, y): the icon,
// then `text`. Returns icon width + 10 + text width.
int draw_stat_icon_item_left(KovaniSurface* icon, int x, int y, const char* text);

// The battery, network and Bluetooth state behind the top bar is read again
// once it is this old (the key memory's volume and the Wi-Fi record are
// looked at each time). With the loop waking when it is due, a change shows
// within this period and one frame: well under a second, also on a device
// busy decoding, where the wake and the frame come late.
const long BAR_STATUS_PERIOD_MS = 500;

// Makes the next bar read the state again.
void invalidateBarStatus();
// Milliseconds until the state is due to be read again; 0 when it is due.
// An idle loop sleeps no longer than this.
long barsLookDueInMs();

// Whether the state the top bar shows (battery, charging, sound, network,
// Bluetooth) differs from what the last drawn frame showed; cheap enough to
// ask on every wake of the loop. The loop calls noteBarsDrawn() after each
// drawn frame: it records the state the frame's bar was drawn from.
bool barsNeedRedraw();
void noteBarsDrawn();
