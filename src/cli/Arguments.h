#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <stdexcept>

namespace qb::cli {

/// The command line can't be understood; the text says why. Exit status 2.
struct UsageError {
    QString Text;
};

/// The arguments of one command: its positional arguments in order, and its options.
class Arguments {
public:
    struct Option {
        const char* Name;
        const char* Value; ///< name of its value; empty for a switch
    };

    /// Whether there may be more positional arguments than are asked for.
    enum Limit { Exactly, OrMore };

    /// Raises UsageError when an option is unknown or lacks its value, or the number of
    /// positional arguments is not @p positional.
    Arguments(const QStringList& words, const QList<Option>& options, int positional, Limit limit = Exactly);

    /// Of positional arguments, more than asked for with OrMore only.
    int Count() const { return int(m_positional.size()); }
    /// Counted from 0; empty beyond the last one.
    QString Positional(int index) const { return m_positional.value(index); }
    /// Options go by their names without dashes; none but `json` and those the constructor was given can be asked for.
    bool Has(const QString& option) const { return m_parser.isSet(option); }
    /// Empty when the option is not given; the last one when it is given more than once.
    QString Value(const QString& option) const { return m_parser.value(option); }
    /// All that were given, in their order.
    QStringList Values(const QString& option) const { return m_parser.values(option); }
    /// A positional argument as the ID of an item; raises UsageError when it is none.
    qint64 Id(int index) const { return ToId(Positional(index)); }
    /// An option's value as an ID; 0 when the option is not given.
    qint64 IdOption(const QString& option) const { return Has(option) ? ToId(Value(option)) : 0; }
    int NumberOption(const QString& option, int fallback) const;
    bool Json() const { return Has(QStringLiteral("json")); }

private:
    /// Takes the positional arguments out and returns the rest. All options have two dashes, so that a word with one
    /// ("->", "-1") is a text like any other; behind "--" all words are.
    QStringList TakePositional(const QStringList& words, const QList<Option>& options);
    static qint64 ToId(const QString& text);

    QCommandLineParser m_parser;
    QStringList m_positional;
};

} // namespace qb::cli
