#pragma once

#include <SDL2/SDL.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "toolkit/action.h"
#include "toolkit/dir_browser.h"
#include "toolkit/folder_change.h"
#include "toolkit/keycodes.h"
#include "toolkit/text_menu_item.h"

// Entries as the application makes them: a folder change, or EVENT_PLAY_FILE.
class TestFileAction : public FileAction {
public:
    TestFileAction(const char* path, int type) : FileAction(path, type) {}
    int dowork(void*) override {
        if (mFileType == FILE_ACTION_FOLDER) return postFolderChange(mPath.c_str()) ? 0 : -1;
        SDL_Event e = {};
        e.type = SDL_USEREVENT;
        e.user.code = EVENT_PLAY_FILE;
        return SDL_PushEvent(&e) == 1 ? 0 : -1;
    }
};

// Every folder and every file becomes an entry labelled with its name.
inline TextMenuItem* entryFor(const char* name, const char* path, int type) {
    const int fileType = type == DIR_ENTRY_FOLDER ? FILE_ACTION_FOLDER : FILE_ACTION_PLAYABLE;
    return new TextMenuItem(name, nullptr, new TestFileAction(path, fileType), true);
}

inline std::vector<std::string> labelsOf(const std::vector<void*>* list) {
    std::vector<std::string> out;
    if (list)
        for (void* entry : *list) out.push_back(static_cast<TextMenuItem*>(entry)->mLabel);
    return out;
}

// A fresh folder, removed with its contents afterwards; in the memory file
// system when there is one, where thousands of files are made ten times faster.
class TempFolder {
public:
    TempFolder() {
        for (const char* base : {"/dev/shm", "/tmp"}) {
            std::string tmpl = std::string(base) + "/kovani_folder_XXXXXX";
            if (access(base, W_OK) == 0 && mkdtemp(&tmpl[0])) {
                mPath = tmpl;
                return;
            }
        }
    }
    ~TempFolder() {
        std::error_code ec;
        std::filesystem::remove_all(mPath, ec);
    }

    const std::string& path() const { return mPath; }
    std::string operator/(const std::string& name) const { return mPath + "/" + name; }
    // Make folder or empty file `name` (and missing folders) inside; return its path.
    std::string dir(const std::string& name) const {
        std::filesystem::create_directories(*this / name);
        return *this / name;
    }
    std::string file(const std::string& name) const {
        dir(std::filesystem::path(name).parent_path());
        std::ofstream(*this / name).close();
        return *this / name;
    }

private:
    std::string mPath;
};
