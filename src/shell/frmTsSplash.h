#pragma once

// The splash window shown while the program starts.

#include <QWidget>

class frmTsSplash : public QWidget {
    Q_OBJECT

public:
    explicit frmTsSplash(QWidget* parent = nullptr);

    // Waits `milliseconds` while the window keeps painting and events keep flowing.
    static void WaitYielding(int milliseconds);
    void MakeTopmost();

protected:
    void paintEvent(QPaintEvent* event) override;
};
