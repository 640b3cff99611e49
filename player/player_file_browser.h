#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "platform/stop_flag.h"
#include "toolkit/action.h"
#include "toolkit/file_browser_menu.h"
#include "toolkit/keycodes.h"
#include "toolkit/kovani_surface.h"

// Video extensions, compared with the text from a name's last "." on,
// exactly (".MP4" is not a video).
extern const char* const videoFileType[15];

// The action of a folder-list entry: a folder opens it, a video asks the
// player window to play the entry under the cursor.
class PlayerFileAction : public FileAction {
public:
    PlayerFileAction(const char* path, int type);
    int dowork(void* item) override;
};

// The action of entry `index` of `menu`, or null when there is none.
FileAction* fileActionAt(ListMenu& menu, int index);

// The video list of the player window: folders and videos of one folder,
// with a mark on the row of the video being played.
class PlayerFileBrowserMenu : public FileBrowserMenu {
public:
    // `playing`: the owning window's playing flag (not owned; the window
    // outlives its list), which picks the row mark.
    PlayerFileBrowserMenu(const char* basePath, const char* startDir, const bool* playing);
    ~PlayerFileBrowserMenu() override;

    void draw() override;
    // Marks entry `index` of folder `dir` as the one playing (-1: none).
    void setPlayIndex(int index, const char* dir);
    // Puts the cursor on the file given with -f; false when it is not listed.
    bool checkUserFile();

    std::string mPlayDir;  // folder of the video being played; empty: any
    int mPlayIndex;        // its index in that folder's list; -1: none
    KovaniSurface* mPlaySurface;   // owned; row mark while playing
    KovaniSurface* mPauseSurface;  // owned; row mark while paused
    const bool* mPlaying;          // not owned: the window's playing flag
};

// The loader's word that the start folder is read; the player window's own
// events (player_window.h) take the codes beside it.
enum { EVENT_FOLDER_READ = KEY_MAX_KEY + 2 };

// The start folder as the loader thread reads it. Shared by that thread and
// the window that shows it, so that a loader held up in a system call may
// outlive the window without writing into anything the window owned.
struct FolderLoad {
    FolderLoad(const std::string& root, const std::string& start);
    const std::string rootDir;
    const std::string startDir;  // empty: the top folder
    DirBrowser browser;          // the loader's while sLoading is set, then the main thread's
    std::vector<void*>* list;    // browser's list of the shown folder; null until read
    // Set by the window once its first frame is on screen (and when it
    // goes): the read waits for it, so that it never competes with that
    // frame.
    StopFlag firstFrameShown;
};

// True while the loader thread reads the start folder into its FolderLoad,
// which then belongs to that thread. Set by the window that starts the
// loader; cleared by the loader once the folder is read (a stopped loader
// leaves it), which hands the FolderLoad to the main thread.
extern std::atomic<bool> sLoading;

// How long the loader waits for the window's first frame before it reads
// anyway: a window that is never drawn still gets its folder.
const long kFirstFrameWaitMs = 250;

// Body of the loader thread: once the window's first frame is on screen (or
// kFirstFrameWaitMs passed), reads the start folder into `load`, giving up
// between two entries once `stop` is set. Unless stopped it then clears
// sLoading and posts EVENT_FOLDER_READ.
void readStartFolder(FolderLoad* load, const StopFlag& stop);
