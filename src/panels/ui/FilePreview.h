#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QStackedWidget;

namespace qb {

/// Shows what is in a file: the beginning of a text, a picture, or for others icon and type.
class FilePreview : public QWidget {
    Q_OBJECT

public:
    explicit FilePreview(QWidget* parent = nullptr);

    /// Shows the file @p path, which has the name @p title; soon, so that going through a list does
    /// not wait for it.
    void ShowFile(const QString& path, const QString& title);
    void Clear();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void Load();
    bool LoadPicture();
    bool LoadText();
    void ShowScaled();

    QString m_path;
    QString m_title;
    QTimer m_soon;
    bool m_isPending = false; ///< a file waits until the preview is seen
    QImage m_picture;
    QStackedWidget* m_pages;
    QPlainTextEdit* txtPreview;
    QLabel* imgPreview;
    QWidget* m_other;
    QLabel* imgType;
    QLabel* lblType;
};

} // namespace qb
