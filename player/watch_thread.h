#pragma once

class KovaniPlayer;

// The decoder status watcher: one background thread that reads the decoder's
// status and information files twice a second and hands the values to the
// KovaniPlayer that started it. At most one runs per process.

// Thread body; `player` is the KovaniPlayer to notify.
void* watch_thread(void* player);

// Starts the watcher for `player` unless one already runs. Returns true when
// this call started it.
bool start_watch_thread(KovaniPlayer* player);

// Ends the watcher (if running) and waits until it has stopped touching its
// player, so the player may be deleted afterwards.
void stop_watch_thread();
