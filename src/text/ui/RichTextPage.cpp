#include "text/ui/RichTextPage.h"

#include <QGuiApplication>
#include <QImage>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QUrl>
#include <algorithm>
#include <unordered_map>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// An edit of the text document that is undone as one.
class OneStep {
public:
    explicit OneStep(QTextCursor& cursor) : m_cursor(cursor) { m_cursor.beginEditBlock(); }
    ~OneStep() { m_cursor.endEditBlock(); }
    Q_DISABLE_COPY_MOVE(OneStep)

private:
    QTextCursor& m_cursor;
};

/// Calls @p show with begin, end and number of each run within a range.
template <class Show>
void ForEachRun(const RunMap& runs, qsizetype begin, qsizetype end, Show&& show)
{
    for (auto run = runs.RunAt(begin); run != runs.End() && run->first < end; ++run) {
        const auto next = std::next(run);
        const qsizetype runEnd = next == runs.End() ? end : std::min(end, next->first);
        show(std::max(begin, run->first), runEnd, run->second);
    }
}

/// Of a character that another one stands in for: its code.
constexpr int OriginalProperty = QTextFormat::UserProperty + 2;

/// What can stand in a text document for a character that can't.
QChar StandInFor(QChar character)
{
    switch (character.unicode()) {
    case QChar::ParagraphSeparator:
        return QChar::LineSeparator;
    case 0xfdd0: // begin and end of a frame
    case 0xfdd1:
        return QChar::ReplacementCharacter;
    case 0:
        return QChar(0x2400); // the picture of NUL
    default:
        return character;
    }
}

void Select(QTextCursor& cursor, int begin, int end)
{
    cursor.setPosition(begin);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
}

} // namespace

RichTextPage::RichTextPage(RichText& text, QTextDocument& document)
    : m_text(text), m_document(document), m_look(text.Document(), QPalette(), 96)
{
}

// Positions

int RichTextPage::ToDocument(qsizetype position) const
{
    // The block that holds the position: its begin in the text is its own and one for each block before.
    int low = 0;
    int high = m_document.blockCount() - 1;
    while (low < high) {
        const int middle = (low + high + 1) / 2;
        if (m_document.findBlockByNumber(middle).position() + middle <= position)
            low = middle;
        else
            high = middle - 1;
    }
    const QTextBlock block = m_document.findBlockByNumber(low);
    const int within = int(position) - low - block.position();
    return block.position() + std::min(within, block.length() - 1);
}

qsizetype RichTextPage::FromDocument(int position) const
{
    return position + m_document.findBlock(position).blockNumber();
}

// Showing

/// The text as it can stand in a text document: the characters that end blocks there would part
/// what belongs together.
QString RichTextPage::Shown(qsizetype begin, qsizetype end) const
{
    QString shown = m_text.Document().Text().mid(begin, end - begin);
    shown.remove(u'\r'); // the half of a line end that the other half stands for, whatever look it has
    for (QChar& character : shown)
        character = StandInFor(character);
    return shown;
}

/// Writes beside each character that another one stands in for which one it is, so that an undo
/// brings back what was there.
void RichTextPage::MarkStandIns(qsizetype begin, qsizetype end)
{
    const RichTextDocument& text = m_text.Document();
    for (qsizetype at = begin; at < end; ++at) {
        const QChar character = text.Text()[at];
        if (StandInFor(character) == character)
            continue;
        QTextCharFormat look = m_look.CharLook(text.Runs().ValueAt(at));
        look.setProperty(OriginalProperty, int(character.unicode()));
        QTextCursor cursor(&m_document);
        Select(cursor, ToDocument(at), ToDocument(at + 1));
        cursor.setCharFormat(look);
    }
}

void RichTextPage::Load(const QPalette& palette, int dotsPerInch)
{
    const RichTextDocument& text = m_text.Document();
    m_look = RichTextLook(text, palette, dotsPerInch);
    QFont font(text.Font(text.DefaultFormat().Font).Name);
    font.setPointSizeF(text.DefaultFormat().HalfPoints / 2.0);
    m_document.setUndoRedoEnabled(false);
    m_document.clear();
    m_document.setDefaultFont(font);
    AddPictures(0, text.Length());
    QTextCursor cursor(&m_document);
    {
        const OneStep step(cursor);
        cursor.setBlockFormat(m_look.BlockLook(text.ParagraphNumberAt(0)));
        InsertAll(cursor);
        MarkStandIns(0, text.Length());
        ShowParagraphs(0, text.Length());
    }
    m_document.setUndoRedoEnabled(true);
    m_document.setModified(false);
}

