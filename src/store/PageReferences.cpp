#include "store/PageReferences.h"

#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QUrl>
#include <QtEndian>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

bool IsUtf16(const QByteArray& page)
{
    return page.startsWith("\xff\xfe") || page.startsWith("\xfe\xff");
}

/// A page as text of which each byte is got back: that of UTF-16 by its units, all else a character a byte.
QString UnitsOf(const QByteArray& page)
{
    if (!IsUtf16(page))
        return QString::fromLatin1(page);
    const bool isLittle = page.front() == '\xff';
    QString units(page.size() / 2, Qt::Uninitialized);
    for (qsizetype i = 0; i < units.size(); ++i) {
        const char* at = page.constData() + 2 * i;
        units[i] = isLittle ? qFromLittleEndian<char16_t>(at) : qFromBigEndian<char16_t>(at);
    }
    return units;
}

/// The same back; half a unit at the end of @p page, of which it was made, stays.
QByteArray BytesOf(const QString& units, const QByteArray& page)
{
    if (!IsUtf16(page))
        return units.toLatin1();
    const bool isLittle = page.front() == '\xff';
    QByteArray bytes(units.size() * 2, '\0');
    for (qsizetype i = 0; i < units.size(); ++i) {
        char* at = bytes.data() + 2 * i;
        isLittle ? qToLittleEndian<char16_t>(units[i].unicode(), at) : qToBigEndian<char16_t>(units[i].unicode(), at);
    }
    return bytes + page.right(page.size() % 2);
}

/// How a page may write the name of a folder, as an expression.
QString FormsOf(const QString& key, bool isUtf16)
{
    const QString utf8 = QString::fromLatin1(key.toUtf8());
    const QString address = QString::fromLatin1(QUrl::toPercentEncoding(key, "!$&'()*+,;=:@"));
    QStringList forms{isUtf16 ? key : utf8, key, address};
    for (qsizetype i = forms.size(); i-- > 0;)
        forms << forms[i].toHtmlEscaped();
    forms.removeDuplicates();
    for (QString& form : forms)
        form = QRegularExpression::escape(form);
    return u"(?:"_s + forms.join(u'|') + u')';
}

/// Halves of characters, which no expression takes, are part of nothing that is looked for.
QString Searched(QString text)
{
    std::replace_if(
        text.begin(), text.end(), [](QChar unit) { return unit.isSurrogate(); }, u'?');
    return text;
}

/// A page in which what an expression finds is another text.
QByteArray WithReplaced(const QByteArray& page, const QRegularExpression& expression,
                        const std::function<QString(const QString& found)>& other)
{
    const QString text = UnitsOf(page);
    QString replaced;
    qsizetype done = 0;
    for (const QRegularExpressionMatch& match : expression.globalMatch(Searched(text))) {
        replaced += QStringView(text).mid(done, match.capturedStart() - done);
        replaced += other(match.captured());
        done = match.capturedEnd();
    }
    if (done == 0)
        return page;
    replaced += QStringView(text).mid(done);
    return BytesOf(replaced, page);
}

QByteArray WithReferences(const QByteArray& page, const QString& oldKey, const QString& newKey)
{
    const QRegularExpression reference(
        u"(?:src|href|background|poster)\\s*=\\s*[\"']?(?:\\./)?\\K%1(?=[\\\\/])"_s.arg(FormsOf(oldKey, IsUtf16(page))),
        QRegularExpression::CaseInsensitiveOption);
    return WithReplaced(page, reference, [&newKey](const QString&) { return newKey; });
}

QByteArray ReadPageFile(const QString& path)
{
    QFile file(path);
    QByteArray page;
    const QString why = file.open(QIODevice::ReadOnly) ? ReadAll(file, page) : file.errorString();
    if (!why.isEmpty())
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"'%1' can't be read: %2."_s.arg(QDir::toNativeSeparators(path), why), u"ReadPageFile"_s);
    return page;
}

void Rewrite(const QString& pageFile, const std::function<QByteArray(const QByteArray& page)>& change)
{
    const auto fail = [&pageFile](const QString& why) {
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"'%1' can't be changed: %2."_s.arg(QDir::toNativeSeparators(pageFile), why), u"Rewrite"_s);
    };
    QFile file(pageFile);
    if (!file.open(QIODevice::ReadWrite))
        fail(file.errorString());
    QByteArray bytes;
    if (const QString why = ReadAll(file, bytes); !why.isEmpty())
        fail(why);
    const QByteArray changed = change(bytes);
    if (changed == bytes)
        return;
    if (!file.seek(0) || file.write(changed) != changed.size() || !file.resize(changed.size()) || !file.flush())
        fail(file.errorString());
}

} // namespace

bool PageMentions(const QString& pageFile, const QStringList& words)
{
    const QString page = UnitsOf(ReadPageFile(pageFile));
    return std::any_of(words.begin(), words.end(), [&page](const QString& word) { return page.contains(word); });
}

void RenameReferences(const QString& pageFile, const QString& oldKey, const QString& newKey)
{
    Rewrite(pageFile, [&](const QByteArray& page) { return WithReferences(page, oldKey, newKey); });
}

QByteArray WithItemNumbers(const QByteArray& page, const NewItemNumber& newNumber)
{
    static const QRegularExpression address(u"(?<=local://item)(?:0-)*\\d+"_s,
                                            QRegularExpression::CaseInsensitiveOption);
    return WithReplaced(page, address, newNumber);
}

void RenumberItems(const QString& pageFile, const NewItemNumber& newNumber)
{
    Rewrite(pageFile, [&](const QByteArray& page) { return WithItemNumbers(page, newNumber); });
}

} // namespace qb
