#pragma once

#include "disp_layer_config.h"

// One layer command of the display engine.
// Contract: layerCommand(cmd, record) runs DISP_LAYER_GET_CONFIG or
// DISP_LAYER_SET_CONFIG for the one layer that record->cfg.channel and
// record->cfg.layer_id name on screen 0. GET fills the record (up to the
// driver's record size, within the room) with the driver's current record,
// SET hands it to the driver. Returns 0 on success and -1 on any failure (including a
// device that could not be opened); it never blocks for long.
class DispDevice {
public:
    virtual ~DispDevice() {}
    virtual int layerCommand(int cmd, disp_layer_record* record) = 0;
};

// The real device node, opened read-write once on first use and kept open
// for the life of the process.
class DispDeviceNode : public DispDevice {
public:
    explicit DispDeviceNode(const char* path);
    ~DispDeviceNode() override;
    int layerCommand(int cmd, disp_layer_record* record) override;

private:
    int mFd;
};

// The driver's ioctl: argument block (screen 0, record, 1 record, 0).
int LayerConfig(int fd, int cmd, disp_layer_record* record);
