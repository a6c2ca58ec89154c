#pragma once

#include <QString>
#include <array>
#include <optional>

namespace qb {

/// What a piece of a source text is, as far as its colour goes.
enum class TokenKind : quint8 {
    Text,
    Comment,
    String,
    Number,
    Keyword,
    Type,
    Builtin,
    Preprocessor,
    Annotation,
    Variable,
    Label, ///< keys, attributes, headings, labels
    Inserted,
    Deleted,
};
inline constexpr int TokenKindCount = 13;

/// How a kind is named in rules and settings, and the letter that marks it where a text is shown
/// with its kinds below it.
struct TokenKindRow {
    TokenKind Kind;
    const char* Name;
    char Mark;
    const char* Caption;
};
inline constexpr std::array<TokenKindRow, TokenKindCount> TokenKindRows{{
    {TokenKind::Text, "text", ' ', "Text"},
    {TokenKind::Comment, "comment", 'c', "Comments"},
    {TokenKind::String, "string", 's', "Strings"},
    {TokenKind::Number, "number", 'n', "Numbers"},
    {TokenKind::Keyword, "keyword", 'k', "Keywords"},
    {TokenKind::Type, "type", 't', "Types"},
    {TokenKind::Builtin, "builtin", 'b', "Built-in names"},
    {TokenKind::Preprocessor, "preprocessor", 'p', "Preprocessor"},
    {TokenKind::Annotation, "annotation", 'a', "Annotations"},
    {TokenKind::Variable, "variable", 'v', "Variables"},
    {TokenKind::Label, "label", 'l', "Keys and headings"},
    {TokenKind::Inserted, "inserted", '+', "Inserted"},
    {TokenKind::Deleted, "deleted", '-', "Deleted"},
}};

/// The rows stand in the order of the kinds.
constexpr const TokenKindRow& RowOf(TokenKind kind)
{
    return TokenKindRows[size_t(kind)];
}

/// The kind of that name.
inline std::optional<TokenKind> TokenKindNamed(QStringView name)
{
    for (const TokenKindRow& row : TokenKindRows) {
        if (name == QLatin1StringView(row.Name))
            return row.Kind;
    }
    return std::nullopt;
}

/// A piece of a line.
struct Token {
    int Begin;
    int Length;
    TokenKind Kind;
    friend bool operator==(const Token&, const Token&) = default;
};

} // namespace qb
