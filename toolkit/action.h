#pragma once

#include <SDL2/SDL.h>

#include <string>

// What choosing a list entry does. The list runs dowork with the chosen entry
// (a TextMenuItem*, untyped) on the confirm key and dowork2 on X; their
// result becomes the result of the list's eventHandling.
class Action {
public:
    explicit Action(int winType) : mWinType(winType) {}
    virtual ~Action();

    virtual int dowork(void* item) = 0;
    virtual int dowork2(void* item);               // 0: nothing to do
    virtual int showdetail(void* item, int mode);  // -1: no detail view
    virtual bool showmenu();                       // false: no menu

    int mWinType;  // kind chosen by the creator; the application's actions use -1
};

// mFileType of a FileAction: what a folder list orders its entries by
// (larger codes first).
enum {
    FILE_ACTION_PLAYABLE = 99,
    FILE_ACTION_FOLDER = 102,
};

// The action of one entry of a folder list. It stays abstract: what opening
// a folder or a file means belongs to the application, which derives from
// FileAction, implements dowork and creates its entries' actions as that
// subclass. The toolkit only reads mPath and mFileType.
class FileAction : public Action {
public:
    // `path` null is taken as "".
    FileAction(const char* path, int fileType);

    int dowork(void* item) override = 0;

    std::string mPath;  // full path of the folder entry
    int mFileType;      // FILE_ACTION_FOLDER or FILE_ACTION_PLAYABLE
};

// A row that draws itself and may take keys while it is focused.
class ItemDrawable {
public:
    virtual ~ItemDrawable();
    virtual void draw(SDL_Rect& rect, bool focused) = 0;
    virtual bool focusable();        // true
    virtual int handleEvent(int key);  // -1: the key is not used
};
