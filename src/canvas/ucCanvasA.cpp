#include "ucCanvasA.h"

#include "PictureBox.h"

ucCanvasA::ucCanvasA(QWidget* Parent) : CanvasView(Parent)
{
    UpdateCursorOfView();
}

void ucCanvasA::CanvasCleanse()
{
    ClearView();
    emit ViewChanged();
}
