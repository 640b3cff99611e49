#pragma once

#include <stdint.h>

#include <string>
#include <vector>

// UTF-8 text measured in code points. Bytes that do not form a valid
// sequence (stray continuation bytes, bad lead bytes, cut-off, overlong or
// surrogate sequences) count as one U+FFFD each, one byte at a time, so any
// byte string can be measured and cut without reading past its terminator.
// A NULL string is empty.

std::vector<uint32_t> utf8CodePoints(const char* text);
int utf8Length(const char* text);
// Byte offset where code point `index` starts: 0 for index <= 0, the byte
// length for an index at or past the end.
int utf8ByteOffset(const char* text, int index);
// The bytes of code points [start, start + count), clamped to the text.
std::string utf8Substr(const char* text, int start, int count);
// Byte length of the longest start of `text` that fits in `maxBytes` and
// ends after a whole code point.
int utf8FitBytes(const char* text, int maxBytes);
