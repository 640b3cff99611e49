#pragma once

#include <string>

// A temporary folder every device path points into while the object lives.
class TempDeviceRoot {
public:
    TempDeviceRoot();
    ~TempDeviceRoot();
    const std::string& path() const { return mPath; }
    // Full path of a device path inside this root.
    std::string at(int deviceId) const;

private:
    std::string mPath;
    std::string mOldPrefix;
};

// Writes `text` through a temporary file and a rename; creates missing folders.
void writeFileAtomic(const std::string& path, const std::string& text);
// Whole file, or "" when missing.
std::string readFile(const std::string& path);
bool fileExists(const std::string& path);
void makeDirs(const std::string& path);
