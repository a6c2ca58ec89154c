#include "store/CPrintFiles.h"

#include <QLocale>

namespace qb {

using namespace Qt::StringLiterals;

void CPrintFiles::InitializeItemFilesList(Database& database, qint64 itemId)
{
    m_files.clear();
    m_byKey.clear();
    CPrintFiles read; // so that a row that can't be read leaves no half of a list
    for (Recordset rows = database.OpenRecordset(u"Files"_s, u"CodeID = ?"_s, {itemId}); !rows.AtEnd();
         rows.MoveNext()) {
        const auto file = std::make_shared<CPrintFile>();
        file->SetTitle(rows[u"Title"_s].ToText());
        file->SetDescription(rows[u"Description"_s].ToText());
        file->SetOrigDateTime(rows[u"OrigDateTime"_s].ToDate());
        file->SetDateAdded(rows[u"DateAdded"_s].ToDate());
        file->SetSize(PrintedSize(rows[u"fileSize"_s].ToLong()));
        read.m_byKey.insert(KeyOf(rows[u"ID"_s].ToLong()), file);
        read.m_files.push_back(file);
    }
    *this = std::move(read);
}

std::shared_ptr<CPrintFile> CPrintFiles::Item(const QString& keyOrNumber) const
{
    bool isNumber = false;
    const int number = keyOrNumber.toInt(&isNumber);
    if (!isNumber)
        return m_byKey.value(keyOrNumber);
    return number >= 1 && number <= Count() ? m_files[size_t(number - 1)] : nullptr;
}

QString PrintedSize(qint64 bytes)
{
    return bytes == 0 ? QString() : QLocale(QLocale::English).toString(bytes);
}

} // namespace qb
