#include "command_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace {

// As the player's shell writes it: truncate, write, close.
void shellWrite(const std::string& path, const std::string& text) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, text.data(), text.size()), (ssize_t)text.size());
    close(fd);
}

bool readyWithin(int fd, int ms) {
    struct pollfd p = {fd, POLLIN, 0};
    return poll(&p, 1, ms) == 1;
}

}  // namespace

// Writes that follow one another while the decoder's main loop is busy and
// takes nothing (mpv starting, a picture drawn): each is read as it was
// written, in order, and the same command twice acts twice.
TEST(CommandReaderTest, EachWriteIsReadAsItWasWrittenWhileNothingIsTaken) {
    TempDeviceRoot root;
    const std::string path = root.path() + "/cmd";
    CommandReader reader;
    ASSERT_EQ(reader.start(path), 0);
    const struct {
        const char* name;
        std::vector<std::string> writes;  // "=" first: renamed over the file
        std::vector<std::string> read;
    } rows[] = {
        {"the picture's place, then play", {"win 650 85 610 360\n", "play\n"}, {"win 650 85 610 360\n", "play\n"}},
        {"the same command twice", {"pause\n", "pause\n"}, {"pause\n", "pause\n"}},
        {"a file renamed over it", {"=stop\n"}, {"stop\n"}},
    };
    for (const auto& row : rows) {
        bool failed = false;
        for (const std::string& text : row.writes) {
            if (text[0] == '=')
                writeFileAtomic(path, text.substr(1));
            else
                shellWrite(path, text);
            // The next write comes once this one was read, as the next
            // shell line would.
            EXPECT_TRUE(readyWithin(reader.readyFd(), 5000)) << row.name;
        }
        std::vector<std::string> read = reader.take(&failed);
        for (int i = 0; i < 500 && read.size() < row.read.size(); i++) {
            usleep(10 * 1000);
            for (const std::string& text : reader.take(&failed)) read.push_back(text);
        }
        EXPECT_EQ(read, row.read) << row.name;
        EXPECT_FALSE(failed);
        EXPECT_FALSE(readyWithin(reader.readyFd(), 0)) << row.name << ": taken, nothing waits";
    }
}
