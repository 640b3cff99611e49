#pragma once

#include "platform/disp_device.h"

// The decoder shows its picture on a layer beneath the user interface. With
// enable != 0 the UI layer (screen 0, channel 1, layer 0) blends per pixel,
// so transparent UI pixels let the video through; with 0 the UI layer is
// opaque. Never reports failure: without a display device nothing changes.
void disp2_ui_transparent(int enable);

// The same on a given device; every field other than the alpha settings is
// written back exactly as the driver reported it.
void disp2_ui_transparent_on(DispDevice& device, int enable);

int LayerGetPara(DispDevice& device, disp_layer_record* record);
int LayerSetPara(DispDevice& device, disp_layer_record* record);
