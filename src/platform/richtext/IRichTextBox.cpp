#include "platform/richtext/IRichTextBox.h"

#include <algorithm>

namespace qb {

namespace {

bool IsWordCharacter(QChar character)
{
    return character.isLetterOrNumber() || character == u'_';
}

bool IsWholeWord(const QString& text, qsizetype position, qsizetype length)
{
    const bool before = position > 0 && IsWordCharacter(text[position - 1]);
    const bool behind = position + length < text.size() && IsWordCharacter(text[position + length]);
    return !before && !behind;
}

} // namespace

void IRichTextBox::UpTo(QStringView set, Direction direction, Members members)
{
    const QString& text = TextView();
    const auto stops = [&](QChar character) { return set.contains(character) == (members == Members::Of); };
    if (direction == Direction::Forward) {
        const auto from = text.begin() + SelStart() + SelLength();
        SetSelStart(std::find_if(from, text.end(), stops) - text.begin());
    } else {
        qsizetype at = SelStart();
        while (at > 0 && !stops(text[at - 1]))
            --at;
        SetSelStart(at);
    }
}

void IRichTextBox::Span(QStringView set, Direction direction, Members members)
{
    const QString& text = TextView();
    const auto spans = [&](QChar character) { return set.contains(character) == (members == Members::Of); };
    const qsizetype start = SelStart();
    if (direction == Direction::Forward) {
        const auto end = std::find_if_not(text.begin() + start, text.end(), spans);
        SetSelStart(start);
        SetSelLength(end - text.begin() - start);
    } else {
        const qsizetype end = start + SelLength();
        qsizetype at = start;
        while (at > 0 && spans(text[at - 1]))
            --at;
        SetSelStart(at);
        SetSelLength(end - at);
    }
}

qsizetype IRichTextBox::Find(const QString& what, qsizetype begin, qsizetype end, bool matchCase, bool wholeWord)
{
    const QString& text = TextView();
    const qsizetype last = (end < 0 ? text.size() : std::min(end, text.size())) - what.size();
    const Qt::CaseSensitivity sensitivity = matchCase ? Qt::CaseSensitive : Qt::CaseInsensitive;
    if (what.isEmpty())
        return -1;
    for (qsizetype at = text.indexOf(what, begin, sensitivity); at >= 0 && at <= last;
         at = text.indexOf(what, at + 1, sensitivity)) {
        if (wholeWord && !IsWholeWord(text, at, what.size()))
            continue;
        SetSelStart(at);
        SetSelLength(what.size());
        return at;
    }
    return -1;
}

QList<qsizetype> IRichTextBox::FindAll(const QString& what, bool matchCase, bool wholeWord) const
{
    QList<qsizetype> places;
    const QString& text = TextView();
    const Qt::CaseSensitivity sensitivity = matchCase ? Qt::CaseSensitive : Qt::CaseInsensitive;
    for (qsizetype at = what.isEmpty() ? -1 : text.indexOf(what, 0, sensitivity); at >= 0;
         at = text.indexOf(what, at + what.size(), sensitivity)) {
        if (!wholeWord || IsWholeWord(text, at, what.size()))
            places << at;
    }
    return places;
}

} // namespace qb
