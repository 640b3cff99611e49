#pragma once

#include "platform/key_shm.h"

// The process's key shared-memory handle: opened by start-up with InitKeyShm,
// released at shutdown.
extern KeyShmInfo gShmInfo;
// Heap copy of the settings' "storeurl", owned here; null when it has none.
extern char* gStoreUrl;

// Reads the device's shared settings file once: publishes its values into the
// key shared memory `shm` (a KeyShmInfo*), writes the display colour
// attributes, names the language (setSystemLanguage) and sets LANG from it.
// A missing or broken file gives every slot and attribute its default.
// `theme`, when not null, receives a heap copy of the "theme" value if that
// path exists, else null (the caller owns it); a broken file leaves it alone.
void loadSystemState(void* shm, char** theme);

// The settings' "timezone", "" when it has none.
const char* getSystemTimeZone();
