#include "store/KeywordDefiner.h"

#include "platform/system/Prompts.h"
#include "store/Keywords.h"
#include "store/LibraryLanguage.h"
#include "support/ErrorRoutine.h"
#include "support/Version.h"

#include <QFileInfo>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"KeywordDefiner"_s;
const QString Keyword = u"Keyword"_s;

Recordset OpenKeywords(Database& database)
{
    return database.OpenRecordset(u"Keywords"_s, {}, {}, Keyword);
}

/// A stored colour may have the bit that marks colours of the system, which are no colours here.
qint32 ShownColour(const Value& value)
{
    constexpr qint64 ColourBits = 0xffffff;
    return qint32(value.ToLong() & ColourBits);
}

} // namespace

KeywordDefiner::KeywordDefiner(Database& database) : m_database(database), m_keywords(OpenKeywords(database))
{
    const Recordset properties = database.OpenRecordset(u"Properties"_s);
    if (!properties.IsEmpty()) {
        m_values.Language = properties[u"LanguageUsed"_s].ToText();
        m_values.Comment = properties[u"CommentIdentifier"_s].ToText();
        m_values.CommentStart = properties[u"CommentIdentifierStart"_s].ToText();
        m_values.CommentEnd = properties[u"CommentIdentifierEnd"_s].ToText();
        m_values.ColouredKeywordColour = ShownColour(properties[u"ColouredKeywordColour"_s]);
        m_values.KeywordColour = ShownColour(properties[u"KeywordColour"_s]);
        m_values.CommentColour = ShownColour(properties[u"CommentColour"_s]);
        m_values.Rules = RulesOfLibrary(database);
    }
    FillKeywordGrid();
}

KeywordDefiner::~KeywordDefiner()
{
    Rollback();
}

void KeywordDefiner::SetValues(const LanguageDefinition& values)
{
    m_values = values;
    m_changed = true;
}

// The transaction

void KeywordDefiner::OpenTransaction()
{
    if (m_transactionOpen && m_database.TransactionLost()) {
        Rollback();
        FillKeywordGrid();
        throw RuntimeError(ErrorNumber::Engine, // of a row that may be another one by now
                           u"The library could not be written, and all words are as they were before they were "
                           "edited. What you have just done was not done."_s,
                           ModuleName);
    }
    if (m_transactionOpen)
        return;
    m_database.BeginTrans();
    m_transactionOpen = true;
    m_changed = true;
}

void KeywordDefiner::Commit()
{
    if (m_transactionOpen)
        m_database.CommitTrans();
    m_transactionOpen = m_changed = false;
}

void KeywordDefiner::Rollback()
{
    if (!std::exchange(m_transactionOpen, false))
        return;
    Guarded(ModuleName, u"Rollback"_s, [this] { m_database.Rollback(); });
}

// The grid

QString KeywordDefiner::Word(int row) const
{
    return row >= 0 && row < int(m_rows.size()) ? m_rows[size_t(row)].Word : QString();
}

bool KeywordDefiner::Coloured(int row) const
{
    return row >= 0 && row < int(m_rows.size()) && m_rows[size_t(row)].Coloured;
}

void KeywordDefiner::FillKeywordGrid()
{
    m_keywords = OpenKeywords(m_database);
    m_rows.clear();
    m_rows.reserve(size_t(m_keywords.RecordCount()));
    for (; !m_keywords.AtEnd(); m_keywords.MoveNext())
        m_rows.push_back({m_keywords.Bookmark(), m_keywords[Keyword].ToText(), m_keywords[u"Coloured"_s].ToBoolean()});
}

bool KeywordDefiner::FindWord(int row)
{
    return Guarded(ModuleName, u"RowColChange"_s, [&] {
        m_keywords.FindFirst(u"Keyword = ?"_s, {Word(row)});
        if (m_keywords.NoMatch())
            throw RuntimeError(ErrorNumber::NoCurrentRecord,
                               u"Error finding corresponding record in the underlying recordset."_s, ModuleName);
    });
}

bool KeywordDefiner::SetWord(int row, const QString& text)
{
    if (row < 0 || row >= RowCount() || text == Word(row))
        return true;
    if (text.contains(u'*')) // parts the words of a set
        return false;
    const bool isNew = row == int(m_rows.size());
    OpenTransaction();
    if (!isNew && !FindWord(row))
        return false;
    if (text.isEmpty()) {
        m_keywords.Delete();
        m_rows.erase(m_rows.begin() + row);
        return true;
    }
    isNew ? m_keywords.AddNew() : m_keywords.Edit();
    try {
        m_keywords.Set(Keyword, text);
        m_keywords.Update();
    } catch (const RuntimeError& error) {
        m_keywords.CancelUpdate();
        if (error.Number() != ErrorNumber::UniqueKeyRefused)
            throw;
        return false;
    }
    if (isNew)
        m_rows.push_back({m_keywords.LastModified(), text, false});
    else
        m_rows[size_t(row)].Word = text;
    return true;
}

