#include "text/CTextFormat.h"

#include "platform/richtext/RichText.h"
#include "platform/richtext/RtfPlainText.h"
#include "store/LibraryLanguage.h"
#include "store/ShippedLanguages.h"
#include "support/ErrorRoutine.h"

#include <cmath>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"CTextFormat"_s;
constexpr int IndentStep = 200;   // twips
constexpr int BulletIndent = 300; // twips

/// Stores what the box has if that differs from what is known; true when it is to be told.
template <class Known>
bool HasChanged(Known& known, const std::optional<Known>& inBox)
{
    if (inBox && *inBox == known)
        return false;
    known = inBox.value_or(Known());
    return true;
}

template <class To, class From>
std::optional<To> As(const std::optional<From>& value)
{
    return value ? std::optional<To>(To(*value)) : std::nullopt;
}

/// A scan by the rules of a language; null when it has none.
std::shared_ptr<RuleScan> ScanOf(const LanguageDefinition& language)
{
    if (language.Rules.isEmpty())
        return nullptr;
    auto rules = std::make_shared<LanguageRules>(language.Rules, language.ColouredWords, language.PlainWords);
    return rules->Paints() ? std::make_shared<RuleScan>(std::move(rules)) : nullptr;
}

/// A copy of a text in which words keep their spelling: what is to take their place is passed by.
class SpellingKept : public RichText {
public:
    explicit SpellingKept(const RichText& text) : RichText(text) {}
    bool SetSelText(const QString& /*text*/) override
    {
        SetSelStart(SelStart() + SelLength()); // where the insertion point stands behind a text that was put in
        return true;
    }
};

} // namespace

/// The box; an error when none is set.
IRichTextBox& CTextFormat::Box() const
{
    if (!m_box)
        throw RuntimeError(ErrorNumber::ObjectNotSet, u"There is no text to be formatted."_s, ModuleName);
    return *m_box;
}

void CTextFormat::SetFont(const QString& name)
{
    Guarded(ModuleName, u"<<Let>> Font"_s, [&] {
        m_font = name;
        Box().SetSelFontName(name);
    });
}

void CTextFormat::SetSize(int points)
{
    Guarded(ModuleName, u"<<Let>> Size"_s, [&] {
        m_size = points;
        Box().SetSelFontSize(points);
    });
}

/// Stores a state, sets it in the box and tells it.
void CTextFormat::LetState(const QString& property, bool& known, bool on, void (IRichTextBox::*set)(bool),
                           void (CTextFormat::*tell)(bool))
{
    Guarded(ModuleName, u"<<Let>> "_s + property, [&] {
        known = on;
        (Box().*set)(on);
        Q_EMIT(this->*tell)(on);
    });
}

void CTextFormat::SetBold(bool on)
{
    LetState(u"Bold"_s, m_bold, on, &IRichTextBox::SetSelBold, &CTextFormat::eBoldStateChanged);
}

void CTextFormat::SetItalic(bool on)
{
    LetState(u"Italic"_s, m_italic, on, &IRichTextBox::SetSelItalic, &CTextFormat::eItalicStateChanged);
}

void CTextFormat::SetUnderline(bool on)
{
    LetState(u"Underline"_s, m_underline, on, &IRichTextBox::SetSelUnderline, &CTextFormat::eUnderlineStateChanged);
}

void CTextFormat::SetBullets(bool on)
{
    Guarded(ModuleName, u"<<Let>> Bullets"_s, [&] {
        m_bullets = on;
        Box().SetSelBullet(on);
        Box().SetBulletIndent(on ? BulletIndent : 0);
        Q_EMIT BulletStateChanged(on);
    });
}

void CTextFormat::SetAlignment(int alignment)
{
    Guarded(ModuleName, u"<<Let>> Alignment"_s, [&] {
        m_alignment = alignment;
        Box().SetSelAlignment(TextAlignment(alignment));
        Q_EMIT AllignmentStateChanged(alignment);
    });
}

void CTextFormat::SetColor(quint32 color)
{
    Guarded(ModuleName, u"<<Let>> Color"_s, [&] {
        m_color = color;
        Box().SetSelColor(color);
    });
}

