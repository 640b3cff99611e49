#pragma once

#include <stdint.h>

#include <map>
#include <string>
#include <vector>

#include "text_menu_item.h"

// Inserts `item` into `list` (TextMenuItem pointers) at its place: entries
// with a larger FileAction::mFileType first (folders before files), each
// group in strcmp order of mLabel, a new entry before existing ones with the
// same label. An entry without action is placed by label alone against its
// neighbours. Every action of the list's entries must be a FileAction.
// The place is the first entry, from the front, that the item goes before.
// A list filled through this function whose entries all carry an action
// is in this order, so the place is found by binary search; an entry without action breaks the
// order, so a list holding one (or an item without action) is walked entry
// by entry. While no entry without action exists at all, lists are not
// scanned for one.
void additemsorted(std::vector<void*>* list, TextMenuItem* item);

// Finds `keyword` (ASCII letters in any case) in `pinyin`, a string of one
// ASCII character per code point of `text`, and gives the matching part of
// `text`: *matchStart points into `text`, *matchLen counts its bytes (as many
// code points as the keyword has characters, no further than the end of
// `text`). 0 when found, -1 otherwise (or for a null argument), the
// out-parameters then unchanged. Bytes of `text` that are not valid UTF-8
// count as one character each.
int PinyinStrstr(const char* text, const char* pinyin, const char* keyword,
                 const char** matchStart, int* matchLen);

// Code point -> pinyin of that character, for programs that build pinyin
// strings for search. Empty here: no entry of this program has one.
extern std::map<uint32_t, std::string> gPinyinMap;
