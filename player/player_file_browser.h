#pragma once

#include <atomic>
#include <string>

#include "toolkit/action.h"
#include "toolkit/file_browser_menu.h"
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

// True while the loader thread reads the start folder; the list then belongs
// to that thread and the main thread must not touch it. Written by the
// loader (and by its starter, before it starts).
extern std::atomic<bool> sLoading;

// Body of the loader thread: reads the start folder, selects the -f file,
// clears sLoading and asks for the file to be played.
int prepare_file_browser_thread(void* menu);
