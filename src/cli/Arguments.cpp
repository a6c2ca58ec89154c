#include "cli/Arguments.h"

#include <algorithm>

namespace qb::cli {

using namespace Qt::StringLiterals;

Arguments::Arguments(const QStringList& words, const QList<Option>& options, int positional, Limit limit)
{
    m_parser.addOption(QCommandLineOption(u"json"_s));
    for (const Option& option : options)
        m_parser.addOption(QCommandLineOption(QString::fromLatin1(option.Name), {}, QString::fromLatin1(option.Value)));
    if (!m_parser.parse(TakePositional(words, options)))
        throw UsageError{m_parser.errorText()};
    if (m_positional.size() < positional)
        throw UsageError{u"An argument is missing."_s};
    if (limit == Exactly && m_positional.size() > positional)
        throw UsageError{u"Unexpected argument '%1'."_s.arg(m_positional.at(positional))};
}

QStringList Arguments::TakePositional(const QStringList& words, const QList<Option>& options)
{
    QStringList left{u"quillbase-cli"_s};
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (*word == u"--") {
            m_positional << QStringList(word + 1, words.end());
            break;
        }
        if (!word->startsWith(u"--")) {
            m_positional << *word;
            continue;
        }
        left << *word;
        const bool hasValue = std::any_of(options.begin(), options.end(), [&word](const Option& option) {
            return *option.Value != '\0' && word->mid(2) == QLatin1String(option.Name);
        });
        if (hasValue && word + 1 != words.end())
            left << *++word;
    }
    return left;
}

qint64 Arguments::ToId(const QString& text)
{
    bool ok = false;
    const qint64 id = text.toInt(&ok);
    if (!ok || id < 0)
        throw UsageError{u"'%1' is not the ID of an item."_s.arg(text)};
    return id;
}

int Arguments::NumberOption(const QString& option, int fallback) const
{
    if (!Has(option))
        return fallback;
    bool ok = false;
    const int number = Value(option).toInt(&ok);
    if (!ok || number < 0)
        throw UsageError{u"'%1' is not a number."_s.arg(Value(option))};
    return number;
}

} // namespace qb::cli
