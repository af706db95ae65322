#pragma once
// The canvas's display-only sibling: a picture shown at a zoom or fitted, scrolled by its bars or
// by the hand, with the same reports of the mouse, and no tools. The icon and animation windows
// use it as their preview.
#include "CanvasView.h"

class ucCanvasA : public CanvasView {
    Q_OBJECT
public:
    explicit ucCanvasA(QWidget* Parent = nullptr);
    void CanvasCleanse();
};
