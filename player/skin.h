#pragma once

// The player's skin entry points: the toolkit's shared fonts, colours and
// images. Between ScreenInit and ScreenUninit.
void init_skin();
void uninit_skin();
