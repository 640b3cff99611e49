#include "key_repeat.h"

#include <SDL2/SDL.h>

#include "keycodes.h"
#include "platform/logger.h"
#include "platform/sysutil.h"

namespace {

const int kKeySlots = TEST_KEY_VOL_DOWN + 1;
const Uint32 kWakeMs = 100;
const long kFirstRepeatMs = 500;
// Below the wake-up period, so after the first repeat every wake-up repeats.
const long kNextRepeatMs = 30;

// Guarded by sRepeatLock while the thread runs.
Uint64 sKeyPressedTime[kKeySlots];  // ms of the press or the last repeat; 0 = not held
Uint32 sKeyPressedCount[kKeySlots];  // repeats sent since the press
bool sRepeatThreadRun = false;

// Created and destroyed by the main thread around the thread's life; null
// while no thread runs. Owned.
SDL_mutex* sRepeatLock = nullptr;
SDL_cond* sRepeatCond = nullptr;
SDL_Thread* sRepeatKeyThread = nullptr;

void lock() {
    if (sRepeatLock) SDL_LockMutex(sRepeatLock);
}

void unlock() {
    if (sRepeatLock) SDL_UnlockMutex(sRepeatLock);
}

void clearTimes() {
    for (int key = 0; key < kKeySlots; key++) {
        sKeyPressedTime[key] = 0;
        sKeyPressedCount[key] = 0;
    }
}

void destroyLock() {
    SDL_DestroyCond(sRepeatCond);
    SDL_DestroyMutex(sRepeatLock);
    sRepeatCond = nullptr;
    sRepeatLock = nullptr;
}

// Called with the lock held; posts the held directions that are due.
void sendDueRepeats() {
    const long now = systemms();
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
    const long now = systemms();
    lock();
    sKeyPressedTime[key] = now;
    unlock();
    tprintf("set repeat time %ld\n", now);
}

void reset_repeat_key() {
    lock();
    clearTimes();
    if (sRepeatCond) SDL_CondSignal(sRepeatCond);
    unlock();
    tprintf("clear repeat time\n");
}

int check_repeat_thread(void*) {
    SDL_LockMutex(sRepeatLock);
    SDL_CondWaitTimeout(sRepeatCond, sRepeatLock, kWakeMs);
    while (sRepeatThreadRun) {
        sendDueRepeats();
        // Let the main thread in between two waits.
        SDL_UnlockMutex(sRepeatLock);
        SDL_LockMutex(sRepeatLock);
        SDL_CondWaitTimeout(sRepeatCond, sRepeatLock, kWakeMs);
    }
    SDL_UnlockMutex(sRepeatLock);
    return 0;
}

void clear_repeat_state() {
    clearTimes();
    tprintf("clear repeat time\n");
}

int start_repeat_thread() {
    if (sRepeatKeyThread) {
        tprintf("check_repeat_thread already runs\n");
        return -1;
    }
    sRepeatLock = SDL_CreateMutex();
    sRepeatCond = SDL_CreateCond();
    if (!sRepeatLock || !sRepeatCond) {
        tprintf("create repeat lock fail: %s\n", SDL_GetError());
        destroyLock();
        return -1;
    }
    sRepeatThreadRun = true;
    tprintf("init check_repeat_thread\n");
    sRepeatKeyThread = SDL_CreateThread(check_repeat_thread, "repeatkey", nullptr);
    if (!sRepeatKeyThread) {
        tprintf("create repeat thread fail: %s\n", SDL_GetError());
        sRepeatThreadRun = false;
        destroyLock();
        return -1;
    }
    return 0;
}

void stop_repeat_thread() {
    lock();
    sRepeatThreadRun = false;
    if (sRepeatCond) SDL_CondSignal(sRepeatCond);
    unlock();
    if (sRepeatKeyThread) {
        SDL_WaitThread(sRepeatKeyThread, nullptr);
        sRepeatKeyThread = nullptr;
        tprintf("deinit check_repeat_thread\n");
    }
    destroyLock();
}
