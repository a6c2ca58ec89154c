#pragma once

namespace qb {

class BrowserView;
class BusyLogo;

/// The browser of the Links tab, and the commands of a panel on it.
class BrowserCommands {
public:
    /// Do nothing before the first page is asked for, or where no browser is installed.
    void GoBack();
    void GoForward();
    void BrowserStop(); ///< the logo stops turning, too
    void Reload();

protected:
    BrowserCommands();
    ~BrowserCommands() = default;

    BrowserView* webLinks;
    BusyLogo* imgLabel;
};

} // namespace qb
