#include "text/CodeSections.h"

#include <algorithm>
#include <cmath>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr quint8 Global = 1;
constexpr quint8 Module = 2;

constexpr SectionRow Rows[] = {
    {1, "Global Declarations", "GENERAL_DECLARATION", "GLOBALDECLARATION_GOTO", "GLOBALDECLARATION_ADD",
     "Add Global Declaration Header", "Go to Global Declarations", "Copy Global Declarations to Clipboard",
     "mnuEditAddGlobalDeclar", "&Global Declaration Section"},
    {2, "Module Declarations", "MODULE_DECLARATION", "DECLARATION_GOTO", "DECLARATION_ADD",
     "Add Module Level Declaration Header", "Go to Module Level Declarations",
     "Copy Module Level Declarations to Clipboard", "mnuEditAddModulDeclar", "&Module Declaration Section"},
    {4, "Code Module Code", "BAS_MODULE", "BASMODULE_GOTO", "BASMODULE_ADD", "Add Code Module Header",
     "Go to Code Module Code", "Copy Code Module's Code to Clipboard", "mnuEditAddBasModuleCode",
     "&Standard Module Code Section"},
    {8, "Class Module Code", "CLASS_MODULE", "CLASSMODULE_GOTO", "CLASSMODULE_ADD", "Add Class Module Header",
     "Go to Class Module Code", "Copy Class Module Code to Clipboard", "mnuEditAddClassModuleCode",
     "&Class Module Code Section"},
    {16, " Form Module Code", "FORM_MODULE", "FORMMODULE_GOTO", "FORMMODULE_ADD", "Add Form Module Header",
     "Go to Form Module Code", "Copy Form Module Code to Clipboard", "mnuEditAddFormModuleCode",
     "&Form Module Code Section"},
};

const QString Hashes = u"###############"_s;
const QString LineEnd = u"\r\n"_s;
constexpr quint32 HeaderColor = 0x800000;
constexpr qsizetype ShortestHeader = 59; // characters, without its line end
constexpr qsizetype LongestHeader = 62;  // with it

QString TitleOf(quint8 bit)
{
    const SectionRow* row = SectionOf(bit);
    return row ? QString::fromLatin1(row->Title) : QString();
}

/// The section that a line is the header of, or 0.
quint8 SectionIn(QStringView line)
{
    static constexpr quint8 order[] = {4, 16, 8, 1, 2};
    for (const quint8 bit : order) {
        if (line.contains(u"   "_s + TitleOf(bit).trimmed() + u"   "_s))
            return bit;
    }
    return 0;
}

qsizetype LineBegin(const QString& text, qsizetype position)
{
    return position == 0 ? 0 : text.lastIndexOf(u'\n', position - 1) + 1;
}

/// What a particular header is found by; hash marks and comment opener play no part in it.
QString SearchTextOf(quint8 bit)
{
    return u"   "_s + TitleOf(bit) + u"   "_s;
}

} // namespace

std::span<const SectionRow> SectionTable()
{
    return Rows;
}

const SectionRow* SectionOf(quint8 bit)
{
    const auto* row = std::find_if(std::begin(Rows), std::end(Rows),
                                   [bit](const SectionRow& one) { return one.Bit == bit; });
    return row == std::end(Rows) ? nullptr : row;
}

CodeSections::CodeSections(IRichTextBox& box, const QString& commentIdentifier)
    : m_box(box), m_commentIdentifier(commentIdentifier.isEmpty() ? u"'"_s : commentIdentifier)
{
}

QString CodeSections::StartMarker() const
{
    return m_commentIdentifier + Hashes + u"   "_s;
}

QString CodeSections::HeaderLine(quint8 bit) const
{
    constexpr double Width = 29; // of title and blanks
    const QString title = TitleOf(bit);
    const QString blanks(qsizetype(std::nearbyint((Width - double(title.size())) / 2)), u' '); // ties to even
    return m_commentIdentifier + Hashes + blanks + title + blanks + Hashes + LineEnd;
}

// Create

bool CodeSections::Create(quint8 bit, quint32 color, bool choosesPlace)
{
    if (choosesPlace)
        ChoosePlace(bit);
    PartFromTextBefore();
    return WriteHeader(bit, color == 0 ? HeaderColor : color);
}

