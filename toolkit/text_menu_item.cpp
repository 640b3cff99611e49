#include "text_menu_item.h"

#include <atomic>

#include "lang.h"
#include "platform/logger.h"

namespace {

std::atomic<int> sWithoutAction{0};

std::string textOrString(const std::string& text, int id) {
    if (!text.empty()) return text;
    return getLangStr(id);
}

}  // namespace

TextMenuItemProvider::~TextMenuItemProvider() {}

TextMenuItem::TextMenuItem(const char* label, KovaniSurface* labelIcon, Action* action,
                           bool ownAction)
    : mLabel(label ? label : ""),
      mLabelId(-1),
      mAction(action),
      mOwnAction(ownAction),
      mFavourite(false),
      mLabelIcon(labelIcon),
      mHasSubLabel(false),
      mSubLabelId(-1) {
    if (!mAction) sWithoutAction++;
    if (labelIcon) tprintf("%s labelicon = %p\n", mLabel.c_str(), static_cast<void*>(labelIcon));
}

TextMenuItem::~TextMenuItem() {
    if (!mAction) sWithoutAction--;
    if (mOwnAction) delete mAction;
}

int TextMenuItem::countWithoutAction() { return sWithoutAction.load(); }

Action* TextMenuItem::getAction() { return mAction; }

std::string TextMenuItem::getFileName() { return mFileName; }

std::string TextMenuItem::getPinyin() { return mPinyin; }

std::string TextMenuItem::getOriginalPinyin() { return mOriginalPinyin; }

std::string TextMenuItem::getLabel() { return textOrString(mLabel, mLabelId); }

std::string TextMenuItem::getSubLabel() {
    if (!mHasSubLabel) return "";
    return textOrString(mSubLabel, mSubLabelId);
}

KovaniSurface* TextMenuItem::getLabelIcon() { return mLabelIcon; }

SDL_Rect* TextMenuItem::getLabelIconDisplayRect() { return nullptr; }

bool TextMenuItem::isFavourite() { return mFavourite; }

std::string TextMenuItem::getThemePath() { return ""; }
