#include "text/LineIndent.h"

#include "platform/richtext/IRichTextBox.h"

#include <functional>
#include <vector>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// What is to stand in the place of so many characters at the begin of a line.
struct LineChange {
    qsizetype Removed = 0;
    QString Added = {};
};

/// Where the lines begin that the selection touches; one that it only ends before is not among them.
std::vector<qsizetype> LinesOf(const IRichTextBox& box)
{
    const QString text = box.Text();
    const qsizetype start = box.SelStart();
    const qsizetype end = start + box.SelLength();
    std::vector<qsizetype> begins;
    qsizetype begin = start == 0 ? 0 : text.lastIndexOf(u'\n', start - 1) + 1;
    do {
        begins.push_back(begin);
        begin = text.indexOf(u'\n', begin) + 1;
    } while (begin > 0 && begin < end);
    return begins;
}

bool IsProtected(IRichTextBox& box, qsizetype position)
{
    box.SetSelStart(position);
    box.SetSelLength(1);
    return box.SelProtected() != false;
}

/// Changes the begins of the lines, from the last one up, so that places before a change hold.
void ChangeLines(IRichTextBox& box, const std::function<LineChange(QStringView line)>& change)
{
    const std::vector<qsizetype> begins = LinesOf(box);
    const QString text = box.Text();
    const qsizetype start = box.SelStart();
    const qsizetype length = box.SelLength();
    qsizetype grown = 0;
    qsizetype first = 0; // what the first line has grown by
    for (auto begin = begins.rbegin(); begin != begins.rend(); ++begin) {
        const qsizetype lineEnd = text.indexOf(u'\r', *begin);
        const QStringView line = QStringView(text).sliced(*begin, (lineEnd < 0 ? text.size() : lineEnd) - *begin);
        const LineChange wanted = change(line);
        first = 0;
        if (line.isEmpty() || (wanted.Removed == 0 && wanted.Added.isEmpty()) || IsProtected(box, *begin))
            continue;
        box.SetSelStart(*begin);
        box.SetSelLength(wanted.Removed);
        box.SetSelBold(false); // beside a header
        if (!box.SetSelText(wanted.Added))
            continue;
        first = wanted.Added.size() - wanted.Removed;
        grown += first;
    }
    const qsizetype begin = length > 0 ? begins.front() : std::max(begins.front(), start + first);
    box.SetSelStart(begin);
    box.SetSelLength(length > 0 ? start + length + grown - begin : 0);
}

} // namespace

const QString& LineIndent()
{
    static const QString indent(4, u' ');
    return indent;
}

void IndentLines(IRichTextBox& box)
{
    ChangeLines(box, [](QStringView) { return LineChange{.Removed = 0, .Added = LineIndent()}; });
}

void UnindentLines(IRichTextBox& box)
{
    ChangeLines(box, [](QStringView line) {
        if (line.startsWith(u'\t'))
            return LineChange{.Removed = 1};
        qsizetype blanks = 0;
        while (blanks < line.size() && blanks < LineIndent().size() && line[blanks] == u' ')
            ++blanks;
        return LineChange{.Removed = blanks};
    });
}

} // namespace qb
