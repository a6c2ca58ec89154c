#include "find/FindMatcher.h"

#include "platform/system/RuntimeError.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QByteArray FoldedBytes(const QByteArray& text, Folding folding)
{
    QByteArray folded;
    AppendFolded(text, folding, folded);
    return folded;
}

[[noreturn]] void Refuse(const QString& sentence)
{
    throw RuntimeError(ErrorNumber::InvalidCall, sentence, u"FindMatcher"_s);
}

} // namespace

FindMatcher::FindMatcher(const FindQuery& query) : m_query(query)
{
    const bool countsCase = CountsCase(query);
    const QStringList needles = NeedlesOf(query);
    if (needles.isEmpty())
        Refuse(u"There is nothing to look for: the text is empty."_s);
    if (size_t(needles.size()) > MostNeedles)
        Refuse(u"%1 different words are too many to be looked for at a time; %2 is the most."_s.arg(needles.size())
                   .arg(MostNeedles));
    if (query.Mode == FindMode::Expression) {
        m_expression = std::make_unique<FindExpression>(needles.front(), countsCase, query.WholeWord);
        if (!m_expression->Literal().isEmpty())
            m_literal.emplace(m_expression->Literal(), countsCase ? ByteScan::Exact : ByteScan::FoldsAscii);
        return;
    }
    m_folding = Folding(unsigned(countsCase ? Folding::None : Folding::Case)
                        | unsigned(query.FoldAccents ? Folding::Accents : Folding::None));
    for (const QString& needle : needles)
        m_needles.push_back(MakeNeedle(needle.toUtf8()));
}

FindNeedle FindMatcher::MakeNeedle(const QByteArray& text) const
{
    // A mark alone would fold to nothing: then it is what is looked for.
    FindNeedle needle;
    needle.Text = FoldedBytes(text, m_folding);
    if (needle.Text.isEmpty())
        needle.Text = FoldedBytes(text, m_folding == Folding::All ? Folding::Case : Folding::None);
    const bool isAscii = IsAscii(needle.Text);
    const bool foldsCase = qb::Folds(m_folding, Folding::Case);
    if (isAscii)
        needle.Ascii.emplace(needle.Text, foldsCase ? ByteScan::FoldsAscii : ByteScan::Exact);
    const QByteArray folded = FoldedBytes(text, Folding::All);
    if (!folded.isEmpty())
        needle.Wide.emplace(folded);
    needle.OnTheFly.emplace(needle.Text);
    if (m_folding == Folding::None || (m_folding == Folding::Case && isAscii))
        needle.InWide = FindNeedle::Plain;
    else if (m_folding == Folding::All && !folded.isEmpty())
        needle.InWide = FindNeedle::Folded;
    else
        needle.InWide = needle.Wide ? FindNeedle::Filter : FindNeedle::Each;
    if (m_folding == Folding::None)
        needle.Ascii.emplace(needle.Text);
    qsizetype first = 0;
    needle.BeginsWord = IsWordCharacter(NextCharacter(needle.Text, first));
    needle.EndsWord = IsWordCharacter(CharacterBefore(needle.Text, needle.Text.size()));
    return needle;
}

quint64 FindMatcher::AllBits() const
{
    const size_t count = m_expression ? 1 : m_needles.size();
    return count >= MostNeedles ? ~quint64(0) : (quint64(1) << count) - 1;
}

bool FindMatcher::IsWhole(QByteArrayView text, qsizetype begin, qsizetype end, bool beginsWord, bool endsWord)
{
    if (beginsWord && begin > 0 && IsWordCharacter(CharacterBefore(text, begin)))
        return false;
    qsizetype behind = end;
    return !endsWord || end >= text.size() || !IsWordCharacter(NextCharacter(text, behind));
}

} // namespace qb
