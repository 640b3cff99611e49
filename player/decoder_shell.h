#pragma once

#include <string>

class StopFlag;

// How the decoder client reaches the decoder process "avworker": shell lines
// and the process table. This is the only way out to the process; tests put
// a recording stand-in in its place.
//
// Contract:
//  - run(line, stop) runs one shell line to its end, or until `stop` (may be
//    null) is set, when the line's process group is killed. The start line
//    puts the decoder in the background, so it returns at once. Any thread.
//  - findDecoder() gives the process id of a running decoder, or -1; one
//    that has exited but was not reaped does not count.
//  - alive(pid) tells whether that process still runs (not a zombie).
class DecoderShell {
public:
    virtual ~DecoderShell() {}
    virtual void run(const std::string& line, const StopFlag* stop) = 0;
    virtual int findDecoder() = 0;
    virtual bool alive(int pid) = 0;
};

// The real one: "/bin/sh -c" and "/proc". Lives for the whole process.
DecoderShell* systemDecoderShell();
