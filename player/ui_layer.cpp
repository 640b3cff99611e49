#include "ui_layer.h"

#include <string.h>

#include "platform/device_paths.h"

int LayerGetPara(DispDevice& device, disp_layer_record* record) {
    return device.layerCommand(DISP_LAYER_GET_CONFIG, record);
}

int LayerSetPara(DispDevice& device, disp_layer_record* record) {
    return device.layerCommand(DISP_LAYER_SET_CONFIG, record);
}

void disp2_ui_transparent_on(DispDevice& device, int enable) {
    disp_layer_record record;
    memset(&record, 0, sizeof record);
    record.cfg.channel = 1;
    record.cfg.layer_id = 0;
    // Writing back a record the driver never filled would move and resize
    // the layer, so nothing is set without a successful read.
    if (LayerGetPara(device, &record) != 0) return;
    record.cfg.info.alpha_mode = enable ? DISP_ALPHA_PIXEL : DISP_ALPHA_GLOBAL;
    record.cfg.info.alpha_value = 255;
    LayerSetPara(device, &record);
    LayerGetPara(device, &record);
}

void disp2_ui_transparent(int enable) {
    // Opened once and kept open for the life of the process.
    static DispDeviceNode sDisp(devicePath(DEVICE_PATH_DISP));
    disp2_ui_transparent_on(sDisp, enable);
}
