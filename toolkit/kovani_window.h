#pragma once

// The toolkit's public header for windows: key codes, logging, utilities,
// the screen and its surfaces, text, caches, the shared skin, languages and
// input.
#include "platform/fileutil.h"
#include "input.h"
#include "keycodes.h"
#include "kovani_surface.h"
#include "lang.h"
#include "platform/logger.h"
#include "lru_cache.h"
#include "screen.h"
#include "shared_skin.h"
#include "platform/sysutil.h"
#include "text.h"
