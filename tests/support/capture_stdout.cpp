#include "capture_stdout.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

CaptureStdout::CaptureStdout() : mDone(false) {
    char tmpl[] = "/tmp/kovani_stdout_XXXXXX";
    int fd = mkstemp(tmpl);
    mPath = tmpl;
    fflush(stdout);
    mSavedFd = dup(STDOUT_FILENO);
    dup2(fd, STDOUT_FILENO);
    close(fd);
}

CaptureStdout::~CaptureStdout() {
    if (mDone) return;
    // Not finished by the test: a failed assertion returned early, and its
    // message went into the capture. Pass everything on.
    const std::string text = finish();
    fputs(text.c_str(), stdout);
}

std::string CaptureStdout::finish() {
    if (mDone) return mText;
    mDone = true;
    fflush(stdout);
    dup2(mSavedFd, STDOUT_FILENO);
    close(mSavedFd);
    std::ifstream in(mPath);
    std::stringstream ss;
    ss << in.rdbuf();
    mText = ss.str();
    unlink(mPath.c_str());
    return mText;
}
