#include "temp_dir.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/device_paths.h"

TempDeviceRoot::TempDeviceRoot() : mOldPrefix(devicePathPrefix()) {
    char tmpl[] = "/tmp/kovani_test_XXXXXX";
    mPath = mkdtemp(tmpl);
    setDevicePathPrefix(mPath.c_str());
}

TempDeviceRoot::~TempDeviceRoot() {
    setDevicePathPrefix(mOldPrefix.c_str());
    std::error_code ec;
    std::filesystem::remove_all(mPath, ec);
}

std::string TempDeviceRoot::at(int deviceId) const { return devicePath(deviceId); }

void makeDirs(const std::string& path) {
    std::error_code ec;
    std::filesystem::create_directories(path, ec);
}

void writeFileAtomic(const std::string& path, const std::string& text) {
    makeDirs(std::filesystem::path(path).parent_path());
    std::ofstream(path + ".tmp", std::ios::binary | std::ios::trunc) << text;
    rename((path + ".tmp").c_str(), path.c_str());
}

std::string readFile(const std::string& path) {
    std::stringstream ss;
    ss << std::ifstream(path, std::ios::binary).rdbuf();
    return ss.str();
}

bool fileExists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }
