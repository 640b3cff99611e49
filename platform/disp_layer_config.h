#pragma once

// The display engine driver's layer record and layer commands, as the kernel
// driver on the handheld exchanges them through ioctl on its device node. The
// head of the layout must match the driver byte for byte; only the fields the
// player changes (info.alpha_mode, info.alpha_value) and the address fields
// (channel, layer_id) are given meaning here, everything else is carried
// through unchanged. A kernel whose record is longer than ours copies its
// whole record, so the driver is only ever handed a disp_layer_record.

#include <stdint.h>

enum {
    DISP_LAYER_SET_CONFIG = 0x47,
    DISP_LAYER_GET_CONFIG = 0x48,
};

enum {
    DISP_ALPHA_PIXEL = 0,   // per-pixel alpha: transparent UI pixels show the video layer
    DISP_ALPHA_GLOBAL = 1,  // one alpha value for the whole layer
};

struct disp_rect {
    int32_t x;
    int32_t y;
    uint32_t width;
    uint32_t height;
};

struct disp_rect64 {
    int64_t x;
    int64_t y;
    int64_t width;
    int64_t height;
};

struct disp_rectsz {
    uint32_t width;
    uint32_t height;
};

struct disp_fb_info {
    uint64_t addr[3];
    struct disp_rectsz size[3];
    uint32_t align[3];
    int32_t format;
    int32_t color_space;
    int32_t trd_right_addr[3];
    bool pre_multiply;
    struct disp_rect64 crop;
    int32_t flags;
    int32_t scan;
};

struct disp_atw_info {
    bool used;
    int32_t mode;
    uint32_t b_row;
    uint32_t b_col;
    int32_t cof_fd;
};

struct disp_layer_info {
    int32_t mode;
    uint8_t zorder;
    uint8_t alpha_mode;
    uint8_t alpha_value;
    struct disp_rect screen_win;
    bool b_trd_out;
    int32_t out_trd_mode;
    union {
        uint32_t color;
        struct disp_fb_info fb;
    };
    uint32_t id;
    struct disp_atw_info atw;
};

struct disp_layer_config {
    struct disp_layer_info info;
    bool enable;
    uint32_t channel;
    uint32_t layer_id;
};

// What the driver is handed: our record at the head of a zeroed room far
// larger than any kernel's record, so a longer record than ours lands in the
// room and is written back unchanged.
enum { DISP_LAYER_RECORD_ROOM = 1024 };
union disp_layer_record {
    struct disp_layer_config cfg;
    unsigned char room[DISP_LAYER_RECORD_ROOM];
};
