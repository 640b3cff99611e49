#pragma once

// The player's skin entry points: the toolkit's shared fonts, colours and
// images. Between ScreenInit and ScreenUninit.
void init_skin();
void uninit_skin();

// Starts decoding the pictures of the player's first screen, in the order it
// loads them, while the program opens SDL and the screen; any time before
// init_skin. end_skin_preload, once the first screen is built, ends that and
// frees what it did not take.
void preload_skin();
void end_skin_preload();
