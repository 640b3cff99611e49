#include "platform/key_shm.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/temp_dir.h"

TEST(KeyShm, ValuesSetInOneProcessAreSeenByAnotherAndBadSlotsAreRefused) {
    TempDeviceRoot root;
    KeyShmInfo mine;
    EXPECT_EQ(SetKeyShm(&mine, MONITOR_VOLUME, 3), -1) << "not opened yet";
    ASSERT_EQ(InitKeyShm(&mine), 0);
    EXPECT_EQ(GetKeyShm(&mine, MONITOR_B_CONFIRM), 0) << "a new block starts cleared";
    EXPECT_EQ(SetKeyShm(&mine, -1, 3), -1);
    EXPECT_EQ(SetKeyShm(&mine, MONITOR_VALUE_MAX, 3), -1);

    pid_t child = fork();
    if (child == 0) {
        KeyShmInfo theirs;
        int ok = InitKeyShm(&theirs) == 0 && SetKeyShm(&theirs, MONITOR_VOLUME, 17) == 0;
        UninitKeyShm(&theirs);
        _exit(ok ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(GetKeyShm(&mine, MONITOR_VOLUME), 17);
    UninitKeyShm(&mine);
    EXPECT_EQ(SetKeyShm(&mine, MONITOR_VOLUME, 3), -1);
    EXPECT_EQ(UninitKeyShm(&mine), 0) << "a second release is harmless";
}
