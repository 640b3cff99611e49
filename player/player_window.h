#pragma once

#include "toolkit/window.h"

// The player's one full-screen window.
class PlayerWindow : public KovaniWindow {
public:
    // `startDir`: the folder to open, null for the browser's root.
    explicit PlayerWindow(const char* startDir);
    ~PlayerWindow() override;

    int eventHandling() override;
    int draw() override;
    void quit() override {}
    void init() override;
    void saveState(cJSON*) override {}
    int restoreState(cJSON*) override { return 0; }
    void refresh() override {}
};
