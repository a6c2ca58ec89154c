#pragma once

#include <QTextBrowser>

namespace qb {

/// Shows a page of a library's folder of web pages. It runs no scripts and reaches nothing but the
/// files of that folder; a click on an address opens it outside.
class LocalPage : public QTextBrowser {
    Q_OBJECT

public:
    explicit LocalPage(QWidget* parent = nullptr);

    /// Shows a page of @p folder, or @p fallback where it can't be read.
    void ShowPage(const QString& folder, const QString& name, const QString& fallback);

Q_SIGNALS:
    /// A link to the web or to a mail address was clicked. One into the same page scrolls there, any other does
    /// nothing.
    void AddressActivated(const QString& address);

protected:
    QVariant loadResource(int type, const QUrl& name) override;

private:
    QString m_folder;
};

} // namespace qb
