#include "file_browser_menu.h"

#include <string.h>

#include <utility>

#include "folder_change.h"
#include "input.h"
#include "keycodes.h"
#include "platform/logger.h"

namespace {

// Index of the last entry shown after a change of folder, whatever the rows
// per page.
const int kLastShownAfterChange = 5;

// True for the parent entry's path: its last name is "..".
bool isParentPath(const char* path) {
    size_t n = strlen(path);
    if (n > 0 && path[n - 1] == '/') n--;
    if (n < 2 || strncmp(path + n - 2, "..", 2) != 0) return false;
    return n == 2 || path[n - 3] == '/';
}

}  // namespace

FileBrowserMenu::FileBrowserMenu(const char* rootDir, const char* startDir, const char* focusBgFile,
                                 const char* normalBgFile, int rowsPerPage, int ySpace)
    : TextMenuDrawer(focusBgFile, normalBgFile, rowsPerPage, ySpace),
      mRootDir(rootDir ? rootDir : ""),
      mStartDir(startDir ? startDir : ""),
      mDirBrowser(file_handler, file_filter),
      mCurrentMenu(nullptr) {}

FileBrowserMenu::~FileBrowserMenu() { mDirBrowser.freeCache(); }

std::vector<void*>* FileBrowserMenu::LoadDir() {
    mCurrentMenu = mDirBrowser.LoadDir(mRootDir.c_str(), mStartDir.empty() ? nullptr : mStartDir.c_str());
    return mCurrentMenu;
}

void FileBrowserMenu::showLoaded(DirBrowser& loaded, std::vector<void*>* list) {
    mDirBrowser.freeCache();
    mDirBrowser.mDirStack = std::move(loaded.mDirStack);
    mDirBrowser.mCache = std::move(loaded.mCache);
    loaded.mDirStack.clear();
    loaded.mCache.clear();
    mCurrentMenu = list;
}

const char* FileBrowserMenu::getCurrentDir() {
    return mDirBrowser.mDirStack.empty() ? nullptr : mDirBrowser.mDirStack.back().c_str();
}

int FileBrowserMenu::getListNum() { return mCurrentMenu ? int(mCurrentMenu->size()) : 0; }

void* FileBrowserMenu::getItemByIndex(int index) {
    if (index < 0 || !mCurrentMenu || size_t(index) >= mCurrentMenu->size()) return nullptr;
    return (*mCurrentMenu)[size_t(index)];
}

void FileBrowserMenu::draw() { TextMenuDrawer::draw(); }

void FileBrowserMenu::showFirstEntries() {
    const int n = getListNum();
    restorePos(0, 0, n > 0 ? SDL_min(kLastShownAfterChange, n - 1) : 0);
}

bool FileBrowserMenu::showsEntry(const std::string& path) {
    const int n = getListNum();
    for (int i = 0; i < n; i++) {
        TextMenuItem* item = static_cast<TextMenuItem*>(getItemByIndex(i));
        const FileAction* action = item ? dynamic_cast<const FileAction*>(item->getAction()) : nullptr;
        if (action && action->mPath == path) return true;
    }
    return false;
}

int FileBrowserMenu::changeDir(const std::string& path) {
    tprintf("change dir %s\n", path.c_str());
    // Keys queued before the change are handled first: they may have left
    // the folder it was chosen in.
    if (!showsEntry(path)) {
        tprintf("change dir %s: not in the folder shown, ignored\n", path.c_str());
        return EVENT_CHDIR;
    }
    if (isParentPath(path.c_str()))
        mCurrentMenu = mDirBrowser.ParentDir();
    else
        mCurrentMenu = mDirBrowser.ChildDir(path.c_str());
    showFirstEntries();
    tprintf("change dir return %d\n", EVENT_CHDIR);
    return EVENT_CHDIR;
}

int FileBrowserMenu::eventHandling() {
    SDL_Event event;
    memset(&event, 0, sizeof event);
    const int r = handleEvent(wait_event(&event));
    if (isBackKey(r)) {
        if (mDirBrowser.mDirStack.size() < 2) return WINDOW_CLOSE;
        mCurrentMenu = mDirBrowser.ParentDir();
        showFirstEntries();
        return EVENT_CHDIR;
    }
    // The confirm key comes back only as the result of the chosen entry's
    // action.
    if (isConfirmKey(r)) return EVENT_CHDIR;
    if (r == EVENT_CHDIR && event.type == SDL_USEREVENT && event.user.code == EVENT_CHDIR) {
        std::string path;
        if (!takeFolderChange(event, &path)) {
            tprintf("change dir without a path\n");
            return r;
        }
        return changeDir(path);
    }
    return r;
}
