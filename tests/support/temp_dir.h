#pragma once

#include <string>

// A fresh temporary folder that every device path points into while the
// object lives; removed with its contents afterwards.
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

// Writes `text` to `path` through a temporary file and a rename, so a reader
// never sees half of it. Creates missing parent folders.
void writeFileAtomic(const std::string& path, const std::string& text);
// Whole file, or "" when missing.
std::string readFile(const std::string& path);
bool fileExists(const std::string& path);
void makeDirs(const std::string& path);
