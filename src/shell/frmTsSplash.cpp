#include "frmTsSplash.h"

#include "basTsMainPro.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QIcon>
#include <QPainter>
#include <QScreen>
#include <QThread>

frmTsSplash::frmTsSplash(QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint)
{
    setObjectName(QStringLiteral("frmTsSplash"));
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedSize(420, 220);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

void frmTsSplash::WaitYielding(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds) {
        QApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(10);
    }
}

void frmTsSplash::MakeTopmost()
{
    setWindowFlag(Qt::WindowStaysOnTopHint, true);
    show();
    raise();
}

void frmTsSplash::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QPalette pal = palette();
    painter.fillRect(rect(), pal.color(QPalette::Window));
    painter.setPen(pal.color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    const QIcon icon(QStringLiteral(":/tessavo.svg"));
    icon.paint(&painter, QRect(28, 56, 96, 96));
    QFont title = font();
    title.setPointSizeF(title.pointSizeF() * 2.2);
    title.setBold(true);
    painter.setFont(title);
    painter.setPen(pal.color(QPalette::WindowText));
    painter.drawText(QRect(144, 50, width() - 160, 50), Qt::AlignLeft | Qt::AlignVCenter, tr("Tessavo"));
    painter.setFont(font());
    painter.drawText(QRect(144, 100, width() - 160, 60), Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
                     tr("Paint program, icon editor and animated GIF editor"));
    painter.setPen(pal.color(QPalette::PlaceholderText));
    painter.drawText(QRect(144, 160, width() - 160, 30), Qt::AlignLeft | Qt::AlignVCenter,
                     tr("Version %1").arg(QCoreApplication::applicationVersion()));
}