void CTextFormat::IncreaseIndent()
{
    IndentBy(IndentStep);
}

void CTextFormat::DecreaseIndent()
{
    IndentBy(-IndentStep);
}

void CTextFormat::IndentBy(int twips)
{
    try {
        Box().SetSelIndent(Box().SelIndent().value_or(0) + twips);
    } catch (const std::exception&) {
        // An indent that can't be changed stays, without a word.
    }
}

void CTextFormat::Format()
{
    Guarded(ModuleName, u"Format"_s, [this] {
        Box().SetSelFontName(m_font);
        Box().SetSelFontSize(m_size);
        Box().SetSelBold(m_bold);
        Box().SetSelItalic(m_italic);
        Box().SetSelUnderline(m_underline);
        Box().SetSelColor(m_color);
    });
}

void CTextFormat::ReadValues()
{
    Guarded(ModuleName, u"ReadValues"_s, [this] {
        if (HasChanged(m_font, Box().SelFontName()))
            Q_EMIT eFontChanged(m_font);
        if (HasChanged(m_size, As<int>(Box().SelFontSize())))
            Q_EMIT eFontSizeChanged(m_size);
        if (HasChanged(m_bold, Box().SelBold()))
            Q_EMIT eBoldStateChanged(m_bold);
        if (HasChanged(m_italic, Box().SelItalic()))
            Q_EMIT eItalicStateChanged(m_italic);
        if (HasChanged(m_underline, Box().SelUnderline()))
            Q_EMIT eUnderlineStateChanged(m_underline);
        if (HasChanged(m_bullets, Box().SelBullet()))
            Q_EMIT BulletStateChanged(m_bullets);
        if (HasChanged(m_alignment, As<int>(Box().SelAlignment())))
            Q_EMIT AllignmentStateChanged(m_alignment);
    });
}

// Colouring

void CTextFormat::ColorizeInit(Database& database)
{
    Guarded(ModuleName, u"ColorizeInit"_s, [&] {
        Recordset properties = database.OpenRecordset(u"Properties"_s);
        properties.MoveFirst();
        const auto colour = [&](const QString& column) { return quint32(properties[column].ToLong()); };
        m_rules.CommentColour = colour(u"CommentColour"_s);
        m_rules.ColouredKeywordColour = colour(u"ColouredKeywordColour"_s);
        m_rules.KeywordColour = colour(u"KeywordColour"_s);
        m_rules.CommentIdentifier = properties[u"CommentIdentifier"_s].ToText();
        m_rules.CommentIdentifierStart = properties[u"CommentIdentifierStart"_s].ToText();
        m_rules.CommentIdentifierEnd = properties[u"CommentIdentifierEnd"_s].ToText();
        if (std::exchange(m_library, database.Name()) != database.Name())
            m_rules.PlainKeywords = m_rules.ColouredKeywords = KeywordSet(); // they are another library's
        ReadKeywords(database);
        TakeRules(LanguageOfLibrary(database));
    });
}

void CTextFormat::SetLanguage(const LanguageDefinition& language)
{
    const auto set = [](const QStringList& words) { return KeywordSet(u'*' + words.join(u'*') + u'*'); };
    m_rules = {.PlainKeywords = set(language.PlainWords),
               .ColouredKeywords = set(language.ColouredWords),
               .CommentIdentifier = language.Comment,
               .CommentIdentifierStart = language.CommentStart,
               .CommentIdentifierEnd = language.CommentEnd,
               .CommentColour = quint32(language.CommentColour),
               .ColouredKeywordColour = quint32(language.ColouredKeywordColour),
               .KeywordColour = quint32(language.KeywordColour)};
    TakeRules(language);
}

void CTextFormat::TakeRules(const LanguageDefinition& language)
{
    m_correctsSpelling = CorrectsSpelling(language.Rules);
    m_scan = ScanOf(language);
}

