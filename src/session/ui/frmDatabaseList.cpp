#include "session/ui/frmDatabaseList.h"

#include "support/ui/Icons.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

frmDatabaseList::frmDatabaseList(QWidget* parent) : QDialog(parent), m_list(new QTreeWidget)
{
    constexpr QSize Size(640, 320);
    setObjectName(u"frmDatabaseList"_s);
    setWindowTitle(u"Connected Databases"_s);
    resize(Size);
    m_list->setObjectName(u"lvDatabases"_s);
    m_list->setHeaderLabels({u"Alias"_s, u"Path"_s});
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(u"cmdOK"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addWidget(buttons);
}

void frmDatabaseList::Initialize(const std::vector<LibraryEntry>& libraries, std::optional<int> selected)
{
    m_list->clear();
    for (size_t i = 0; i < libraries.size(); ++i) {
        const bool open = selected == int(i);
        auto* row = new QTreeWidgetItem(m_list, {libraries[i].Alias, QDir::toNativeSeparators(libraries[i].Path)});
        row->setIcon(0, IconNamed(open ? u"DBSelected"_s : u"DB"_s));
        if (open)
            m_list->setCurrentItem(row);
    }
    m_list->header()->resizeSections(QHeaderView::ResizeToContents);
}

} // namespace qb
