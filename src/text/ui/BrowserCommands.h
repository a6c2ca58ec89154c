#pragma once

namespace qb {

class BrowserView;
class BusyLogo;

/// The browser of the Links tab, and the commands of a panel on it.
class BrowserCommands {
public:
    void GoBack();
    void GoForward();
    void BrowserStop();
    void Reload();

protected:
    BrowserCommands();
    ~BrowserCommands() = default;

    BrowserView* webLinks;
    BusyLogo* imgLabel;
};

} // namespace qb
