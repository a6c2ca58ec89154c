#pragma once

#include <QFlags>
#include <QString>

namespace qb {

/// What of an item is printed beside its title.
enum class PrintPart {
    About = 1, ///< description, info and facts
    Code = 2,
    Usage = 4,
    Notes = 8,
    Files = 16,
    Links = 32,
    Page = 64,
};
Q_DECLARE_FLAGS(PrintParts, PrintPart)
Q_DECLARE_OPERATORS_FOR_FLAGS(PrintParts)

struct PrintPartRow {
    PrintPart Part;
    const char* Name;    ///< in the settings
    const char* Caption; ///< for users
};
/// All parts in the order in which they are printed.
inline constexpr PrintPartRow PrintPartRows[] = {
    {PrintPart::About, "about", "&Description and info"},
    {PrintPart::Code, "code", "&Code"},
    {PrintPart::Usage, "usage", "&Usage"},
    {PrintPart::Notes, "notes", "&Notes"},
    {PrintPart::Files, "files", "List of stored &files"},
    {PrintPart::Links, "links", "&Links"},
    {PrintPart::Page, "page", "&Web page's text"},
};
inline constexpr PrintParts AllPrintParts = PrintPart::About | PrintPart::Code | PrintPart::Usage | PrintPart::Notes
                                            | PrintPart::Files | PrintPart::Links | PrintPart::Page;

/// How pages look and what stands on them. Lengths are in millimetres.
struct PrintSetup {
    double Width = 210; ///< of the paper, held upright
    double Height = 297;
    bool Landscape = false;
    double Left = 20;
    double Top = 15;
    double Right = 15;
    double Bottom = 15;
    PrintParts Parts = AllPrintParts;
    bool LineNumbers = true;
    bool Colours = true;
    bool NewPages = false;   ///< each item begins on a page of its own
    double CodePoints = 8.5; ///< size of the font of code

    double PageWidth() const { return Landscape ? Height : Width; }
    double PageHeight() const { return Landscape ? Width : Height; }

    /// The margins leave room for text.
    bool HasRoom() const;

    /// On the paper that the user's country has.
    static PrintSetup Default();
    /// The setup that a text stands for. What the text lacks, or what can't be (a margin that leaves no room, a paper
    /// of no size), is as by default.
    static PrintSetup FromText(const QString& text);
    QString ToText() const;

    /// That of the last print.
    static PrintSetup Last();
    /// Keeps it for the next print. An error is reported and stops nothing.
    void Keep() const;

    friend bool operator==(const PrintSetup&, const PrintSetup&) = default;
};

} // namespace qb
