#pragma once

#include "disp_layer_config.h"

// One layer command of the display engine.
// Contract: layerCommand(cmd, cfg) runs DISP_LAYER_GET_CONFIG or
// DISP_LAYER_SET_CONFIG for the one layer that cfg->channel and cfg->layer_id
// name on screen 0. GET fills *cfg with the driver's current record, SET hands
// *cfg to the driver. Returns 0 on success and -1 on any failure (including a
// device that could not be opened); it never blocks for long.
class DispDevice {
public:
    virtual ~DispDevice() {}
    virtual int layerCommand(int cmd, disp_layer_config* cfg) = 0;
};

// The real device node, opened read-write once on first use and kept open
// for the life of the process.
class DispDeviceNode : public DispDevice {
public:
    explicit DispDeviceNode(const char* path);
    ~DispDeviceNode() override;
    int layerCommand(int cmd, disp_layer_config* cfg) override;

private:
    int mFd;
};

// The driver's ioctl: argument block (screen 0, cfg, 1 record, 0).
int LayerConfig(int fd, int cmd, disp_layer_config* cfg);
