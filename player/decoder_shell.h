#pragma once

#include <string>
#include <vector>

// How the decoder client reaches the decoder process "avworker": shell lines
// and the process table. This is the only way out to the process; tests put
// a recording stand-in in its place.
//
// Contract:
//  - run(line, limitMs) runs one shell line to its end; a line still running
//    after `limitMs` is killed with everything it started (logged). The start
//    line puts the decoder in the background, so it returns at once. Any
//    thread.
//  - decoders() lists the running decoders, in the order the process table
//    gives them; one that has exited but was not reaped does not count.
//  - alive(pid) tells whether that process still runs (not a zombie).
class DecoderShell {
public:
    virtual ~DecoderShell() {}
    virtual void run(const std::string& line, long limitMs) = 0;
    virtual std::vector<int> decoders() = 0;
    virtual bool alive(int pid) = 0;
};

// The real one: "/bin/sh -c" and "/proc". Lives for the whole process.
DecoderShell* systemDecoderShell();
