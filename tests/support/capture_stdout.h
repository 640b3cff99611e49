#pragma once

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "tests/support/temp_dir.h"

// Collects everything written to standard output while the object lives.
class CaptureStdout {
public:
    CaptureStdout() {
        char tmpl[] = "/tmp/kovani_stdout_XXXXXX";
        const int fd = mkstemp(tmpl);
        mPath = tmpl;
        fflush(stdout);
        mSavedFd = dup(STDOUT_FILENO);
        dup2(fd, STDOUT_FILENO);
        close(fd);
    }
    // Not finished: an assertion returned early. Pass everything on.
    ~CaptureStdout() {
        if (mSavedFd >= 0) fputs(finish().c_str(), stdout);
    }
    // Ends the capture (once) and returns what was written.
    std::string finish() {
        if (mSavedFd < 0) return mText;
        fflush(stdout);
        dup2(mSavedFd, STDOUT_FILENO);
        close(mSavedFd);
        mSavedFd = -1;
        mText = readFile(mPath);
        unlink(mPath.c_str());
        return mText;
    }

private:
    int mSavedFd;
    std::string mPath, mText;
};
