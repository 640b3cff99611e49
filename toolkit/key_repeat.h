#pragma once

// Held direction keys repeat: a background thread posts the held key again
// as an SDL user event, first after 500 ms, then about every 100 ms. Only
// the hat's four directions repeat; any button release or a centred hat stops
// every repeat. The thread lives exactly as long as runWindows().

// Marks `key` as pressed now (hat press).
void update_repeat_key(int key);
// Forgets every held key and wakes the thread.
void reset_repeat_key();
// Thread body.
int check_repeat_thread(void* unused);

// Lifecycle, in runWindows() order: clear the state, start the thread (0, or
// -1 when it already runs), stop and join it (within one wake-up). Without a
// running thread the two calls above still keep the state.
void clear_repeat_state();
int start_repeat_thread();
void stop_repeat_thread();
