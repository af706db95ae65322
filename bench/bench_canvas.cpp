// The canvas under load: a paint stroke on a large picture, and the one painter at zoom 1, 4 and
// fitted, each beside what a plain QPainter program would do for the same screen.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>

#include "PictureBox.h"
#include "ucCanvas.h"

namespace {

constexpr int PictureW = 6000, PictureH = 4000, ViewW = 1600, ViewH = 1000;

// A canvas of the view's size over a 6000 x 4000 picture of soft gradients.
ucCanvas& Canvas()
{
    static ucCanvas* C = [] {
        auto* Made = new ucCanvas;
        Made->resize(ViewW, ViewH);
        Made->show();
        clsDIB Picture;
        Picture.CreateBlankDIB(PictureW, PictureH, 32, 0xFFFFFF, true);
        for (int Y = 0; Y < PictureH; ++Y) {
            auto* Row = reinterpret_cast<uint32_t*>(Picture.DIBhDC()->Row(Y));
            for (int X = 0; X < PictureW; ++X)
                Row[X] = static_cast<uint32_t>((X * 255 / PictureW) << 16 | (Y * 255 / PictureH) << 8 | 128);
        }
        Made->SetPicture(Picture);
        Made->setCanvasScreenMode(1);
        Made->CanvasResize();
        QApplication::processEvents();
        return Made;
    }();
    return *C;
}

void SendMouse(ucCanvas& C, QEvent::Type Type, QPoint Pos, Qt::MouseButton Button, Qt::MouseButtons Buttons)
{
    QMouseEvent Event(Type, QPointF(Pos), C.picDisp->mapToGlobal(QPointF(Pos)), Button, Buttons, Qt::NoModifier);
    QApplication::sendEvent(C.picDisp, &Event);
}

// 1,000 mouse moves with a 20-pixel round brush, each move painted to the screen at once.
void PaintStroke(benchmark::State& State)
{
    ucCanvas& C = Canvas();
    C.setMagnify(1);
    C.setFitInView(false);
    C.CanvasResize();
    C.setCanvasOp(ucCanvas::OpPaint);
    C.BrushStyle = 1;
    C.BrushSize = 20;
    C.ColorToUse = 0x2040C0;
    double Area = 0;
    long long Moves = 0;
    for (auto _ : State) {
        SendMouse(C, QEvent::MouseButtonPress, QPoint(100, 100), Qt::LeftButton, Qt::LeftButton);
        for (int I = 0; I < 1000; ++I) {
            const QPoint P(100 + I * 13 / 10 % 1400, 100 + (I * 7) % 800);
            SendMouse(C, QEvent::MouseMove, P, Qt::NoButton, Qt::LeftButton);
            QApplication::processEvents();
            Area += C.LastRepaintBox().width() * C.LastRepaintBox().height();
            ++Moves;
        }
        SendMouse(C, QEvent::MouseButtonRelease, QPoint(100, 100), Qt::LeftButton, Qt::NoButton);
    }
    State.counters["moves_per_s"] = benchmark::Counter(static_cast<double>(Moves), benchmark::Counter::kIsRate);
    State.counters["repaint_px_per_move"] = Area / static_cast<double>(Moves);
}

// The peer: the same dabs as QPainter ellipses on a QImage, each move's box drawn to a screen image.
void PaintStrokePeerQPainter(benchmark::State& State)
{
    static QImage Picture(PictureW, PictureH, QImage::Format_RGB32);
    static QImage Screen(ViewW, ViewH, QImage::Format_RGB32);
    for (auto _ : State) {
        QPainter P(&Picture);
        QPainter S(&Screen);
        P.setPen(Qt::NoPen);
        P.setBrush(QColor(0xC0, 0x40, 0x20));
        for (int I = 0; I < 1000; ++I) {
            const QPoint Pt(100 + I * 13 / 10 % 1400, 100 + (I * 7) % 800);
            const QRect Box(Pt - QPoint(10, 10), QSize(21, 21));
            P.drawEllipse(Box);
            S.drawImage(Box.topLeft(), Picture, Box);
        }
    }
}

void ShowPicture(benchmark::State& State, int Magnify, bool Fit)
{
    ucCanvas& C = Canvas();
    C.setCanvasOp(ucCanvas::OpScroll);
    C.setMagnify(static_cast<int16_t>(Magnify));
    C.setFitInView(Fit);
    C.CanvasResize();
    C.SetScrollValues(1234, 777);
    for (auto _ : State)
        C.CanvasPicPaint();
}

void DisplayPeerQPainter(benchmark::State& State, int Magnify, bool Fit)
{
    Canvas();
    static QImage Picture(PictureW, PictureH, QImage::Format_RGB32);
    static QImage Screen(ViewW, ViewH, QImage::Format_RGB32);
    const QRectF Source = Fit ? QRectF(0, 0, PictureW, PictureH)
                              : QRectF(400, 300, ViewW / static_cast<double>(Magnify), ViewH / static_cast<double>(Magnify));
    const QRectF Target = Fit ? QRectF(0, 0, ViewW, ViewW * 2 / 3) : QRectF(0, 0, ViewW, ViewH);
    for (auto _ : State) {
        QPainter S(&Screen);
        S.drawImage(Target, Picture, Source);
    }
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication App(argc, argv);
    auto Reg = [](const char* Name, auto Function) {
        benchmark::RegisterBenchmark(Name, Function)->Unit(benchmark::kMillisecond)->MinTime(1.0);
    };
    Reg("PaintStroke_1000_moves_brush20", PaintStroke);
    Reg("PaintStroke_peer_QPainter", PaintStrokePeerQPainter);
    Reg("UpdateDisplay_zoom1", [](benchmark::State& S) { ShowPicture(S, 1, false); });
    Reg("UpdateDisplay_zoom4", [](benchmark::State& S) { ShowPicture(S, 4, false); });
    Reg("UpdateDisplay_fitted", [](benchmark::State& S) { ShowPicture(S, 1, true); });
    Reg("UpdateDisplay_peer_QPainter_zoom1", [](benchmark::State& S) { DisplayPeerQPainter(S, 1, false); });
    Reg("UpdateDisplay_peer_QPainter_zoom4", [](benchmark::State& S) { DisplayPeerQPainter(S, 4, false); });
    Reg("UpdateDisplay_peer_QPainter_fitted", [](benchmark::State& S) { DisplayPeerQPainter(S, 1, true); });
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
