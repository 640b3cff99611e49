#pragma once

// The toolkit's public header for lists: actions, the scrolling list, text
// entries and their drawer, entry ordering, the setting menu and the folder browser.
#include "action.h"
#include "dir_browser.h"
#include "entry_order.h"
#include "file_browser_menu.h"
#include "list_menu.h"
#include "setting_menu.h"
#include "text_menu_drawer.h"
#include "text_menu_item.h"
