#include "decoder_command.h"

#include <ctype.h>
#include <errno.h>
#include <limits.h>
#include <stdlib.h>

#include <string>
#include <vector>

namespace {

struct CommandWord {
    const char* word;
    DecoderCommandType type;
    int argCount;
};

const CommandWord kWords[] = {
    {"play", DECODER_COMMAND_PLAY, 0},
    {"pause", DECODER_COMMAND_PAUSE, 0},
    {"fastforward", DECODER_COMMAND_FORWARD, 0},
    {"rewind", DECODER_COMMAND_REWIND, 0},
    {"audiotrack", DECODER_COMMAND_AUDIO_TRACK, 1},
    {"volume", DECODER_COMMAND_VOLUME, 1},
    {"win", DECODER_COMMAND_WINDOW, 4},
};

// Splits one line at blanks and tabs; false when the text holds a second line.
bool splitLine(const char* text, std::vector<std::string>* tokens) {
    std::string line(text);
    while (!line.empty() && isspace((unsigned char)line.back())) line.pop_back();
    if (line.find_first_of("\r\n") != std::string::npos) return false;
    size_t pos = 0;
    while (true) {
        pos = line.find_first_not_of(" \t", pos);
        if (pos == std::string::npos) return true;
        size_t end = line.find_first_of(" \t", pos);
        if (end == std::string::npos) end = line.size();
        tokens->push_back(line.substr(pos, end - pos));
        pos = end;
    }
}

// A whole token as a decimal int; "+5", "5x", "" and overflow are refused.
bool parseInt(const std::string& token, int* value) {
    const char* s = token.c_str();
    if (!isdigit((unsigned char)s[0]) && !(s[0] == '-' && isdigit((unsigned char)s[1])))
        return false;
    char* end = nullptr;
    errno = 0;
    long v = strtol(s, &end, 10);
    if (errno != 0 || *end != '\0' || v < INT_MIN || v > INT_MAX) return false;
    *value = (int)v;
    return true;
}

bool argsInRange(const DecoderCommand& cmd) {
    switch (cmd.type) {
        case DECODER_COMMAND_AUDIO_TRACK:
        case DECODER_COMMAND_VOLUME:
            return cmd.args[0] >= 0;
        case DECODER_COMMAND_WINDOW:
            return cmd.args[2] > 0 && cmd.args[3] > 0;
        default:
            return true;
    }
}

}  // namespace

int parseDecoderCommand(const char* text, DecoderCommand* out) {
    if (!text || !out) return -1;
    std::vector<std::string> tokens;
    if (!splitLine(text, &tokens) || tokens.empty()) return -1;
    for (const CommandWord& w : kWords) {
        if (tokens[0] != w.word) continue;
        if ((int)tokens.size() != 1 + w.argCount) return -1;
        DecoderCommand cmd = {w.type, {0, 0, 0, 0}};
        for (int i = 0; i < w.argCount; i++) {
            if (!parseInt(tokens[1 + i], &cmd.args[i])) return -1;
        }
        if (!argsInRange(cmd)) return -1;
        *out = cmd;
        return 0;
    }
    return -1;
}
