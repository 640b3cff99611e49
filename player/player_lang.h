#pragma once

#include "toolkit/lang.h"

// The player's own string ids, following the toolkit's.
enum {
    STRING_MEDIAPLAYER = STRING_SHARED_MAX,
    STRING_NO_FILES,
    STRING_READING_FILES,
    STRING_SETTING,
    STRING_ASPECT_RATIO,
    STRING_RATIO_DEFAULT,
    STRING_RATIO_4_3,
    STRING_RATIO_16_9,
    STRING_NO_ROTATION,
    STRING_DEREE,
    STRING_ROTATION,
    STRING_SPEED_FF_16X,
    STRING_SPEED_FF_8X,
    STRING_SPEED_FF_4X,
    STRING_SPEED_FF_2X,
    STRING_SPEED_DEFAULT,
    STRING_SPEED_BF_2X,
    STRING_SPEED_BF_4X,
    STRING_SPEED_BF_8X,
    STRING_SPEED_BF_16X,
    STRING_QUIT_PROMPT,
    STRING_QUIT,
    STRING_AUDIOTRACK,
    STRING_MAX
};

// Appends the player's built-in English texts to gDefaultStringList, after
// the toolkit's. Call once before initLang; a second call changes nothing.
void initDefLang();
