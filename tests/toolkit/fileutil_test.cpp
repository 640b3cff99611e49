#include "toolkit/fileutil.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "tests/support/capture_stdout.h"
#include "tests/support/temp_dir.h"

namespace {

struct TempFolder {
    std::string path;
    TempFolder() {
        char tmpl[] = "/tmp/kovani_file_XXXXXX";
        path = mkdtemp(tmpl);
    }
    ~TempFolder() { std::string cmd = "rm -rf " + path; (void)system(cmd.c_str()); }
};

}  // namespace

TEST(FileToMem, NeverWritesPastTheCallersCapacity) {
    TempFolder dir;
    const std::string path = dir.path + "/data";
    writeFileAtomic(path, std::string(100, 'x'));

    char buf[64];
    memset(buf, '#', sizeof buf);
    EXPECT_EQ(fileToMem(path.c_str(), buf, 10), 10);
    EXPECT_EQ(std::string(buf, 10), std::string(10, 'x'));
    EXPECT_EQ(buf[10], '#');

    EXPECT_EQ(fileToMem(path.c_str(), buf, sizeof buf), 64);

    writeFileAtomic(path, "abc");
    memset(buf, '#', sizeof buf);
    EXPECT_EQ(fileToMem(path.c_str(), buf, sizeof buf), 3);
    EXPECT_EQ(buf[3], '#') << "bytes are not terminated";

    writeFileAtomic(path, "");
    EXPECT_EQ(fileToMem(path.c_str(), buf, sizeof buf), 0);
    EXPECT_EQ(fileToMem((dir.path + "/missing").c_str(), buf, sizeof buf), 0);
}

TEST(LoadContent, AcceptsOneTo131071BytesAndRefusesTheRest) {
    TempFolder dir;
    struct Row { size_t size; int result; } rows[] = {{0, -1}, {1, 0}, {131071, 0}, {131072, -1}};
    for (const Row& row : rows) {
        const std::string path = dir.path + "/f";
        writeFileAtomic(path, std::string(row.size, 'a'));
        FILE* f = fopen(path.c_str(), "r");
        ASSERT_TRUE(f);
        char* out = reinterpret_cast<char*>(0x1);  // must stay untouched on a refused size
        CaptureStdout capture;
        const int result = loadContent("f", f, &out);
        fclose(f);
        EXPECT_EQ(result, row.result) << row.size;
        if (row.result == 0) {
            EXPECT_EQ(strlen(out), row.size);
            free(out);
        } else {
            EXPECT_EQ(out, reinterpret_cast<char*>(0x1));
        }
    }
}
