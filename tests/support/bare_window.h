#pragma once

#include "toolkit/window.h"

// A window with nothing of its own, titled `title` (a string id): tests
// derive from it to call the base window's drawing, or override only what
// they script.
class BareWindow : public KovaniWindow {
public:
    explicit BareWindow(int title) : KovaniWindow(title, 0) {}
    int eventHandling() override { return 0; }
    int draw() override { return 0; }
    void quit() override {}
    void init() override {}
    void saveState(cJSON*) override {}
    int restoreState(cJSON*) override { return 0; }
    void refresh() override {}
};
