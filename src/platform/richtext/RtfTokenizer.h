#pragma once

#include <QStringView>

namespace qb {

/// One piece of an RTF string.
struct RtfToken {
    enum Kind {
        End,
        GroupBegin,
        GroupEnd,
        Word,       ///< a control word, perhaps with a number
        Symbol,     ///< a control symbol, in Text
        Byte,       ///< a character of the code page, in Number
        Binary,     ///< raw data, in Text
        Characters, ///< a stretch of ordinary characters
    };
    Kind What = End;
    QStringView Text;
    int Number = 0;
    bool HasNumber = false;
};

/// Cuts an RTF string into tokens. Anything is a token: it never fails and never looks back.
class RtfTokenizer {
public:
    /// The string must outlive the tokenizer and its tokens, whose texts are parts of it.
    explicit RtfTokenizer(QStringView rtf) : m_rtf(rtf) {}

    /// End when there is none left, however often it is asked for. Line breaks of the string are passed over.
    RtfToken Next();

private:
    RtfToken Control();
    RtfToken ControlWord();
    RtfToken HexByte();
    RtfToken Raw(const RtfToken& word);
    RtfToken PlainText(qsizetype begin);
    bool ReadNumber(int& number);

    QStringView m_rtf;
    qsizetype m_at = 0;
};

} // namespace qb
