// A fuzzer of the stream of an export. Whatever comes in: no crash, no hang, no memory for what isn't there, no page
// that would leave its folder; and what can be read is written and read again as the same.

#include "exchange/BranchStream.h"
#include "exchange/PageNames.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QTemporaryDir>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

using namespace qb;
using namespace Qt::StringLiterals;

struct Branch {
    std::vector<BranchItem> Items;
    BranchTrailer Trailer;
};

QString TextOf(const Branch& branch)
{
    QStringList texts;
    for (const BranchItem& item : branch.Items)
        texts << item.Title << item.Key << item.ParentKey << item.ParentNodeKey << item.Description << item.Info
              << item.User << QString::number(item.ItemStatus) << QString::number(item.ItemRating) << item.Code
              << QString::number(item.CodeHeaders) << item.Notes << item.Example << QString::number(item.UsageHeaders)
              << QString::number(item.HTMLPage) << QString::number(item.HTMLLastUpdated.Seconds());
    for (const BranchLink& link : branch.Trailer.Links)
        texts << link.From << link.To << link.Note;
    for (const BranchLanguage& language : branch.Trailer.Languages)
        texts << language.Key << language.Language;
    return texts.join(QChar(0x1f));
}

void ReadPages(BranchReader& reader, const BranchItem& item)
{
    for (qint32 left = reader.ReadCount(), page = 0; page < left; ++page) {
        BranchPage record;
        reader.Read(record);
        const auto place = PlaceOfPage(record.Name, item.Key, page == 0);
        if (place && (place->startsWith(u'/') || QDir::cleanPath(u"x/"_s + *place).section(u'/', 0, 0) != u"x"))
            std::abort();
        reader.ReadContents(nullptr, record.Size, NoWork());
    }
}

Branch Read(const QString& path)
{
    Branch branch;
    BranchReader reader(path);
    for (qint32 left = reader.Count(); left > 0; --left) {
        BranchItem item;
        reader.Read(item);
        if (item.Title.isEmpty())
            return branch;
        for (qint32 files = reader.ReadCount(); files > 0; --files) {
            BranchFile file;
            reader.Read(file);
            reader.ReadContents(nullptr, file.Size, NoWork());
        }
        if (item.HTMLPage)
            ReadPages(reader, item);
        branch.Items.push_back(item);
    }
    branch.Trailer = reader.ReadTrailer();
    return branch;
}

/// Without files and pages.
void Write(const QString& path, const Branch& branch)
{
    BranchWriter writer(path, qint32(branch.Items.size()));
    for (const BranchItem& item : branch.Items) {
        writer.Write(item);
        writer.WriteCount(0);
        if (item.HTMLPage)
            writer.WriteCount(0);
    }
    writer.Write(branch.Trailer);
    writer.Close();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const QTemporaryDir home(QDir(u"/dev/shm"_s).exists() ? u"/dev/shm/fuzz-XXXXXX"_s
                                                                 : QDir::tempPath() + u"/fuzz-XXXXXX"_s);
    const QString path = home.filePath(u"stream"_s);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(reinterpret_cast<const char*>(data), qint64(size)) < 0)
        std::abort();
    file.close();
    Branch branch;
    try {
        branch = Read(path);
    } catch (const RuntimeError& error) { // what most of them are
        return error.Number() == ErrorNumber::Corrupt ? 0 : (std::abort(), 0);
    }
    const QString again = home.filePath(u"again"_s);
    Write(again, branch);
    if (TextOf(Read(again)) != TextOf(branch))
        std::abort();
    return 0;
}