/// Makes the pictures of a range known to the text document.
void RichTextPage::AddPictures(qsizetype begin, qsizetype end)
{
    const RichTextDocument& text = m_text.Document();
    ForEachRun(text.Runs(), begin, end, [&](qsizetype, qsizetype, quint32 number) {
        const quint32 picture = text.Format(number).Picture;
        if (picture == 0)
            return;
        const QUrl name(RichTextLook::PictureName(picture));
        if (!m_document.resource(QTextDocument::ImageResource, name).isValid())
            m_document.addResource(QTextDocument::ImageResource, name, QImage::fromData(text.Picture(picture).Bytes));
    });
}

/// The whole text in the look that most of it has, then the other looks: the cheapest way into a
/// text document.
void RichTextPage::InsertAll(QTextCursor& cursor)
{
    const RichTextDocument& text = m_text.Document();
    std::unordered_map<quint32, qsizetype> counts;
    ForEachRun(text.Runs(), 0, text.Length(), [&](qsizetype, qsizetype, quint32 number) { ++counts[number]; });
    const auto most = std::max_element(counts.begin(), counts.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    if (most == counts.end())
        return;
    cursor.insertText(Shown(0, text.Length()), m_look.CharLook(most->first));
    int lineEnds = 0; // before the run
    qsizetype counted = 0;
    const auto toDocument = [&](qsizetype position) {
        lineEnds += int(std::count(text.Text().begin() + counted, text.Text().begin() + position, u'\n'));
        counted = position;
        const bool within = position > 0 && position < text.Length() && text.Text()[position - 1] == u'\r';
        return int(position) - lineEnds - (within ? 1 : 0);
    };
    ForEachRun(text.Runs(), 0, text.Length(), [&](qsizetype from, qsizetype to, quint32 number) {
        if (number == most->first)
            return;
        const int begin = toDocument(from);
        Select(cursor, begin, toDocument(to));
        cursor.setCharFormat(m_look.CharLook(number));
    });
}

void RichTextPage::InsertRuns(QTextCursor& cursor, qsizetype begin, qsizetype end)
{
    ForEachRun(m_text.Document().Runs(), begin, end, [&](qsizetype from, qsizetype to, quint32 number) {
        cursor.insertText(Shown(from, to), m_look.CharLook(number));
    });
}

void RichTextPage::ShowReplaced(qsizetype position, qsizetype oldLength, qsizetype newLength, bool joinsSteps)
{
    QTextCursor cursor(&m_document);
    Select(cursor, ToDocument(position), ToDocument(position + oldLength));
    AddPictures(position, position + newLength);
    if (joinsSteps && oldLength == 0 && newLength == 1
        && StandInFor(m_text.Document().Text()[position]) == m_text.Document().Text()[position])
        return cursor.insertText(Shown(position, position + 1),
                                 m_look.CharLook(m_text.Document().Runs().ValueAt(position)));
    if (joinsSteps && newLength == 0 && oldLength == 1) {
        // A single step of undo can join the one before; a character
        // that others are combined with can't go alone that way.
        QTextCursor cluster(cursor);
        cluster.setPosition(cursor.selectionStart());
        cluster.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
        if (cluster.selectionEnd() == cursor.selectionEnd()) {
            cursor.setPosition(cursor.selectionStart());
            return cursor.deleteChar();
        }
    }
    const OneStep step(cursor);
    cursor.removeSelectedText();
    if (newLength > 0)
        InsertRuns(cursor, position, position + newLength);
    MarkStandIns(position, position + newLength);
    ShowParagraphs(position, position + newLength);
}

void RichTextPage::ShowFormats(qsizetype begin, qsizetype end)
{
    QTextCursor cursor(&m_document);
    const OneStep step(cursor);
    ForEachRun(m_text.Document().Runs(), begin, end, [&](qsizetype from, qsizetype to, quint32 number) {
        Select(cursor, ToDocument(from), ToDocument(to));
        cursor.setCharFormat(m_look.CharLook(number));
    });
    MarkStandIns(begin, end);
}

void RichTextPage::ShowParagraphs(qsizetype begin, qsizetype end)
{
    QTextCursor cursor(&m_document);
    const OneStep step(cursor);
    QTextBlock block = m_document.findBlock(ToDocument(begin));
    // Blocks and runs walk along together.
    const RunMap& runs = m_text.Document().ParagraphRuns();
    auto run = runs.RunAt(FromDocument(block.position()));
    for (; block.isValid(); block = block.next()) {
        const qsizetype position = block.position() + block.blockNumber();
        if (position > end)
            break;
        while (std::next(run) != runs.End() && std::next(run)->first <= position)
            ++run;
        if (RichTextLook::NumberOf(block.blockFormat()) == run->second && block.blockFormat().propertyCount() > 0)
            continue;
        cursor.setPosition(block.position());
        cursor.setBlockFormat(m_look.BlockLook(run->second));
    }
}

void RichTextPage::ShowRepainted(const RichTextDocument& old)
{
    const RichTextDocument& text = m_text.Document();
    QTextCursor cursor(&m_document);
    const OneStep step(cursor);
    QTextBlock block = m_document.begin();
    const auto toDocument = [&](qsizetype position) { // positions only grow
        while (block.next().isValid() && block.next().position() + block.next().blockNumber() <= position)
            block = block.next();
        return block.position() + std::min(int(position) - block.blockNumber() - block.position(), block.length() - 1);
    };
    // The old runs are walked along with the new ones.
    auto oldRun = old.Runs().RunAt(0);
    ForEachRun(text.Runs(), 0, text.Length(), [&](qsizetype begin, qsizetype end, quint32 number) {
        for (qsizetype from = begin; from < end;) {
            auto next = std::next(oldRun);
            while (next != old.Runs().End() && next->first <= from)
                next = std::next(oldRun = next);
            const qsizetype to = next == old.Runs().End() ? end : std::min(end, next->first);
            if (old.Format(oldRun->second) != text.Format(number)) {
                const int documentBegin = toDocument(from); // in this order
                Select(cursor, documentBegin, toDocument(to));
                cursor.setCharFormat(m_look.CharLook(number));
            }
            from = to;
        }
    });
    block = m_document.begin();
    const QString& now = text.Text();
    for (qsizetype begin = 0; begin < now.size(); ++begin) {
        if (now[begin] == old.Text()[begin])
            continue;
        qsizetype end = begin + 1;
        while (end < now.size() && now[end] != old.Text()[end])
            ++end;
        const int documentBegin = toDocument(begin);
        Select(cursor, documentBegin, toDocument(end));
        InsertRuns(cursor, begin, end);
        begin = end;
    }
    MarkStandIns(0, now.size());
}

// Taking back

void RichTextPage::TakeBack(int position, int added)
{
    RichTextDocument& text = m_text.Document();
    const int length = m_document.characterCount() - 1; // without the end that every document has
    const int end = std::min(position + added, length);
    const qsizetype begin = FromDocument(position);
    const qsizetype behind = FromDocument(length) - FromDocument(end); // as long as it was
    QString now;
    struct Run {
        qsizetype Begin;
        quint32 Number;
    };
    std::vector<Run> runs;
    std::vector<Run> paragraphs;
    for (QTextBlock block = m_document.findBlock(position); block.isValid() && block.position() <= end;
         block = block.next()) {
        if (block.position() > position) {
            runs.push_back(
                {begin + now.size(), RichTextLook::NumberOf(block.charFormat())}); // of the line end before it
            now += "\r\n"_L1;
        }
        paragraphs.push_back({begin + now.size(), RichTextLook::NumberOf(block.blockFormat())});
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            const int from = std::max(position, fragment.position());
            const int to = std::min(end, fragment.position() + fragment.length());
            if (from >= to)
                continue;
            runs.push_back({begin + now.size(), RichTextLook::NumberOf(fragment.charFormat())});
            const QTextCharFormat look = fragment.charFormat();
            now += look.hasProperty(OriginalProperty) ? QString(to - from, QChar(look.intProperty(OriginalProperty)))
                                                      : fragment.text().mid(from - fragment.position(), to - from);
        }
    }
    text.Replace(begin, text.Length() - behind - begin, now, text.DefaultFormat());
    if (m_text.SelStart() + m_text.SelLength() > text.Length())
        m_text.SetSelStart(m_text.SelStart()); // within what there is
    for (size_t i = 0; i < runs.size(); ++i)
        text.SetFormat(runs[i].Begin, i + 1 < runs.size() ? runs[i + 1].Begin : begin + now.size(), runs[i].Number);
    for (const Run& paragraph : paragraphs)
        text.SetParagraphs(paragraph.Begin, paragraph.Begin, paragraph.Number);
}

const ParagraphFormat& RichTextPage::ParagraphOf(const QTextBlock& block) const
{
    return m_text.Document().Paragraph(RichTextLook::NumberOf(block.blockFormat()));
}

} // namespace qb
