#pragma once

#include "printing/ui/PagedPrint.h"

#include <QAbstractScrollArea>
#include <QCache>
#include <QPixmap>
#include <QTimer>
#include <memory>

namespace qb {

/// Pages as they will be printed, one below the other. The first is shown at once; where the others begin is found
/// while the user looks.
class PrintPreview : public QAbstractScrollArea {
    Q_OBJECT

public:
    explicit PrintPreview(QWidget* parent = nullptr);
    ~PrintPreview() override;

    /// Shows a print from its first page on.
    void SetPrint(std::unique_ptr<PagedPrint> print);
    /// Shows a sentence in the place of pages.
    void SetMessage(const QString& text);
    /// Null while a message is shown. Whoever goes on with it for a while shares it: a page that is looked for
    /// meanwhile may turn out to be one that can't be read.
    std::shared_ptr<PagedPrint> Print() const { return m_print; }

    enum class Fit { Page, Width, None };
    /// A page as large as there is room for, or so many times its own size.
    void SetZoom(Fit fit, double factor = 1);

    int Pages() const { return m_print ? m_print->Pages() : 0; }
    bool AllKnown() const { return !m_print || m_print->AllKnown(); }
    /// Of the page that takes most of the view, counted from 0.
    int CurrentPage() const;
    void GoToPage(int page);

Q_SIGNALS:
    /// More pages are known, or another one is looked at.
    void PagesChanged();
    /// Why the pages can't be shown.
    void Failed(const QString& reason);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    double Scale() const;
    QSize PageSize() const;
    QRect PlaceOf(int page) const;
    void UpdateScrollBars();
    void FindMorePages();
    const QPixmap* PictureOf(int page);

    std::shared_ptr<PagedPrint> m_print;
    QString m_message;
    Fit m_fit = Fit::Page;
    double m_factor = 1;
    QTimer m_finding;
    QCache<int, QPixmap> m_pictures;
};

} // namespace qb
