#pragma once

// One line of the decoder's command file, as the player writes it: a command
// word and, for some words, decimal numbers separated by blanks.
enum DecoderCommandType {
    DECODER_COMMAND_PLAY,
    DECODER_COMMAND_PAUSE,
    DECODER_COMMAND_FORWARD,      // "fastforward": one step ahead
    DECODER_COMMAND_REWIND,       // "rewind": one step back
    DECODER_COMMAND_AUDIO_TRACK,  // "audiotrack N", N counted from 0
    DECODER_COMMAND_VOLUME,       // "volume N", N >= 0
    DECODER_COMMAND_WINDOW,       // "win x y w h", w and h > 0
};

struct DecoderCommand {
    DecoderCommandType type;
    int args[4];  // only the numbers the type takes are set
};

// Parses the whole content of the command file. Surrounding white space and
// the trailing newline are ignored; anything else that does not fit one
// command exactly (unknown word, missing, extra or out-of-range numbers, a
// second line) is malformed. 0 and *out filled on success, -1 when malformed.
int parseDecoderCommand(const char* text, DecoderCommand* out);
