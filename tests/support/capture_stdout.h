#pragma once

#include <string>

// Collects everything written to standard output (printf and the logger
// alike) while the object lives.
class CaptureStdout {
public:
    CaptureStdout();
    ~CaptureStdout();
    // Ends the capture (once) and returns what was written.
    std::string finish();

private:
    int mSavedFd;
    std::string mPath;
    std::string mText;
    bool mDone;
};
