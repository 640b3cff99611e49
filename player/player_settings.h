#pragma once

// The player's own settings, kept between runs in one JSON file (the
// folder that was open, gSavedDir, lives in app_options.h).

enum PLAYER_ASPECT_RATIO { RATIO_DEFAULT = 0, RATIO4_3 = 1, RATIO16_9 = 2 };

enum PLAYER_ROTATION {
    VIDEO_ROTATE_DEGREE_0 = 0,
    VIDEO_ROTATE_DEGREE_90 = 1,
    VIDEO_ROTATE_DEGREE_180 = 2,
    VIDEO_ROTATE_DEGREE_270 = 3
};

enum PLAYER_SPEED {
    VIDEO_SPEED_FAST_FORWARD_16 = 0,
    VIDEO_SPEED_FAST_FORWARD_8 = 1,
    VIDEO_SPEED_FAST_FORWARD_4 = 2,
    VIDEO_SPEED_FAST_FORWARD_2 = 3,
    VIDEO_SPEED_1 = 4,
    VIDEO_SPEED_FAST_BACKWARD_2 = 5,
    VIDEO_SPEED_FAST_BACKWARD_4 = 6,
    VIDEO_SPEED_FAST_BACKWARD_8 = 7,
    VIDEO_SPEED_FAST_BACKWARD_16 = 8
};

extern PLAYER_ASPECT_RATIO gPlayerAspectRatio;
extern PLAYER_ROTATION gPlayerRotation;
extern PLAYER_SPEED gPlayerSpeed;
extern int gAudioTrack;

// Resets ratio, rotation and speed to their defaults, then reads the file:
// 0 when it was read and parsed, -1 otherwise. Bad members are ignored one
// by one.
int loadPlayerConfig();

// Writes the settings (always returns 0). The new text replaces the old file
// in one rename, so a crash mid-save never leaves a broken or empty file.
int savePlayerConfig();
