#include "PictureBox.h"

#include <QPainter>
#include <QPaintEvent>
#include <cmath>

PictureBox::PictureBox(QWidget* Parent) : QWidget(Parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::NoFocus);
}

qreal PictureBox::Dpr() const
{
    return devicePixelRatioF();
}

void PictureBox::UpdateDevice(const QRect& DeviceBox)
{
    if (DeviceBox.isEmpty())
        return;
    const qreal R = Dpr();
    const int L = static_cast<int>(std::floor(DeviceBox.left() / R));
    const int T = static_cast<int>(std::floor(DeviceBox.top() / R));
    const int Rt = static_cast<int>(std::ceil((DeviceBox.right() + 1) / R));
    const int B = static_cast<int>(std::ceil((DeviceBox.bottom() + 1) / R));
    update(QRect(L, T, Rt - L, B - T));
}

void PictureBox::paintEvent(QPaintEvent* Event)
{
    QPainter P(this);
    const qreal R = Dpr();
    if (Image.isNull()) {
        P.fillRect(Event->rect(), palette().window());
        return;
    }
    // Work in device pixels so one picture pixel stays one device pixel at any scaling.
    P.save();
    P.scale(1.0 / R, 1.0 / R);
    const QRect Logical = Event->rect();
    const QRect Device(static_cast<int>(std::floor(Logical.left() * R)), static_cast<int>(std::floor(Logical.top() * R)),
                       static_cast<int>(std::ceil(Logical.width() * R)) + 1,
                       static_cast<int>(std::ceil(Logical.height() * R)) + 1);
    P.drawImage(Device.topLeft(), Image, Device);
    const QRect Outside = QRect(QPoint(0, 0), Image.size());
    if (!Outside.contains(Device)) {
        QRegion Grey(Device);
        Grey -= Outside;
        for (const QRect& Box : Grey)
            P.fillRect(Box, palette().window());
    }
    if (PaintOverlay)
        PaintOverlay(P);
    P.restore();
}
