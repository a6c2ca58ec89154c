#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <vector>

namespace qb {

/// A part of a page of the handbook, from one heading to the next.
struct HelpSection {
    QString Anchor; ///< its place in the page; empty for what begins the page
    QString Title;
    int Level = 1; ///< of its heading
    QString Text;  ///< without formats
};

struct HelpPage {
    QString Topic; ///< its name, such as "items"
    QString Title;
    std::vector<HelpSection> Sections;
};

/// A section in which words were found.
struct HelpHit {
    QString Topic; ///< with the anchor: "items#add-items"
    QString Page;  ///< title of the page
    QString Title; ///< of the section; the page's own for its begin
    QString Excerpt;
};

/// The handbook that comes with the program: its contents, its pages, and the search in them. A topic is the name of
/// a page, alone or with a "#" and the anchor of a section.
class Handbook {
public:
    /// The topic of the first page, which lists the others.
    static QString HomeTopic() { return QStringLiteral("index"); }
    static QString DefaultFolder();
    /// Whether the handbook was installed.
    static bool Exists(const QString& folder = DefaultFolder());

    /// Reads the contents. Raises RuntimeError 3024 when there are none, or none that can be read.
    explicit Handbook(const QString& folder = DefaultFolder());

    const QString& Folder() const { return m_folder; }
    /// In the order in which they are read.
    const std::vector<HelpPage>& Pages() const { return m_pages; }
    bool Has(const QString& topic) const;
    /// @p topic if there is one; without its anchor if its page has no such section; else that of the first page.
    QString Nearest(const QString& topic) const;
    /// The page as HTML; empty when it can't be read.
    QString Html(const QString& topic) const;
    /// A picture of a page, as SVG; empty when there is none of the name.
    QByteArray Picture(const QString& name) const;
    QString TitleOf(const QString& topic) const;

    /// The sections that hold all words of a text, in any case and with or without accents. Those come first that have
    /// them in their titles, then those with whole words, then those with words that begin so.
    std::vector<HelpHit> Search(const QString& text) const;

private:
    const HelpPage* PageOf(const QString& topic) const;

    QString m_folder;
    std::vector<HelpPage> m_pages;
};

/// The words of a text as the search takes them.
QStringList HelpWords(const QString& text);

} // namespace qb
