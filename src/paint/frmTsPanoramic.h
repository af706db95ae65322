#pragma once
// The panoramic view: a small tool window above the frame that shows the active document's whole
// picture scaled to fit, with the part its canvas shows marked by a rectangle. A click or a drag
// in it scrolls the document so that the point under the mouse comes to the middle. It follows
// the document: the picture when the document calls RefreshPicture, the marked part when the
// canvas scrolls or zooms, and the document itself when another one becomes active.
#include <QImage>
#include <QPointer>
#include <QRect>
#include <QWidget>

class CanvasView;

class frmTsPanoramic : public QWidget {
    Q_OBJECT
public:
    explicit frmTsPanoramic(QWidget* Parent = nullptr);
    ~frmTsPanoramic() override;

    // Registers the factory by which documents open the view by name. There is one view: asking
    // for it again gives the open one.
    static void Register();

    // The picture area, named as its objectName.
    QWidget* picPanoramic = nullptr;

    // The document shown: a window holding a canvas named "Canvas". Null shows nothing.
    void FollowDocument(QWidget* Document);
    QWidget* Document() const { return CurrentDocument; }
    CanvasView* Canvas() const;

    // Called by the document after every change of its picture.
    Q_INVOKABLE void RefreshPicture();

    // Where the scaled picture stands in picPanoramic, and the marked rectangle around the part
    // the canvas shows (both in picPanoramic's pixels; empty without a picture).
    QRect PictureBox() const { return ThumbBox; }
    QRect MarkBox() const { return Marked; }
    // The picture pixel under a point of picPanoramic, held inside the picture.
    QPoint PictureAt(QPointF Point) const;
    // Scrolls the canvas so that picture pixel Point is in the middle of its view.
    void CentreCanvasOn(QPoint Point);

    // The colour of the mark.
    static constexpr QRgb MarkColor = 0xFFFF0000;

protected:
    bool eventFilter(QObject* Watched, QEvent* Event) override;
    void showEvent(QShowEvent* Event) override;

private:
    void ActiveDocumentChanged();
    void Layout();
    void UpdateMark();
    void BuildThumbnail();
    void PaintPicture();
    void MouseAt(QPointF Point);

    QPointer<QWidget> CurrentDocument;
    QPointer<CanvasView> CurrentCanvas;
    QImage Thumbnail;     // the picture scaled to ThumbBox's size
    bool ThumbStale = true;
    QSize PictureSize;    // of the picture when the layout was made
    QRect ThumbBox;
    QRect Marked;
    bool Dragging = false;
    bool Placed = false;
};
