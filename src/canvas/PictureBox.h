#pragma once
// The canvas's picture box (`picDisp`): shows its display image, one image pixel to one device
// pixel, and draws the owner's overlay (rubber bands, the marquee, node handles) on top, so an
// overlay is erased by repainting the box. Mouse and key input goes to the owner through an event
// filter.
#include <QImage>
#include <QWidget>
#include <functional>

class PictureBox : public QWidget {
    Q_OBJECT
public:
    explicit PictureBox(QWidget* Parent = nullptr);

    // The display image in device pixels (its own device pixel ratio stays 1).
    QImage Image;
    // Drawn over the image at every repaint, in device pixels.
    std::function<void(QPainter& Painter)> PaintOverlay;

    // Repaints a box given in device pixels.
    void UpdateDevice(const QRect& DeviceBox);
    qreal Dpr() const;

protected:
    void paintEvent(QPaintEvent* Event) override;
};
