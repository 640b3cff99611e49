#include "player/ui_layer.h"

#include <gtest/gtest.h>
#include <stddef.h>
#include <string.h>

#include <vector>

namespace {

// A driver whose layer record is 600 bytes, longer than ours, copied whole both ways.
class LongRecordDevice : public DispDevice {
public:
    static const size_t kRecordBytes = 600;

    LongRecordDevice() : mRecord(kRecordBytes) {
        for (size_t i = 0; i < kRecordBytes; i++) mRecord[i] = (unsigned char)(i * 7 + 3);
        disp_layer_config head;
        memcpy(&head, mRecord.data(), sizeof head);
        head.channel = 1;
        head.layer_id = 0;
        head.info.alpha_mode = DISP_ALPHA_GLOBAL;
        head.info.alpha_value = 40;
        memcpy(mRecord.data(), &head, sizeof head);
    }

    int layerCommand(int cmd, disp_layer_record* record) override {
        mCommands.push_back(cmd);
        if (mFailGet && cmd == DISP_LAYER_GET_CONFIG) return -1;
        if (record->cfg.channel != 1 || record->cfg.layer_id != 0) return -1;
        if (cmd == DISP_LAYER_GET_CONFIG) {
            // The room the player hands over is zeroed past its own record.
            for (size_t i = sizeof(disp_layer_config); i < DISP_LAYER_RECORD_ROOM; i++)
                if (record->room[i] != 0 && !mFilledOnce) mDirtyRoom = true;
            memcpy(record->room, mRecord.data(), kRecordBytes);
            mFilledOnce = true;
        } else {
            memcpy(mRecord.data(), record->room, kRecordBytes);
        }
        return 0;
    }

    std::vector<unsigned char> mRecord;
    std::vector<int> mCommands;
    bool mFailGet = false;
    bool mFilledOnce = false;
    bool mDirtyRoom = false;
};

}  // namespace

// Under AddressSanitizer a record of our own size would show the overrun.
TEST(UiLayer, LongerDriverRecordFitsAndRoundTripsWithOnlyTheAlphaChanged) {
    const size_t modeAt = offsetof(disp_layer_config, info) + offsetof(disp_layer_info, alpha_mode);
    const size_t valueAt = offsetof(disp_layer_config, info) + offsetof(disp_layer_info, alpha_value);
    for (int enable : {1, 0}) {
        LongRecordDevice device;
        std::vector<unsigned char> expected = device.mRecord;
        expected[modeAt] = enable ? DISP_ALPHA_PIXEL : DISP_ALPHA_GLOBAL;
        expected[valueAt] = 255;
        disp2_ui_transparent_on(device, enable);
        EXPECT_EQ(device.mCommands, (std::vector<int>{DISP_LAYER_GET_CONFIG, DISP_LAYER_SET_CONFIG,
                                                       DISP_LAYER_GET_CONFIG}));
        EXPECT_FALSE(device.mDirtyRoom) << "the room past our record starts zeroed";
        EXPECT_EQ(device.mRecord, expected) << "enable " << enable;
    }
    // Without a record from the driver nothing is written back.
    LongRecordDevice silent;
    silent.mFailGet = true;
    disp2_ui_transparent_on(silent, 1);
    EXPECT_EQ(silent.mCommands, std::vector<int>{DISP_LAYER_GET_CONFIG});
}
