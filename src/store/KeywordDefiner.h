#pragma once

#include "platform/dao/Database.h"
#include "store/LanguageDefinition.h"

#include <vector>

namespace qb {

/// The language of a library while it is edited: its name, marks and colours, and its words as the
/// rows of a grid with an empty one below the last. The words are written as they are typed, all in
/// one transaction that begins with the first edit; Commit keeps them, Rollback drops them. Where a full disk has
/// ended it, the next edit raises an error in place of being done, and the rows are those of the library.
class KeywordDefiner {
public:
    /// Reads the language of @p database, which must stay open for as long as this lives.
    explicit KeywordDefiner(Database& database);
    /// Drops what was not committed.
    ~KeywordDefiner();
    KeywordDefiner(const KeywordDefiner&) = delete;
    KeywordDefiner& operator=(const KeywordDefiner&) = delete;

    /// Name, marks and colours; the lists of words in it are not used.
    const LanguageDefinition& Values() const { return m_values; }
    void SetValues(const LanguageDefinition& values);
    /// Whether anything was changed since it was read or applied.
    bool Changed() const { return m_changed; }
    bool TransactionOpen() const { return m_transactionOpen; }

    // The grid

    /// Words, and the empty row for a new one.
    int RowCount() const { return int(m_rows.size()) + 1; }
    QString Word(int row) const;
    bool Coloured(int row) const;
    /// Reads the rows anew, in the order of the words.
    void FillKeywordGrid();
    /// Looks the row's word up in the library; a word that is gone is an error that is reported.
    bool FindWord(int row);
    /// Writes what was typed into a row: another word, a new one in the last row, none for an empty
    /// text. False when the library refuses it; the row is then as it was.
    bool SetWord(int row, const QString& text);
    void UpdateColouredTick(int row);
    void DeleteRows(std::vector<int> rows);

    // Lists

    /// Adds words, coloured if @p colouredText reads as True; the rows of the grid stay until FillKeywordGrid. Words
    /// that stand there already are left out and shown to the user. Raises an error for a word that is refused
    /// otherwise; those before it have been added.
    void SetKeywords(const QStringList& words, const QString& colouredText);
    /// The words of the rows that are coloured, or of those that are not, committed or not.
    QStringList GetKeywords(bool coloured) const;
    /// Empties the rows too; after a Rollback they are back with FillKeywordGrid only.
    void DeleteAllKeywords();

    // Files

    /// Writes the language as it stands here to a `.qbl` file. Raises an error that says why not.
    void ExportLanguageDefinition(const QString& path) const;
    /// Takes the language of a `.qbl` file for what stands here; a file that does not exist is
    /// passed over. Raises an error for one that can't be taken, with everything as it was. False
    /// when nothing was taken.
    bool ImportLanguageDefinition(const QString& path);

    // Checking and saving

    /// False, and the user is told, when there is no comment delimiter, but for a library without a language.
    bool CheckCommentDelimiter() const;
    /// Writes name, marks and colours if anything was changed, in the transaction of the words.
    void SaveLanguage();
    void Commit();
    void Rollback();

private:
    struct Row {
        Recordset::Mark Mark;
        QString Word;
        bool Coloured;
    };
    void OpenTransaction();
    bool IsCompatible(const LanguageDefinition& file) const;

    Database& m_database;
    LanguageDefinition m_values;
    Recordset m_keywords;
    std::vector<Row> m_rows;
    bool m_transactionOpen = false;
    bool m_changed = false;
};

} // namespace qb
