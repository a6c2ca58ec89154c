#pragma once

#include <QString>
#include <functional>
#include <optional>

namespace qb {

/// What decides whether pages from the web are shown in the program.
struct WebSurroundings {
    bool IsUnwanted = false;           ///< by the user's options
    bool IsBarred = false;             ///< by QUILLBASE_NO_WEB
    bool IsRoot = false;               ///< whom the browser's sandbox does not serve
    bool IsSandboxSwitchedOff = false; ///< by a variable of the browser's own
};

/// Why pages from the web are not shown; empty when they are. They run sandboxed or not at all.
QString WhyWebIsKeptOut(const WebSurroundings& surroundings);

/// The same for this process. Pages of the library are shown in any case: they run no scripts.
class WebAccess {
public:
    static QString WhyKeptOut();
    /// What the options say.
    static void SetUnwanted(bool unwanted);

    /// What is looked at in place of the process itself; gives back what was before.
    using Source = std::function<WebSurroundings()>;
    static Source SetSource(Source source);
};

/// What a page may have opened outside of the browser, a program or a download: one thing for each gesture of the
/// user. A page that opens things by itself opens nothing.
class GestureRule {
public:
    /// The user has clicked, pressed a key, or entered an address.
    void Gesture();
    /// Whether something may be opened now; the next one wants another gesture.
    bool Take();

private:
    std::optional<qint64> m_at; ///< seconds
};

} // namespace qb