void CodeSections::TakeOverHeaders(const QString& formerIdentifier)
{
    if (formerIdentifier == m_commentIdentifier || formerIdentifier.isEmpty())
        return;
    const QString former = formerIdentifier + Hashes + u"   "_s;
    const qsizetype start = m_box.SelStart();
    QString text = m_box.Text();
    for (qsizetype at = text.indexOf(former); at >= 0; at = text.indexOf(former, at + 1)) {
        m_box.SetSelStart(at);
        m_box.SetSelLength(formerIdentifier.size());
        if ((at > 0 && text[at - 1] != u'\n') || m_box.SelBold() != true)
            continue;
        const bool isProtected = m_box.SelProtected() == true;
        m_box.SetSelProtected(false);
        m_box.SetSelText(m_commentIdentifier);
        m_box.SetSelStart(at);
        m_box.SetSelLength(m_commentIdentifier.size());
        m_box.SetSelBold(true);
        m_box.SetSelProtected(isProtected);
        text = m_box.Text();
    }
    m_box.SetSelStart(std::min(start, text.size()));
}

quint8 CodeSections::Present() const
{
    quint8 bits = 0;
    const QString text = m_box.Text();
    for (const SectionRow& row : Rows) {
        if (text.contains(HeaderLine(row.Bit)))
            bits = quint8(bits | row.Bit);
    }
    return bits;
}

quint8 CodeSections::BorneOut(quint8 bits) const
{
    quint8 left = Present();
    const QString text = m_box.Text();
    for (const SectionRow& row : Rows) {
        if ((bits & row.Bit) && text.contains(SearchTextOf(row.Bit)))
            left = quint8(left | row.Bit);
    }
    return left;
}

QString CodeSections::ChosenPlace(quint8 bit) const
{
    const bool behindGlobal = bit == Module && m_box.Text().contains(u"    "_s + TitleOf(Global) + u"    "_s);
    if (behindGlobal)
        return u"behind the global declarations"_s;
    return bit == Global || bit == Module ? u"at the top of the text"_s : u"at the end of the text"_s;
}

void CodeSections::ChoosePlace(quint8 bit)
{
    const QString text = m_box.Text();
    m_box.SetSelStart(text.size());
    m_box.SetSelText(LineEnd);
    if (bit == Global) {
        m_box.SetSelStart(0);
    } else if (bit == Module) {
        const qsizetype global = text.indexOf(u"    "_s + TitleOf(Global) + u"    "_s);
        if (global < 0) {
            m_box.SetSelStart(0);
            return;
        }
        const qsizetype next = text.indexOf(StartMarker(), text.indexOf(u'\r', global));
        if (next < 0) {
            m_box.SetSelStart(m_box.Text().size());
            return;
        }
        m_box.SetSelStart(next - LineEnd.size());
        m_box.SetSelLength(LineEnd.size());
        m_box.SetSelProtected(false); // the line end of a header that stands right before it
        m_box.SetSelStart(next - LineEnd.size());
        m_box.SetSelText(LineEnd);
    }
}

/// A header stands at the begin of a line, with an empty line between it and text before it.
void CodeSections::PartFromTextBefore()
{
    m_box.UpTo(u"\r", IRichTextBox::Direction::Backward);
    const qsizetype behindReturn = m_box.SelStart();
    if (behindReturn == 0)
        return;
    const QString text = m_box.Text();
    const qsizetype lineBegin = text.lastIndexOf(u'\n', behindReturn - 1) + 1;
    const bool heldText = !QStringView(text).sliced(lineBegin, behindReturn - 1 - lineBegin).trimmed().isEmpty();
    m_box.SetSelStart(behindReturn + 1);
    m_box.SetSelText(LineEnd);
    if (heldText)
        m_box.SetSelText(LineEnd);
}

bool CodeSections::WriteHeader(quint8 bit, quint32 color)
{
    const QString line = HeaderLine(bit);
    const qsizetype begin = m_box.SelStart();
    m_box.SetSelBold(true);
    m_box.SetSelColor(color);
    if (!m_box.SetSelText(line))
        return false;
    m_box.SetSelStart(begin);
    m_box.SetSelLength(line.size());
    m_box.SetSelProtected(true);
    PlaceCaretBehind(begin, line.size());
    return true;
}

void CodeSections::PlaceCaretBehind(qsizetype header, qsizetype length)
{
    const qsizetype behind = header + length;
    m_box.SetSelStart(behind);
    if (header == 0) { // room for text
        m_box.SetSelProtected(false);
        m_box.SetSelBold(false);
        m_box.SetSelText(LineEnd);
        m_box.SetSelStart(behind);
        return;
    }
    const QString text = m_box.Text();
    const qsizetype end = text.indexOf(u'\r', behind);
    const qsizetype lineEnd = end < 0 ? text.size() : end;
    if (QStringView(text).sliced(behind, lineEnd - behind).trimmed().isEmpty())
        m_box.SetSelStart(lineEnd);
}

// Go, copy, delete

