#include "key_repeat.h"

#include <SDL2/SDL.h>
#include <pthread.h>
#include <stdint.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "keycodes.h"
#include "platform/clock.h"
#include "platform/logger.h"

namespace {

const int kKeySlots = TEST_KEY_VOL_DOWN + 1;
const long kWakeMs = 100;
const long kFirstRepeatMs = 500;
// Below the wake-up period, so after the first repeat every wake-up repeats.
const long kNextRepeatMs = 30;

std::mutex sRepeatLock;
std::condition_variable sRepeatCond;  // wakes the thread early (a release, a stop)
// Guarded by sRepeatLock.
uint64_t sKeyPressedTime[kKeySlots];   // monotonic ms of the press or the last repeat; 0 = not held
uint32_t sKeyPressedCount[kKeySlots];  // repeats sent since the press
bool sRepeatThreadRun = false;
// Started and joined by the main thread (runWindows).
std::thread sRepeatKeyThread;

void clearTimes() {
    for (int key = 0; key < kKeySlots; key++) {
        sKeyPressedTime[key] = 0;
        sKeyPressedCount[key] = 0;
    }
}

// Called with the lock held; posts the held directions that are due.
void sendDueRepeats() {
    const long now = monotonicMs();
    for (int key = KEY_UP; key <= KEY_RIGHT; key++) {
        if (sKeyPressedTime[key] == 0) continue;
        const long elapsed = now - (long)sKeyPressedTime[key];
        const long limit = sKeyPressedCount[key] == 0 ? kFirstRepeatMs : kNextRepeatMs;
        if (elapsed <= limit) continue;
        SDL_Event event = {};
        event.type = SDL_USEREVENT;
        event.user.code = key;
        if (SDL_PushEvent(&event) < 0) tprintf("push repeat key %d fail: %s\n", key, SDL_GetError());
        sKeyPressedCount[key]++;
        tprintf("%ld send repeat key %d, count %d, diff %ld\n", now, key, (int)sKeyPressedCount[key],
                elapsed);
        sKeyPressedTime[key] = now;
    }
}

}  // namespace

void update_repeat_key(int key) {
    if (key < 0 || key >= kKeySlots) {
        tprintf("repeat key %d out of range\n", key);
        return;
    }
    const long now = monotonicMs();
    {
        std::lock_guard<std::mutex> hold(sRepeatLock);
        sKeyPressedTime[key] = now;
    }
    tprintf("set repeat time %ld\n", now);
}

void reset_repeat_key() {
    {
        std::lock_guard<std::mutex> hold(sRepeatLock);
        clearTimes();
    }
    sRepeatCond.notify_all();
    tprintf("clear repeat time\n");
}

int check_repeat_thread(void*) {
    std::unique_lock<std::mutex> hold(sRepeatLock);
    sRepeatCond.wait_for(hold, std::chrono::milliseconds(kWakeMs));
    while (sRepeatThreadRun) {
        sendDueRepeats();
        sRepeatCond.wait_for(hold, std::chrono::milliseconds(kWakeMs));
    }
    return 0;
}

void clear_repeat_state() {
    {
        std::lock_guard<std::mutex> hold(sRepeatLock);
        clearTimes();
    }
    tprintf("clear repeat time\n");
}

int start_repeat_thread() {
    if (sRepeatKeyThread.joinable()) {
        tprintf("check_repeat_thread already runs\n");
        return -1;
    }
    {
        std::lock_guard<std::mutex> hold(sRepeatLock);
        sRepeatThreadRun = true;
    }
    tprintf("init check_repeat_thread\n");
    sRepeatKeyThread = std::thread([] {
        pthread_setname_np(pthread_self(), "repeatkey");
        check_repeat_thread(nullptr);
    });
    return 0;
}

void stop_repeat_thread() {
    {
        std::lock_guard<std::mutex> hold(sRepeatLock);
        sRepeatThreadRun = false;
    }
    sRepeatCond.notify_all();
    if (sRepeatKeyThread.joinable()) {
        sRepeatKeyThread.join();
        tprintf("deinit check_repeat_thread\n");
    }
}
