#include "help/ui/HelpBrowser.h"

#include <QBuffer>
#include <QEvent>
#include <QImageReader>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QUrl UrlOf(const QString& topic)
{
    return QUrl(u"help:/"_s + topic);
}

QString TopicAt(const QUrl& url)
{
    const QString page = url.path().mid(1);
    return url.hasFragment() ? page + u'#' + url.fragment() : page;
}

/// A colour between two, @p share of 100 parts of the second.
QColor Between(const QColor& first, const QColor& second, int share)
{
    constexpr int Whole = 100;
    const auto mixed = [&](int a, int b) { return (a * (Whole - share) + b * share) / Whole; };
    return {mixed(first.red(), second.red()), mixed(first.green(), second.green()), mixed(first.blue(), second.blue())};
}

QString StyleSheet(const QPalette& palette)
{
    constexpr int Faint = 7;
    constexpr int Quiet = 20;
    const QColor base = palette.color(QPalette::Base);
    const QColor text = palette.color(QPalette::Text);
    return u"h1 { font-size: xx-large; font-weight: 600; margin-top: 4px; margin-bottom: 14px; }"
           "h2 { font-size: large; font-weight: 600; margin-top: 22px; margin-bottom: 8px; }"
           "p { margin-top: 0px; margin-bottom: 10px; }"
           "li { margin-bottom: 4px; }"
           "table { margin-top: 4px; margin-bottom: 12px; }"
           "th, td { padding: 5px 16px 5px 6px; border-bottom: 1px solid %2; }"
           "th { text-align: left; font-weight: 600; }"
           "code { background-color: %1; }"
           "td.code { background-color: %1; padding: 8px 10px; border-bottom: 0px; }"
           "pre { margin-top: 0px; margin-bottom: 0px; white-space: pre-wrap; }"
           "a { color: %3; }"_s.arg(Between(base, text, Faint).name(), Between(base, text, Quiet).name(),
                                    palette.color(QPalette::Link).name());
}

/// As sharp as the screen is.
QImage PictureOf(const QByteArray& svg, qreal ratio)
{
    QBuffer buffer;
    buffer.setData(svg);
    QImageReader reader(&buffer, "svg");
    reader.setScaledSize((QSizeF(reader.size()) * ratio).toSize());
    QImage picture = reader.read();
    picture.setDevicePixelRatio(ratio);
    return picture;
}

} // namespace

HelpBrowser::HelpBrowser(const Handbook& handbook, QWidget* parent) : QTextBrowser(parent), m_handbook(handbook)
{
    constexpr int Margin = 18;
    setObjectName(u"txtHelp"_s);
    setAccessibleName(u"Page of the handbook"_s);
    document()->setDocumentMargin(Margin);
    SetLook();
    connect(this, &QTextBrowser::sourceChanged, this, [this](const QUrl& url) { Q_EMIT TopicChanged(TopicAt(url)); });
}

void HelpBrowser::SetLook()
{
    document()->setDefaultStyleSheet(StyleSheet(palette()));
}

void HelpBrowser::changeEvent(QEvent* event)
{
    QTextBrowser::changeEvent(event);
    if (event->type() != QEvent::PaletteChange && event->type() != QEvent::FontChange)
        return;
    const int place = verticalScrollBar()->value();
    SetLook();
    if (source().isValid())
        reload();
    verticalScrollBar()->setValue(place);
    Mark(m_words);
}

void HelpBrowser::ShowTopic(const QString& topic)
{
    const QUrl url = UrlOf(m_handbook.Nearest(topic));
    if (url != source())
        setSource(url, QTextDocument::HtmlResource);
    else if (url.hasFragment()) // it is shown, and may have been scrolled away from
        scrollToAnchor(url.fragment());
    else
        verticalScrollBar()->setValue(0);
}

QString HelpBrowser::Topic() const
{
    return TopicAt(source());
}

QVariant HelpBrowser::loadResource(int type, const QUrl& name)
{
    const QUrl url = source().resolved(name);
    if (type == QTextDocument::HtmlResource && url.scheme() == u"help"_s)
        return m_handbook.Html(url.path().mid(1));
    if (type == QTextDocument::ImageResource && url.scheme() == u"help"_s)
        return PictureOf(m_handbook.Picture(url.path().mid(1)), devicePixelRatioF());
    return {}; // nothing else is in a page, and nothing is loaded from elsewhere
}

int HelpBrowser::Mark(const QStringList& words)
{
    m_words = words;
    QList<QTextEdit::ExtraSelection> marks;
    QTextCharFormat look;
    look.setBackground(palette().color(QPalette::Highlight));
    look.setForeground(palette().color(QPalette::HighlightedText));
    for (const QString& word : words) {
        for (QTextCursor place = document()->find(word); !place.isNull(); place = document()->find(word, place))
            marks.push_back({place, look});
    }
    setExtraSelections(marks);
    return int(marks.size());
}

bool HelpBrowser::FindText(const QString& text, bool backward, bool fromHere)
{
    const QTextDocument::FindFlags way = backward ? QTextDocument::FindBackward : QTextDocument::FindFlags();
    QTextCursor from = textCursor();
    if (fromHere) // what is typed grows at its place
        from.setPosition(from.selectionStart());
    QTextCursor found = document()->find(text, from, way);
    if (found.isNull()) {
        from.movePosition(backward ? QTextCursor::End : QTextCursor::Start);
        found = document()->find(text, from, way);
    }
    if (found.isNull())
        from.clearSelection();
    setTextCursor(found.isNull() ? from : found);
    return !found.isNull();
}

} // namespace qb
