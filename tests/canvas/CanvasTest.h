#pragma once
// A shown canvas holding a white picture in paint mode, and mouse input at picture pixels.
#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>
#include <memory>

#include "PictureBox.h"
#include "PixelArray32.h"
#include "ucCanvas.h"

class CanvasTest : public ::testing::Test {
protected:
    std::unique_ptr<ucCanvas> Canvas;

    void Open(int Width, int Height, int ControlWidth = 400, int ControlHeight = 300, uint32_t Fill = 0xFFFFFF)
    {
        Canvas = std::make_unique<ucCanvas>();
        Canvas->resize(ControlWidth, ControlHeight);
        Canvas->show();
        clsDIB Picture;
        ASSERT_TRUE(Picture.CreateBlankDIB(Width, Height, 32, Fill, false));
        ASSERT_TRUE(Canvas->SetPicture(Picture));
        Canvas->setCanvasScreenMode(1);
        Canvas->CanvasResize();
        QApplication::processEvents();
    }

    // The picture box's point over the centre of picture pixel (X, Y).
    QPoint At(int X, int Y) const
    {
        int SX = 0, SY = 0;
        Canvas->GetScrollValues(SX, SY);
        const int M = Canvas->Magnify();
        return QPoint(X * M - SX + M / 2, Y * M - SY + M / 2);
    }

    void Send(QEvent::Type Type, QPoint Pos, Qt::MouseButton Button, Qt::MouseButtons Buttons,
              Qt::KeyboardModifiers Mods = Qt::NoModifier)
    {
        QMouseEvent Event(Type, QPointF(Pos), Canvas->picDisp->mapToGlobal(QPointF(Pos)), Button, Buttons, Mods);
        QApplication::sendEvent(Canvas->picDisp, &Event);
    }
    void Press(int X, int Y, Qt::MouseButton Button = Qt::LeftButton, Qt::KeyboardModifiers Mods = Qt::NoModifier)
    {
        Send(QEvent::MouseButtonPress, At(X, Y), Button, Button, Mods);
    }
    void Drag(int X, int Y, Qt::KeyboardModifiers Mods = Qt::NoModifier)
    {
        Send(QEvent::MouseMove, At(X, Y), Qt::NoButton, Qt::LeftButton, Mods);
    }
    void Hover(int X, int Y, Qt::KeyboardModifiers Mods = Qt::NoModifier)
    {
        Send(QEvent::MouseMove, At(X, Y), Qt::NoButton, Qt::NoButton, Mods);
    }
    void Release(int X, int Y, Qt::MouseButton Button = Qt::LeftButton, Qt::KeyboardModifiers Mods = Qt::NoModifier)
    {
        Send(QEvent::MouseButtonRelease, At(X, Y), Button, Qt::NoButton, Mods);
    }
    void Click(int X, int Y, Qt::MouseButton Button = Qt::LeftButton, Qt::KeyboardModifiers Mods = Qt::NoModifier)
    {
        Press(X, Y, Button, Mods);
        Release(X, Y, Button, Mods);
    }

    uint32_t Pixel(int X, int Y) const { return Canvas->DIB_XY_Color(X, Y) & 0xFFFFFF; }
    // Pixels of colour C inside the picture.
    int Count(uint32_t C) const
    {
        PixelArray32 Pixels(Canvas->DIB);
        int N = 0;
        for (int Y = 0; Y < Pixels.Height(); ++Y)
            for (int X = 0; X < Pixels.Width(); ++X)
                N += PixelArray32::SameColor(Pixels.At(X, Y), PixelArray32::ToWord(C));
        return N;
    }
    // The whole picture as colours, to compare before and after.
    std::vector<uint32_t> Snapshot() const
    {
        std::vector<uint32_t> All;
        for (int Y = 0; Y < Canvas->DIB.DIBHeight(); ++Y)
            for (int X = 0; X < Canvas->DIB.DIBWidth(); ++X)
                All.push_back(Pixel(X, Y));
        return All;
    }
};
