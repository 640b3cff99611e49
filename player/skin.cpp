#include "skin.h"

#include <string>
#include <vector>

#include "toolkit/image_preload.h"
#include "toolkit/shared_skin.h"

namespace {

// The first screen, in loading order: the shared images, the list's rows and
// marks, then the player window's own. The fullscreen view's and the
// popups' wait until they show.
const char* const kFirstScreen[] = {
    "skin/ic-video.png",          "skin/ic-folder.png",       "skin/bg.png",
    "skin/icon-back.png",         "skin/tips-MENU2.png",      "skin/tips-A.png",
    "skin/tips-B.png",            "skin/bg-list-f.png",       "skin/bg-list-n.png",
    "skin/show-player.png",       "skin/show-pause.png",      "skin/bg-video-window.png",
    "skin/bg-control-panel.png",  "skin/btn-full-screen.png", "skin/btn-previous.png",
    "skin/btn-next.png",          "skin/btn-play.png",        "skin/btn-pause.png",
    "skin/btn-config.png",        "skin/tips-L.png",          "skin/tips-R.png",
    "skin/tips-MENU.png",         "skin/tips-START.png",      "skin/tips-SELECT.png",
    "skin/progress-bg.png",       "skin/progress-slider-left.png", "skin/progress-slider-middle.png",
    "skin/progress-slider-right.png", "skin/icon-player.png",
};

// The theme folder the start-up sets and the one the window loads from.
const char* const kSkinFolder = "./";

}  // namespace

void init_skin() { init_shared_skin(); }

void uninit_skin() {
    end_skin_preload();
    uninit_shared_skin();
}

void preload_skin() {
    std::vector<std::string> paths;
    for (const char* name : kFirstScreen) paths.push_back(std::string(kSkinFolder) + name);
    preloadImages(paths);
}

void end_skin_preload() { endPreloading(); }
