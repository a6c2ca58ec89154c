#pragma once

#include "web/PageComponents.h"
#include "web/PictureSize.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QPushButton;
class QSpinBox;

namespace qb {

/// Asks for a picture, from a file or the clipboard, and the size at which it is shown. The picture is copied below
/// its page's folder when the dialog is accepted.
class frmInsertPicture : public QDialog {
    Q_OBJECT

public:
    frmInsertPicture(QWidget* parent, const PicturePlace& place);

    /// What was chosen, once the dialog is accepted.
    const ChosenPicture& Chosen() const { return m_chosen; }
    /// Takes a picture from a file; says why where it is none.
    void TakeFile(const QString& path);
    /// Takes the picture of the clipboard.
    void TakeClipboard();

    void accept() override;

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void MakeSize();
    void ChooseFile();
    void Take(const QString& name, const QByteArray& bytes);
    void Say(const QString& text);
    void ShowPreview();
    void ShowSize();

    PicturePlace m_place;
    QString m_name;
    QByteArray m_bytes;
    QImage m_image;
    PictureSize m_size;
    ChosenPicture m_chosen;
    QLabel* lblPreview;
    QLabel* lblPicture;
    QSpinBox* txtWidth;
    QSpinBox* txtHeight;
    QCheckBox* chkRatio;
    QPushButton* cmdInsert;
};

} // namespace qb
