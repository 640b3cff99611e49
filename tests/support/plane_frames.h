#pragma once

#include <gtest/gtest.h>
#include <string.h>

#include "platform/video_plane.h"

// Publishes one frame of a single colour (0xRRGGBB) at `rect`, as a decoder would.
inline void publishFrame(VideoPlaneWriter& writer, VideoRect rect, uint32_t colour) {
    size_t stride = 0;
    uint8_t* rows = writer.beginFrame(rect, &stride);
    ASSERT_NE(rows, nullptr);
    for (int y = 0; y < rect.h; y++)
        for (int x = 0; x < rect.w; x++) memcpy(rows + y * stride + x * 4, &colour, 4);
    writer.endFrame();
}
