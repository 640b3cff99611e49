#include "platform/key_shm.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/temp_dir.h"

TEST(KeyShm, ValuesSetInOneProcessAreSeenByAnother) {
    TempDeviceRoot root;
    KeyShmInfo mine;
    ASSERT_EQ(InitKeyShm(&mine), 0);
    EXPECT_EQ(GetKeyShm(&mine, MONITOR_B_CONFIRM), 0) << "a new block starts cleared";

    pid_t child = fork();
    if (child == 0) {
        KeyShmInfo theirs;
        int ok = InitKeyShm(&theirs) == 0 && SetKeyShm(&theirs, MONITOR_B_CONFIRM, 1) == 0 &&
                 SetKeyShm(&theirs, MONITOR_VOLUME, 17) == 0;
        UninitKeyShm(&theirs);
        _exit(ok ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(GetKeyShm(&mine, MONITOR_B_CONFIRM), 1);
    EXPECT_EQ(GetKeyShm(&mine, MONITOR_VOLUME), 17);

    KeyShmInfo again;
    ASSERT_EQ(InitKeyShm(&again), 0);
    EXPECT_EQ(GetKeyShm(&again, MONITOR_VOLUME), 17) << "values outlive a handle";
    UninitKeyShm(&again);
    UninitKeyShm(&mine);
}

TEST(KeyShm, BadSlotsAndClosedHandlesAreRefused) {
    TempDeviceRoot root;
    KeyShmInfo info;
    EXPECT_EQ(GetKeyShm(&info, MONITOR_VOLUME), 0);
    EXPECT_EQ(SetKeyShm(&info, MONITOR_VOLUME, 3), -1);
    ASSERT_EQ(InitKeyShm(&info), 0);
    EXPECT_EQ(SetKeyShm(&info, -1, 3), -1);
    EXPECT_EQ(SetKeyShm(&info, MONITOR_VALUE_MAX, 3), -1);
    EXPECT_EQ(GetKeyShm(&info, MONITOR_VALUE_MAX), 0);
    UninitKeyShm(&info);
    EXPECT_EQ(SetKeyShm(&info, MONITOR_VOLUME, 3), -1);
    EXPECT_EQ(UninitKeyShm(&info), 0) << "a second release is harmless";
}
