#pragma once

#include "kovani_surface.h"
#include "window.h"

// A popup drawn over whatever was on the screen when it opened: init() reads
// the current frame back into mSnapshot, and every frame shows that picture
// under the shared dimming overlay, so the windows beneath are not drawn
// again. Open one initialised on gWinList, or through add2PopupList (the
// loop initialises it after the frame beneath was drawn).
class FloatWindow : public KovaniWindow {
public:
    FloatWindow();
    ~FloatWindow() override;
    FloatWindow(const FloatWindow&) = delete;
    FloatWindow& operator=(const FloatWindow&) = delete;

    // Takes one event and ignores it.
    int eventHandling() override;
    // The snapshot, then gBackgroundFloat; 0.
    int draw() override;
    void quit() override;
    // Captures the screen the first time; later calls keep that picture.
    // Loads the shared mask when no popup has yet.
    void init() override;
    void saveState(cJSON* state) override;
    int restoreState(cJSON* state) override;
    void refresh() override;

protected:
    KovaniSurface* mSnapshot;  // owned; null until init, or when the read-back failed
};

// The current frame read back into a new surface (the rotated canvas when
// the screen draws into one); the caller owns it. Null on failure (logged).
KovaniSurface* captureScreen();
