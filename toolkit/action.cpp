#include "action.h"

Action::~Action() {}

int Action::dowork2(void*) { return 0; }

int Action::showdetail(void*, int) { return -1; }

bool Action::showmenu() { return false; }

FileAction::FileAction(const char* path, int fileType)
    : Action(-1), mPath(path ? path : ""), mFileType(fileType) {}

ItemDrawable::~ItemDrawable() {}

bool ItemDrawable::focusable() { return true; }

int ItemDrawable::handleEvent(int) { return -1; }
