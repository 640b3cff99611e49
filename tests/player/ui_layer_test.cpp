#include "player/ui_layer.h"

#include <gtest/gtest.h>
#include <string.h>

#include <vector>

#include "platform/device_paths.h"
#include "tests/support/temp_dir.h"

namespace {

// A display engine that holds one layer record and logs the commands it gets.
class FakeDisp : public DispDevice {
public:
    FakeDisp() {
        // Every byte set, so any field lost on the way back shows.
        memset(&mLayer, 0x5A, sizeof mLayer);
        mLayer.channel = 1;
        mLayer.layer_id = 0;
        mLayer.info.alpha_mode = 7;
        mLayer.info.alpha_value = 9;
    }
    int layerCommand(int cmd, disp_layer_config* cfg) override {
        mCommands.push_back(cmd);
        mAsked.push_back({cfg->channel, cfg->layer_id});
        if (mFailGet && cmd == DISP_LAYER_GET_CONFIG) return -1;
        if (cmd == DISP_LAYER_GET_CONFIG)
            memcpy(cfg, &mLayer, sizeof mLayer);
        else
            memcpy(&mLayer, cfg, sizeof mLayer);
        return 0;
    }
    disp_layer_config mLayer;
    std::vector<int> mCommands;
    std::vector<std::pair<unsigned, unsigned>> mAsked;
    bool mFailGet = false;
};

}  // namespace

TEST(UiLayer, OnlyTheAlphaSettingsChangeAndEverythingElseIsWrittenBack) {
    for (int enable : {1, 0}) {
        FakeDisp disp;
        disp_layer_config expected = disp.mLayer;
        expected.info.alpha_mode = enable ? 0 : 1;
        expected.info.alpha_value = 255;

        disp2_ui_transparent_on(disp, enable);

        EXPECT_EQ(memcmp(&disp.mLayer, &expected, sizeof expected), 0) << enable;
        EXPECT_EQ(disp.mCommands, (std::vector<int>{0x48, 0x47, 0x48}));
        EXPECT_EQ(disp.mAsked.front(), (std::pair<unsigned, unsigned>{1, 0})) << "UI is layer 0 of channel 1";
    }
}

TEST(UiLayer, NothingIsWrittenWhenTheDriverCannotBeRead) {
    FakeDisp disp;
    disp.mFailGet = true;
    disp_layer_config before = disp.mLayer;
    disp2_ui_transparent_on(disp, 1);
    EXPECT_EQ(disp.mCommands, (std::vector<int>{0x48}));
    EXPECT_EQ(memcmp(&disp.mLayer, &before, sizeof before), 0);

    TempDeviceRoot root;  // no device node here: the real call must be harmless
    disp2_ui_transparent(1);
}
