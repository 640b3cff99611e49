#include "disp_device.h"

#include <fcntl.h>
#include <stdint.h>
#include <sys/ioctl.h>
#include <unistd.h>

int LayerConfig(int fd, int cmd, disp_layer_record* record) {
    unsigned long long args[4] = {0, (unsigned long long)(uintptr_t)record, 1, 0};
    return ioctl(fd, (unsigned long)cmd, args) == 0 ? 0 : -1;
}

DispDeviceNode::DispDeviceNode(const char* path) : mFd(open(path, O_RDWR | O_CLOEXEC)) {}

DispDeviceNode::~DispDeviceNode() {
    if (mFd >= 0) close(mFd);
}

int DispDeviceNode::layerCommand(int cmd, disp_layer_record* record) {
    if (mFd < 0) return -1;
    return LayerConfig(mFd, cmd, record);
}
