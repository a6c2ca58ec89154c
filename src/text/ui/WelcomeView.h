#pragma once

#include <QWidget>

class QLabel;

namespace qb {

class Library;
class LocalPage;

/// What stands in the details panel while no item is shown: the name of the program, facts of the library and
/// its welcome page.
class WelcomeView : public QWidget {
    Q_OBJECT

public:
    explicit WelcomeView(QWidget* parent = nullptr);

    /// Shows the facts and the welcome page of a library; null: none is open.
    void ShowLibrary(Library* library);
    /// Shows a page of the folder of web pages.
    void ShowPage(const QString& page);

Q_SIGNALS:
    /// A link of the page to the web or to a mail address was clicked. The panel tells by this signal, too, what is
    /// to be opened from its text boxes and its browser, which may be any address.
    void AddressActivated(const QString& address);
    /// The folder of web pages lacks a default page; shown is what is there afterwards.
    void DefaultPagesMissing(const QString& folder);

private:
    QString m_htmlFolder; ///< of the library
    QLabel* m_facts;
    LocalPage* webWelcome;
};

} // namespace qb
