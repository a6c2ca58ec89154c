#include "web/EditedPage.h"

#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void Fail(long number, const QString& text)
{
    throw RuntimeError(number, text, u"EditedPage"_s);
}

QByteArray ReadPage(const QString& path)
{
    const QFileInfo info(path);
    const QString shown = QDir::toNativeSeparators(path);
    if (info.isSymLink() || (info.exists() && !info.isFile()))
        Fail(ErrorNumber::PathAccess, u"'%1' is no file of its own, so it is not edited here."_s.arg(shown));
    QFile file(path);
    QByteArray bytes;
    if (!file.open(QIODevice::ReadOnly))
        Fail(ErrorNumber::PathAccess, u"'%1' could not be read: %2"_s.arg(shown, file.errorString()));
    if (const QString why = ReadAll(file, bytes, EditedPage::MostBytes + 1); !why.isEmpty())
        Fail(ErrorNumber::PathAccess, u"'%1' could not be read: %2"_s.arg(shown, why));
    if (bytes.size() > EditedPage::MostBytes)
        Fail(ErrorNumber::ResourceExceeded,
             u"'%1' is too large to be edited here: more than %2 MB."_s.arg(shown).arg(EditedPage::MostBytes >> 20));
    return bytes;
}

/// A text with plain line ends, each place of which knows where it stands in the text as it is.
struct PlainLines {
    explicit PlainLines(const QString& text)
    {
        for (qsizetype at = 0; at < text.size(); ++at) {
            Places.push_back(at);
            const bool isPair = text[at] == u'\r' && at + 1 < text.size() && text[at + 1] == u'\n';
            Text += text[at] == u'\r' ? QChar(u'\n') : text[at];
            at += isPair ? 1 : 0;
        }
        Places.push_back(text.size());
    }
    QString Text;
    std::vector<qsizetype> Places;
};

} // namespace

EditedPage::EditedPage(const QString& path) : m_path(path), m_written(ReadPage(path))
{
    m_texts.emplace_back(m_written);
    m_lineEnd = Text(0).contains(u"\r\n"_s) ? u"\r\n"_s : u"\n"_s;
}

QByteArray EditedPage::Composed(const QJsonArray& pieces) const
{
    QByteArray bytes = m_texts.front().Mark();
    for (const QJsonValue& piece : pieces) {
        if (piece.isString()) {
            bytes += EncodedFor(m_texts.front().Encoding(), piece.toString().replace(u"\n"_s, m_lineEnd));
            continue;
        }
        const QJsonArray range = piece.toArray();
        const int number = range.at(0).toInt(-1);
        if (range.size() != 3 || number < 0 || number > LastText())
            Fail(ErrorNumber::Internal, u"The editor gave no page."_s);
        bytes += m_texts[size_t(number)].Slice(qsizetype(range.at(1).toDouble(-1)),
                                               qsizetype(range.at(2).toDouble(-1)));
    }
    return bytes;
}

void EditedPage::TakeText(const QByteArray& before, const QString& typed)
{
    const PageBytes page(before);
    const PlainLines old(page.Text());
    const qsizetype most = std::min(old.Text.size(), typed.size());
    qsizetype same = std::mismatch(old.Text.begin(), old.Text.begin() + most, typed.begin()).first - old.Text.begin();
    if (same > 0 && old.Text[same - 1].isHighSurrogate())
        --same;
    qsizetype tail = 0;
    while (tail < most - same && old.Text[old.Text.size() - 1 - tail] == typed[typed.size() - 1 - tail])
        ++tail;
    if (tail > 0 && typed[typed.size() - tail].isLowSurrogate())
        --tail;
    QString middle = typed.mid(same, typed.size() - same - tail);
    const PageEncoding encoding = m_texts.front().Encoding();
    TakeBytes(page.Mark() + page.Slice(0, old.Places[size_t(same)])
              + EncodedFor(encoding, middle.replace(u"\n"_s, m_lineEnd))
              + page.Slice(old.Places[size_t(old.Text.size() - tail)], page.Text().size()));
}

bool EditedPage::IsForeign() const
{
    QFile file(m_path);
    return !file.open(QIODevice::ReadOnly) || file.readAll() != m_written;
}

QString EditedPage::Write(const QByteArray& bytes)
{
    if (QFileInfo(m_path).isSymLink())
        return u"a link stands in its place"_s;
    const QString why = ReplaceContents(m_path, bytes);
    if (why.isEmpty())
        m_written = bytes;
    return why;
}

} // namespace qb
