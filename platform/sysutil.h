#pragma once

#include <string>
#include <vector>

// Wall-clock milliseconds since the epoch (wallMs(), clock.h): a time of day,
// never an interval.
long systemms();

// Process id of the first process whose first command-line argument contains
// `name` followed by the end of that argument or a blank; -1 when none. A
// process that has exited but was not reaped yet (a zombie) does not count.
int check_process_exist(const char* name, int verbose);
int check_process_exist(const char* name);
// Every such process, in the order "/proc" lists them.
std::vector<int> find_processes(const char* name);

// Whether process `pid` exists and has not exited (a zombie has).
bool process_alive(int pid);

// `text` as one shell word: returned unchanged when it holds only characters
// the shell never interprets, otherwise in single quotes with every embedded
// quote closed, escaped and reopened. Nothing inside is ever expanded.
std::string shellQuote(const std::string& text);
