#pragma once

#include <string>
#include <vector>

#include "dir_browser.h"
#include "text_menu_drawer.h"
#include "text_menu_item.h"

// Supplied by the application: the list entry for one directory entry (null
// leaves it out; see DirEntryHandler), and whether a file is one it opens.
extern TextMenuItem* file_handler(const char* name, const char* path, int type);
extern bool file_filter(const char* name, const char* path);

// The text list of one folder's entries. The user walks down into folders
// (a folder entry's action calls postFolderChange, folder_change.h) and
// back up, never above the top folder. Main thread only, except LoadDir
// (see there).
class FileBrowserMenu : public TextMenuDrawer {
public:
    // Top folder `rootDir`, first shown `startDir` (null or "": the top
    // folder); the drawer part as TextMenuDrawer. Reads no folder yet.
    FileBrowserMenu(const char* rootDir, const char* startDir, const char* focusBgFile,
                    const char* normalBgFile, int rowsPerPage, int ySpace);
    ~FileBrowserMenu() override;

    // Reads the start folder and shows it, on the caller's thread.
    std::vector<void*>* LoadDir();
    // Shows a start folder read elsewhere (DirBrowser::LoadDir on a loader
    // thread that is done with it): takes over `loaded`'s folder stack and
    // cached lists, `list` (its shown folder's) among them, leaving it empty.
    void showLoaded(DirBrowser& loaded, std::vector<void*>* list);
    // The shown folder; null before LoadDir.
    const char* getCurrentDir();

    int getListNum() override;
    void* getItemByIndex(int index) override;
    void draw() override;
    // The list's key handling, then: the back key goes up a folder
    // (WINDOW_CLOSE in the top folder), EVENT_CHDIR opens the folder it
    // names when that is an entry of the folder shown (a change chosen in a
    // folder left since is stale and does nothing); both return EVENT_CHDIR,
    // as does the confirm key once the chosen entry's action has run.
    int eventHandling() override;

    std::string mRootDir;
    std::string mStartDir;  // empty: the top folder
    DirBrowser mDirBrowser;
    std::vector<void*>* mCurrentMenu;  // not owned (the cache's); null before LoadDir

private:
    // Cursor on the first entry, first six entries shown.
    void showFirstEntries();
    bool showsEntry(const std::string& path);
    int changeDir(const std::string& path);
};
