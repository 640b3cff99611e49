#include "utf8.h"

#include <string.h>

namespace {

const uint32_t sReplacement = 0xFFFD;

bool isContinuation(unsigned char c) { return (c & 0xC0) == 0x80; }

// Decodes the code point at `s`, which has `avail` > 0 bytes left; returns
// how many bytes it takes.
int decodeOne(const unsigned char* s, size_t avail, uint32_t* cp) {
    const unsigned char c = s[0];
    int need = 0;
    unsigned char lo = 0x80, hi = 0xBF;  // allowed range of the second byte
    if (c < 0x80) {
        *cp = c;
        return 1;
    } else if (c >= 0xC2 && c <= 0xDF) {
        need = 1;
        *cp = c & 0x1F;
    } else if (c >= 0xE0 && c <= 0xEF) {
        need = 2;
        *cp = c & 0x0F;
        if (c == 0xE0) lo = 0xA0;  // overlong
        if (c == 0xED) hi = 0x9F;  // surrogates
    } else if (c >= 0xF0 && c <= 0xF4) {
        need = 3;
        *cp = c & 0x07;
        if (c == 0xF0) lo = 0x90;  // overlong
        if (c == 0xF4) hi = 0x8F;  // beyond U+10FFFF
    } else {
        *cp = sReplacement;
        return 1;
    }
    if (avail < size_t(need) + 1 || s[1] < lo || s[1] > hi) {
        *cp = sReplacement;
        return 1;
    }
    for (int i = 1; i <= need; i++) {
        if (!isContinuation(s[i])) {
            *cp = sReplacement;
            return 1;
        }
        *cp = (*cp << 6) | (s[i] & 0x3F);
    }
    return need + 1;
}

}  // namespace

std::vector<uint32_t> utf8CodePoints(const char* text) {
    std::vector<uint32_t> out;
    if (!text) return out;
    const unsigned char* s = reinterpret_cast<const unsigned char*>(text);
    size_t left = strlen(text);
    while (left > 0) {
        uint32_t cp;
        int used = decodeOne(s, left, &cp);
        out.push_back(cp);
        s += used;
        left -= used;
    }
    return out;
}

int utf8Length(const char* text) { return int(utf8CodePoints(text).size()); }

int utf8ByteOffset(const char* text, int index) {
    if (!text) return 0;
    const unsigned char* s = reinterpret_cast<const unsigned char*>(text);
    const size_t length = strlen(text);
    size_t offset = 0;
    for (int i = 0; i < index && offset < length; i++) {
        uint32_t cp;
        offset += decodeOne(s + offset, length - offset, &cp);
    }
    return int(offset);
}

std::string utf8Substr(const char* text, int start, int count) {
    if (!text || count <= 0) return std::string();
    const int from = utf8ByteOffset(text, start);
    const int to = from + utf8ByteOffset(text + from, count);
    return std::string(text + from, text + to);
}

int utf8FitBytes(const char* text, int maxBytes) {
    if (!text || maxBytes <= 0) return 0;
    const unsigned char* s = reinterpret_cast<const unsigned char*>(text);
    const size_t length = strlen(text);
    size_t offset = 0;
    while (offset < length) {
        uint32_t cp;
        const int used = decodeOne(s + offset, length - offset, &cp);
        if (offset + used > size_t(maxBytes)) break;
        offset += used;
    }
    return int(offset);
}
