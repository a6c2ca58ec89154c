#include "platform/system/SafeNames.h"

#include <QStringList>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestSafeName = 100; // bytes; folders stand in each other
constexpr qsizetype LongestFileName = 255; // bytes
constexpr qsizetype LongestEnding = 12;    // bytes, of what is kept when a name is cut

/// So much of @p text as goes into @p bytes bytes of UTF-8.
QString CutTo(const QString& text, qsizetype bytes)
{
    if (text.toUtf8().size() <= bytes)
        return text;
    QString cut = text.left(bytes);
    while (cut.toUtf8().size() > bytes)
        cut.chop(cut.size() > 1 && cut.back().isLowSurrogate() ? 2 : 1);
    if (!cut.isEmpty() && cut.back().isHighSurrogate())
        cut.chop(1);
    return cut;
}

/// A name that is too long keeps what comes behind its last dot, by which programs know it.
QString CutName(const QString& name, qsizetype bytes)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    const QString ending = dot > 0 ? name.sliced(dot) : QString();
    if (name.toUtf8().size() <= bytes || ending.toUtf8().size() > LongestEnding)
        return CutTo(name, bytes);
    return CutTo(name.first(dot), bytes - ending.toUtf8().size()) + ending;
}

bool CanBeSeen(QChar character)
{
    return character.isPrint() && character.category() != QChar::Other_Format
           && character.category() != QChar::Separator_Line && character.category() != QChar::Separator_Paragraph;
}

bool IsDevice(const QString& name)
{
    static const QStringList devices{u"CON"_s, u"PRN"_s, u"AUX"_s, u"NUL"_s};
    const QString base = name.section(u'.', 0, 0).trimmed().toUpper();
    const bool isNumbered = base.size() == 4 && (base.startsWith("COM"_L1) || base.startsWith("LPT"_L1))
                            && base.back().isDigit();
    return isNumbered || devices.contains(base);
}

} // namespace

QString SafeName(const QString& title)
{
    static const QString separators = u"/\\:*?\"<>|"_s;
    QString name;
    for (qsizetype at = 0; at < title.size(); ++at) {
        const QChar character = title[at];
        const bool isPair = character.isHighSurrogate() && at + 1 < title.size() && title[at + 1].isLowSurrogate();
        if (isPair) {
            name += character;
            name += title[++at];
        } else if (character == u' ' || (CanBeSeen(character) && !separators.contains(character))) {
            name += character;
        } else {
            name += u'_';
        }
    }
    name = CutTo(name, LongestSafeName);
    while (!name.isEmpty() && (name.front() == u'.' || name.front() == u' ' || name.front() == u'-'))
        name.remove(0, 1);
    while (!name.isEmpty() && (name.back() == u'.' || name.back() == u' '))
        name.chop(1);
    if (name.isEmpty())
        return u"item"_s;
    return IsDevice(name) ? u'_' + name : name;
}

QString FileNameOf(const QString& title)
{
    QString name = title;
    name.replace(u'/', u'_').replace(QChar::Null, u'_');
    if (name.isEmpty() || name == u"." || name == u"..")
        return QString(std::max<qsizetype>(1, name.size()), u'_');
    return CutName(name, LongestFileName);
}

QString UniqueNames::Take(const QString& folder, const QString& name, const QStringList& endings)
{
    QSet<QString>& taken = m_taken[folder];
    const auto isFree = [&](const QString& one) {
        return !taken.contains(Key(one)) && std::none_of(endings.begin(), endings.end(), [&](const QString& ending) {
            return taken.contains(Key(one + ending));
        });
    };
    const qsizetype dot = endings.isEmpty() ? name.lastIndexOf(u'.') : -1;
    const QString ending = dot > 0 ? name.sliced(dot) : QString();
    QString unique = name;
    int& number = m_next[folder + u'/' + Key(name)];
    while (!isFree(unique)) {
        const QString mark = u"(%1)"_s.arg(++number);
        unique = CutTo(name.chopped(ending.size()), LongestFileName - mark.size() - ending.toUtf8().size()) + mark
                 + ending;
    }
    taken.insert(Key(unique));
    for (const QString& one : endings)
        taken.insert(Key(unique + one));
    return unique;
}

} // namespace qb
