#pragma once

// The program's two clocks. Intervals (pacing, timeouts, repeat, freshness)
// are measured on the monotonic one: the wall clock steps when the device
// sets its time from the network or the user changes it.
//
// Tests install a ClockSource to move either clock at will; the program
// itself never installs one.

// Milliseconds since an arbitrary start that never steps (CLOCK_MONOTONIC).
long monotonicMs();
// Wall-clock milliseconds since the epoch: for times of day and log lines.
long wallMs();

class ClockSource {
public:
    virtual ~ClockSource() {}
    virtual long monotonicMs() = 0;
    virtual long wallMs() = 0;
};
// Installs `source` (not owned; null restores the system's clocks). Set
// before the threads that read the clocks start, and reset after they end.
void setClockSource(ClockSource* source);
