#pragma once

#include <SDL2/SDL.h>

#include <string>

#include "action.h"
#include "kovani_surface.h"

// What a text list reads from one of its entries.
class TextMenuItemProvider {
public:
    virtual ~TextMenuItemProvider();
    virtual Action* getAction() = 0;
    virtual std::string getFileName() = 0;
    virtual std::string getPinyin() = 0;
    virtual std::string getOriginalPinyin() = 0;
    virtual std::string getLabel() = 0;
    virtual std::string getSubLabel() = 0;
    virtual KovaniSurface* getLabelIcon() = 0;
    // The part of the label icon to draw; null: all of it, at its own size.
    virtual SDL_Rect* getLabelIconDisplayRect() = 0;
    virtual bool isFavourite() = 0;
    virtual std::string getThemePath() = 0;
};

// One entry of a text list: a label (or a language string id), an optional
// second line, an optional icon and the action run when it is chosen.
class TextMenuItem : public TextMenuItemProvider {
public:
    // `label` null gives an empty label. The entry deletes `action` when
    // `ownAction` is set; it never deletes `labelIcon` (shared skin image).
    TextMenuItem(const char* label, KovaniSurface* labelIcon, Action* action, bool ownAction);
    ~TextMenuItem() override;
    TextMenuItem(const TextMenuItem&) = delete;
    TextMenuItem& operator=(const TextMenuItem&) = delete;

    Action* getAction() override;
    std::string getFileName() override;
    std::string getPinyin() override;
    std::string getOriginalPinyin() override;
    // mLabel, or when it is empty the language string mLabelId ("" for a
    // negative id, "wrongbeef" beyond the string table).
    std::string getLabel() override;
    // As getLabel with mSubLabel / mSubLabelId; "" without mHasSubLabel.
    std::string getSubLabel() override;
    KovaniSurface* getLabelIcon() override;
    SDL_Rect* getLabelIconDisplayRect() override;  // null
    bool isFavourite() override;
    std::string getThemePath() override;  // ""

    // How many entries without action exist right now (any thread). While
    // there are none, no list can hold one, which lets ordering skip
    // looking for them.
    static int countWithoutAction();

    std::string mLabel;
    int mLabelId;               // shown when mLabel is empty; -1: nothing
    Action* const mAction;      // owned when mOwnAction; may be null; fixed for life
    bool mOwnAction;
    bool mFavourite;
    KovaniSurface* mLabelIcon;  // not owned; may be null
    bool mHasSubLabel;
    std::string mSubLabel;
    int mSubLabelId;            // shown when mSubLabel is empty; -1: nothing
    std::string mPinyin;        // pinyin initials: one ASCII letter per character of the label
    std::string mFileName;      // file name when it differs from the label
    std::string mOriginalPinyin;  // pinyin initials of mFileName
};