void KeywordDefiner::UpdateColouredTick(int row)
{
    if (row < 0 || row >= int(m_rows.size()))
        return;
    OpenTransaction();
    if (!FindWord(row))
        return;
    Row& word = m_rows[size_t(row)];
    m_keywords.Edit();
    m_keywords.Set(u"Coloured"_s, !word.Coloured);
    m_keywords.Update();
    word.Coloured = !word.Coloured;
}

void KeywordDefiner::DeleteRows(std::vector<int> rows)
{
    std::sort(rows.begin(), rows.end(), std::greater<>());
    for (const int row : rows) {
        if (row < 0 || row >= int(m_rows.size()))
            continue;
        OpenTransaction();
        if (!FindWord(row))
            return;
        m_keywords.Delete();
        m_rows.erase(m_rows.begin() + row);
    }
}

// Lists

void KeywordDefiner::SetKeywords(const QStringList& words, const QString& colouredText)
{
    OpenTransaction();
    qb::SetKeywords(m_keywords, words, colouredText);
}

QStringList KeywordDefiner::GetKeywords(bool coloured) const
{
    QStringList words;
    for (const Row& row : m_rows) {
        if (row.Coloured == coloured)
            words << row.Word;
    }
    return words;
}

void KeywordDefiner::DeleteAllKeywords()
{
    OpenTransaction();
    m_database.Execute(u"DELETE FROM Keywords"_s);
    m_rows.clear();
}

// Files

void KeywordDefiner::ExportLanguageDefinition(const QString& path) const
{
    LanguageDefinition language = m_values;
    language.Version = ProgramVersion();
    language.ColouredWords = GetKeywords(true);
    language.PlainWords = GetKeywords(false);
    WriteLanguageFile(path, language);
}

/// Files of all versions can be read so far; one that can't is to be refused here.
bool KeywordDefiner::IsCompatible(const LanguageDefinition&) const
{
    return true;
}

bool KeywordDefiner::ImportLanguageDefinition(const QString& path)
{
    if (!QFileInfo(path).isFile())
        return false;
    const LanguageDefinition file = ReadLanguageFile(path);
    if (!IsCompatible(file)) {
        Prompts::Current().MsgBox(
            {.Text = u"This version of language definition is not compatible with the current version of Quillbase."_s,
             .Caption = u"Incompatible File"_s,
             .Icon = MsgBoxIcon::Information});
        return false;
    }
    if (const QString reason = WhyNotStorable(file); !reason.isEmpty())
        throw RuntimeError(
            ErrorNumber::InvalidCall,
            u"The language definition file '%1' can't be imported; nothing was changed. %2"_s.arg(path, reason),
            ModuleName);
    const bool wasOpen = m_transactionOpen;
    const bool wasChanged = m_changed;
    OpenTransaction();
    try {
        Transaction whole(m_database);
        DeleteAllKeywords();
        SetKeywords(file.PlainWords, u"False"_s);
        SetKeywords(file.ColouredWords, u"True"_s);
        whole.Commit();
    } catch (const RuntimeError& error) {
        const bool lost = m_database.TransactionLost();
        if (!wasOpen || lost)
            Rollback();
        m_changed = wasChanged;
        FillKeywordGrid();
        if (lost && wasOpen)
            throw RuntimeError(error.Number(), error.Description() + u" The words are as they were before all edits."_s,
                               error.Source());
        throw;
    }
    SetValues(file);
    FillKeywordGrid();
    return true;
}

// Checking and saving

bool KeywordDefiner::CheckCommentDelimiter() const
{
    const bool hasNone = m_values.Language.isEmpty() && !m_changed; // nor is one being defined
    if (!m_values.Comment.isEmpty() || hasNone)
        return true;
    Prompts::Current().MsgBox({.Text = u"You have to specify comment delimiter."_s,
                               .Caption = u"Notes Delimiter Missing"_s,
                               .Icon = MsgBoxIcon::Information});
    return false;
}

void KeywordDefiner::SaveLanguage()
{
    if (!m_changed)
        return;
    OpenTransaction();
    Recordset properties = m_database.OpenRecordset(u"Properties"_s);
    if (properties.IsEmpty())
        return;
    properties.Edit();
    properties.Set(u"LanguageUsed"_s, m_values.Language + u""_s); // never Null
    properties.Set(u"ColouredKeywordColour"_s, m_values.ColouredKeywordColour);
    properties.Set(u"KeywordColour"_s, m_values.KeywordColour);
    properties.Set(u"CommentColour"_s, m_values.CommentColour);
    properties.Set(u"CommentIdentifier"_s, m_values.Comment);
    properties.Set(u"CommentIdentifierStart"_s, m_values.CommentStart);
    properties.Set(u"CommentIdentifierEnd"_s, m_values.CommentEnd);
    properties.Update();
    StoreRulesOfLibrary(m_database, m_values.Rules);
}

} // namespace qb