void CTextFormat::SetItemLanguage(const QString& name)
{
    m_item.reset();
    const ShippedLanguage* shipped = name.isEmpty() ? nullptr : ShippedLanguageNamed(name);
    if (!shipped)
        return;
    std::shared_ptr<const ItemLanguage>& known = m_itemLanguages[shipped->Name];
    if (!known) {
        Guarded(ModuleName, u"SetItemLanguage"_s, [&] {
            const LanguageDefinition language = ReadLanguageFile(shipped->Path);
            if (std::shared_ptr<RuleScan> scan = ScanOf(language))
                known = std::make_shared<ItemLanguage>(ItemLanguage{language.Comment, std::move(scan)});
        });
    }
    m_item = known;
}

void CTextFormat::ReadKeywords(Database& database)
{
    QString plain = u"*"_s;
    QString coloured = u"*"_s;
    bool any = false;
    Statement rows = database.Query(u"SELECT Keyword, Coloured FROM Keywords"_s);
    while (rows.Step()) {
        any = true;
        (rows.Long(1) != 0 ? coloured : plain) += rows.Text(0) + u'*';
    }
    if (!any)
        return;
    m_rules.PlainKeywords = KeywordSet(plain);
    m_rules.ColouredKeywords = KeywordSet(coloured);
}

namespace {

/// Tells what shows the progress of a colouring, in percent.
class Colouring : public Work {
public:
    explicit Colouring(CTextFormat& format) : m_format(format) {}

    void Advance(qint64 done, qint64 total) override { Q_EMIT m_format.eColorizeProgress(int(done * 100 / total)); }

private:
    CTextFormat& m_format;
};

} // namespace

void CTextFormat::ColorizeCode(IRichTextBox& box)
{
    Guarded(ModuleName, u"ColorizeCode"_s, [&] {
        Colouring work(*this);
        if (const std::shared_ptr<RuleScan> scan = Rules())
            PaintByRules(box, *scan, m_palette.Light, work);
        else if (m_correctsSpelling)
            ColorizeByWords(box);
        else
            ColorizeCopy(box);
    });
}

/// The words of a text keep their spelling: a copy is coloured whose text can't be changed, and its
/// looks are put into the box.
void CTextFormat::ColorizeCopy(IRichTextBox& box)
{
    RichText text;
    text.SetTextRTF(box.TextRTF());
    SpellingKept copy(text);
    ColorizeByWords(copy);
    box.SetTextRTF(copy.TextRTF());
}

void CTextFormat::ColorizeByWords(IRichTextBox& box)
{
    box.SetSelStart(0);
    box.SetSelLength(box.Text().size());
    // Bold and colour stay for now, so that the headers of sections are known.
    box.SetSelFontName(CodeFont.Name);
    box.SetSelFontSize(CodeFont.Points);
    box.SetSelItalic(false);
    box.SetSelUnderline(false);
    if (m_rules.CommentIdentifier.isEmpty())
        m_rules.CommentIdentifier = u"'"_s; // for good
    Colouring work(*this);
    ColorizeScan(box, m_rules, work).Run();
}

bool CTextFormat::PopulateKeywordSet(Database& database, int language)
{
    return Guarded(ModuleName, u"PopulateKeywordSet"_s, [&] {
        const LanguageDefinition words = BuiltInLanguage(LanguageType::VB);
        Transaction transaction(database);
        Recordset properties = database.OpenRecordset(u"Properties"_s);
        properties.MoveFirst();
        properties.Edit();
        properties.Set(u"ColouredKeywordColour"_s, words.ColouredKeywordColour);
        properties.Set(u"KeywordColour"_s, words.KeywordColour);
        properties.Set(u"CommentColour"_s, words.CommentColour);
        properties.Update();
        database.Execute(u"DELETE FROM Keywords"_s);
        const auto add = [&database](const QStringList& list, bool coloured) {
            for (const QString& word : list)
                database.Execute(u"INSERT INTO Keywords (Keyword, Coloured) VALUES (?, ?)"_s, {word, coloured});
        };
        if (language == int(LanguageType::VB)) {
            add(words.ColouredWords, true);
            add(words.PlainWords, false);
        }
        transaction.Commit();
    });
}

} // namespace qb
