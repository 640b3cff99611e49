#include "player_lang.h"

#include <iterator>

void initDefLang() {
    static const char* const kPlayerStrings[STRING_MAX - STRING_SHARED_MAX] = {
        "Video",           "No Files",        "Reading Files",   "Setting",
        "Aspect Ratio",    "Default",         "4:3",             "16:9",
        "No Rotation",     "Degrees",         "Rotation",        "16x FastForward",
        "8X FastForward",  "4X FastForward",  "2X FastForward",  "Default",
        "2X FastBackward", "4X FastBackward", "8X FastBackward", "16X FastBackward",
        "Quit VideoPlayer?", "Quit",          "AudioTrack",
    };
    gDefaultStringList.resize(STRING_SHARED_MAX);
    gDefaultStringList.insert(gDefaultStringList.end(), std::begin(kPlayerStrings),
                              std::end(kPlayerStrings));
}