bool CodeSections::GoTo(quint8 bit, bool stayOnHeader)
{
    constexpr int Blanks = 3;
    const qsizetype found = m_box.Text().indexOf(SearchTextOf(bit));
    if (found < 0) {
        HeaderMissing(bit);
        return false;
    }
    m_box.SetSelStart(stayOnHeader ? found : found + Blanks);
    return true;
}

QString CodeSections::TextToCopy(quint8 bit) const
{
    const QString text = m_box.Text();
    if (bit == 0)
        return text;
    const qsizetype begin = LineBegin(text, m_box.SelStart());
    const qsizetype lineEnd = text.indexOf(LineEnd, m_box.SelStart());
    const qsizetype next = lineEnd < 0 ? -1 : text.indexOf(StartMarker(), lineEnd); // behind a header of its own
    const qsizetype end = next < 0 ? text.size() : LineBegin(text, next) - LineEnd.size();
    return end > begin ? text.mid(begin, end - begin) : QString();
}

void CodeSections::Delete()
{
    const QString text = m_box.Text();
    const qsizetype caret = m_box.SelStart();
    const qsizetype line = LineBegin(text, caret);
    const qsizetype base = std::max<qsizetype>(0, line - LineEnd.size()); // with the line end before it
    const qsizetype headerEnd = text.indexOf(LineEnd, line);
    const qsizetype next = headerEnd < 0 ? -1 : text.indexOf(StartMarker(), headerEnd + LineEnd.size());
    const qsizetype end = next < 0 ? text.size() : next - LineEnd.size();
    if (base >= end)
        return;
    m_box.SetSelStart(base);
    m_box.SetSelLength(end - base);
    m_box.SetSelProtected(false);
    m_box.SetSelText({});
}

void CodeSections::DeleteSelectedHeader()
{
    const qsizetype start = m_box.SelStart();
    if (!m_box.SelText().endsWith(LineEnd))
        m_box.SetSelLength(m_box.SelLength() + LineEnd.size());
    m_box.SetSelProtected(false);
    m_box.SetSelText({});
    if (!QStringView(m_box.Text()).first(start).endsWith(LineEnd))
        return;
    m_box.SetSelStart(start
                      - LineEnd.size()); // and the line end before it, of which the caret has come to stand behind
    m_box.SetSelLength(LineEnd.size());
    m_box.SetSelText({});
}

quint8 CodeSections::Current() const
{
    // Of headers that touch, it is the one that is selected that counts, not the one before it.
    const bool isHeaderSelected = m_box.SelLength() >= ShortestHeader && m_box.SelLength() <= LongestHeader
                                  && m_box.SelBold() == true;
    if (isHeaderSelected)
        return SectionIn(m_box.SelText());
    const QString text = m_box.Text();
    const qsizetype marker = text.lastIndexOf(StartMarker(), m_box.SelStart());
    if (marker < 0)
        return 0;
    const qsizetype end = text.indexOf(u'\r', marker);
    return SectionIn(QStringView(text).sliced(marker, (end < 0 ? text.size() : end) - marker));
}

bool CodeSections::IsOnHeader() const
{
    return m_box.SelLength() > 0 && m_box.SelBold() == true && m_box.SelText().contains(StartMarker());
}

/// All of the protected text that the selection is a part of, as far as the ends of its lines.
std::pair<qsizetype, qsizetype> CodeSections::ProtectedRange() const
{
    const qsizetype start = m_box.SelStart();
    const qsizetype end = start + m_box.SelLength();
    const QString text = m_box.Text();
    const qsizetype line = LineBegin(text, start);
    const qsizetype found = text.indexOf(u'\n', end - 1);
    const qsizetype lineEnd = found < 0 ? text.size() : found + 1;
    const auto isProtected = [this](qsizetype position) {
        m_box.SetSelStart(position);
        m_box.SetSelLength(1);
        return m_box.SelProtected() == true;
    };
    std::pair range(start, end);
    while (range.first > line && isProtected(range.first - 1))
        --range.first;
    while (range.second < lineEnd && isProtected(range.second))
        ++range.second;
    return range;
}

CodeSections::Touched CodeSections::WidenToHeader()
{
    if (m_box.SelLength() == 0 || m_box.SelBold() != true)
        return Touched::Nothing;
    if (m_box.SelProtected() == true) {
        const auto [begin, end] = ProtectedRange();
        m_box.SetSelStart(begin);
        m_box.SetSelLength(end - begin);
        return IsOnHeader() ? Touched::Header : Touched::RestOfHeader;
    }
    return IsOnHeader() ? Touched::Header : Touched::Nothing;
}

void CodeSections::DeleteRestOfHeader()
{
    m_box.SetSelProtected(false);
    m_box.SetSelText({});
}

} // namespace qb
