#pragma once

#include <stddef.h>

// Formats a media time for the progress bar: "mm:ss", or "h:mm:ss" past one
// hour. Negative times read as 0. Writes at most `size` bytes into `buf`
// and returns it.
const char* formatMediaTime(int ms, char* buf, size_t size);
