#pragma once

#include <stddef.h>
#include <stdint.h>

#include <memory>

#include "platform/owned_thread.h"

struct FolderNamesShared;

// A run of one folder's names, as read, and what each one is, found by a
// stat that follows links. Most of a big folder's read is these stats, in
// the kernel: a helper thread stats ahead of the caller while the caller
// makes the list's entries, and the caller stats itself whatever the helper
// has not reached. Owned by one thread, the caller; the helper touches only
// the state it co-owns, so a helper held up in a stat (a dead card) may
// outlive this object.
class FolderNames {
public:
    enum Kind : uint8_t { KIND_OTHER, KIND_FOLDER, KIND_FILE };

    // `folder`: the open folder the names are relative to; it is duplicated,
    // so the caller may close it whenever it likes.
    explicit FolderNames(int folder);
    // Stops and joins the helper (bounded).
    ~FolderNames();
    FolderNames(const FolderNames&) = delete;
    FolderNames& operator=(const FolderNames&) = delete;

    // While no kind was asked for. False when no memory was left for it.
    bool add(const char* name);
    size_t size() const;
    const char* name(size_t index) const;
    // What the name is; asked in increasing order of index, from the caller.
    // A name that cannot be looked at (gone, a dangling link) is KIND_OTHER.
    Kind kindOf(size_t index);
    // Nothing more will be asked: the helper stops.
    void done();

private:
    void startHelper();

    std::shared_ptr<FolderNamesShared> mShared;
    OwnedThread mHelper;
    bool mStarted = false;             // kinds asked for; names fixed
    size_t mGivenUp = SIZE_MAX;        // the chunk the helper held up too long
};
