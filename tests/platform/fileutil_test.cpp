#include "platform/fileutil.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"

TEST(LoadContent, AcceptsOneTo131071BytesAndRefusesTheRest) {
    TempDeviceRoot dir;
    struct Row { size_t size; int result; } rows[] = {{0, -1}, {1, 0}, {131071, 0}, {131072, -1}};
    for (const Row& row : rows) {
        const std::string path = dir.path() + "/f";
        writeFileAtomic(path, std::string(row.size, 'a'));
        FILE* f = fopen(path.c_str(), "r");
        ASSERT_TRUE(f);
        char* out = reinterpret_cast<char*>(0x1);  // must stay untouched on a refused size
        CaptureStdout capture;
        EXPECT_EQ(loadContent("f", f, &out), row.result) << row.size;
        fclose(f);
        if (row.result == 0) {
            EXPECT_EQ(strlen(out), row.size);
            free(out);
        } else {
            EXPECT_EQ(out, reinterpret_cast<char*>(0x1));
        }
    }
}
