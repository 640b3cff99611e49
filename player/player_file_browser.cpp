#include "player_file_browser.h"

#include <string.h>

#include "app_options.h"
#include "player_lang.h"
#include "toolkit/dir_browser.h"
#include "toolkit/folder_change.h"
#include "toolkit/keycodes.h"
#include "platform/logger.h"
#include "toolkit/shared_skin.h"
#include "toolkit/text.h"
#include "toolkit/text_menu_item.h"

std::atomic<bool> sLoading{false};

const char* const videoFileType[15] = {".avi", ".mkv", ".flv", ".ts",  ".mp4",
                                       ".ts",  ".webm", ".asf", ".mpg", ".mpeg",
                                       ".mov", ".vob", ".3gp", ".wmv", ".pmp"};

namespace {

const int kRowsPerPage = 6;

bool hasVideoExtension(const char* name) {
    const char* dot = strrchr(name, '.');
    if (!dot) return false;
    for (const char* ext : videoFileType)
        if (strcmp(dot, ext) == 0) return true;
    return false;
}

bool pushEvent(int code) {
    SDL_Event event;
    memset(&event, 0, sizeof event);
    event.type = SDL_USEREVENT;
    event.user.code = code;
    return SDL_PushEvent(&event) >= 0;
}

}  // namespace

bool file_filter(const char* name, const char*) { return hasVideoExtension(name); }

TextMenuItem* file_handler(const char* name, const char* path, int type) {
    if (type == DIR_ENTRY_FOLDER)
        return new TextMenuItem(name, gIconFolder, new PlayerFileAction(path, FILE_ACTION_FOLDER), true);
    if (type == DIR_ENTRY_FILE && hasVideoExtension(name))
        return new TextMenuItem(name, gIconVideo, new PlayerFileAction(path, FILE_ACTION_PLAYABLE), true);
    return nullptr;
}

PlayerFileAction::PlayerFileAction(const char* path, int type) : FileAction(path, type) {}

int PlayerFileAction::dowork(void*) {
    if (mFileType == FILE_ACTION_PLAYABLE) {
        if (!strchr(mPath.c_str(), '.')) {
            tprintf("openfile_action no suffix %s\n", mPath.c_str());
            return -1;
        }
        if (!pushEvent(EVENT_PLAY_FILE)) tprintf("Failed to push play SDL event\n");
    } else if (mFileType == FILE_ACTION_FOLDER) {
        postFolderChange(mPath.c_str());
    }
    return 0;
}

FileAction* fileActionAt(ListMenu& menu, int index) {
    TextMenuItem* item = static_cast<TextMenuItem*>(menu.getItemByIndex(index));
    return item ? dynamic_cast<FileAction*>(item->getAction()) : nullptr;
}

PlayerFileBrowserMenu::PlayerFileBrowserMenu(const char* basePath, const char* startDir,
                                             const bool* playing)
    : FileBrowserMenu(basePath, startDir, "skin/bg-list-f.png", "skin/bg-list-n.png", kRowsPerPage, 0),
      mPlayIndex(-1),
      mPlaySurface(LoadKovaniSurface(gThemePath, "./", "skin/show-player.png")),
      mPauseSurface(LoadKovaniSurface(gThemePath, "./", "skin/show-pause.png")),
      mPlaying(playing) {}

PlayerFileBrowserMenu::~PlayerFileBrowserMenu() {
    delete mPlaySurface;
    delete mPauseSurface;
}

void PlayerFileBrowserMenu::setPlayIndex(int index, const char* dir) {
    mPlayIndex = index;
    mPlayDir = dir ? dir : "";
}

bool PlayerFileBrowserMenu::checkUserFile() {
    if (gUserFile.empty()) return false;
    const int n = getListNum();
    for (int i = 0; i < n; i++) {
        FileAction* action = fileActionAt(*this, i);
        if (!action || action->mPath != gUserFile) continue;
        if (i + kRowsPerPage - 1 < n)
            restorePos(i, i, i + kRowsPerPage - 1);
        else
            restorePos(i, n - kRowsPerPage, n - 1);
        return true;
    }
    return false;
}

void PlayerFileBrowserMenu::draw() {
    const int n = getListNum();
    if (n < 1) {
        DrawString(gListFontTxt, mRect, getLangStr(STRING_NO_FILES), gListColorTxt, ALIGN_CENTER);
        return;
    }
    FileBrowserMenu::draw();
    if (!mPlaySurface || mPlayIndex < mFirstVisible || mPlayIndex > mLastVisible || mPlayIndex >= n) return;
    const char* dir = getCurrentDir();
    if (!mPlayDir.empty() && dir && mPlayDir != dir) return;
    KovaniSurface* mark = (mPlaying && *mPlaying) || !mPauseSurface ? mPlaySurface : mPauseSurface;
    SDL_Rect dst = {mRect.x + 560,
                    mRect.y + (mPlayIndex - mFirstVisible) * (mItemHeight + mYSpaceInList) + 30, 0, 0};
    mark->render(nullptr, &dst, true, nullptr);
}

FolderLoad::FolderLoad(const std::string& root, const std::string& start)
    : rootDir(root), startDir(start), browser(file_handler, file_filter), list(nullptr) {}

void readStartFolder(FolderLoad* load, const StopFlag& stop) {
    load->firstFrameShown.sleepFor(kFirstFrameWaitMs);
    if (stop.isSet()) return;
    load->list = load->browser.LoadDir(load->rootDir.c_str(),
                                       load->startDir.empty() ? nullptr : load->startDir.c_str(), &stop);
    // A stopped load has no reader: its window is going or gone.
    if (stop.isSet()) return;
    sLoading = false;
    if (!pushEvent(EVENT_FOLDER_READ)) tprintf("Failed to push folder read SDL event\n");
}
