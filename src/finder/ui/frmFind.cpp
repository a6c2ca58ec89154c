#include "finder/ui/frmFind.h"

#include "finder/FindMemory.h"
#include "finder/ui/FindHitView.h"
#include "finder/ui/FindOptions.h"
#include "platform/system/Prompts.h"
#include "support/ui/Icons.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QCheckBox* MakeCheck(const QString& name, const QString& caption, const QString& tip)
{
    auto* box = new QCheckBox(caption);
    box->setObjectName(name);
    box->setToolTip(tip);
    return box;
}

QLineEdit* MakeLine(const QString& name, const QString& prompt)
{
    auto* line = new QLineEdit;
    line->setObjectName(name);
    line->setPlaceholderText(prompt);
    line->setAccessibleName(prompt);
    line->setClearButtonEnabled(true);
    line->setMaxLength(1 << 20);
    return line;
}

} // namespace

frmFind::frmFind(FindSearch& search, FindHitList& hits, Finding& finding, QWidget* parent)
    : QDialog(parent), m_search(search), m_hits(hits), m_finding(finding),
      txtFind(MakeLine(u"txtFind"_s, u"Find in the library"_s)), cboMode(new QComboBox), cboCase(new QComboBox),
      chkWholeWord(MakeCheck(u"chkWholeWord"_s, u"&Whole words"_s, u"Not within longer words"_s)),
      chkAccents(MakeCheck(u"chkAccents"_s, u"Any &accents"_s, u"“e” finds “é” too"_s)), cmdMore(new QToolButton),
      cmdSaved(new QToolButton), mnuSaved(new QMenu(this)), m_options(new FindOptions), lvHits(new FindHitView(hits)),
      lblStatus(new QLabel), txtReplace(MakeLine(u"txtReplace"_s, u"Replace by"_s)),
      cmdReplace(new QPushButton(u"&Replace..."_s))
{
    constexpr QSize Preferred(760, 560);
    setObjectName(u"frmFind"_s);
    setWindowTitle(u"Find in Library"_s);
    lblStatus->setObjectName(u"lblFindStatus"_s);
    lblStatus->setTextFormat(Qt::PlainText);
    lblStatus->setWordWrap(true);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(MakeQueryRow());
    layout->addLayout(MakeModeRow());
    layout->addWidget(m_options);
    layout->addWidget(lvHits, 1);
    layout->addWidget(lblStatus);
    layout->addLayout(MakeReplaceRow());
    layout->addLayout(MakeButtons());
    connect(m_options, &FindOptions::Changed, this, &frmFind::Search);
    connect(lvHits, &FindHitView::Opened, this, qOverload<const QModelIndex&>(&frmFind::Open));
    connect(&search, &FindSearch::Changed, this, &frmFind::ShowState);
    connect(&finding, &Finding::Shown, this, [this] {
        if (!m_search.Hits().empty())
            hide();
    });
    ShowMore(false);
    ShowState();
    resize(Preferred);
}

// Layout

QLayout* frmFind::MakeQueryRow()
{
    txtFind->installEventFilter(this);
    connect(txtFind, &QLineEdit::textChanged, this, &frmFind::Search);
    connect(txtFind, &QLineEdit::textEdited, this, [this] { m_historyPlace = -1; });
    cmdSaved->setObjectName(u"cmdSaved"_s);
    cmdSaved->setIcon(IconNamed(u"bookmarks"_s));
    cmdSaved->setToolTip(u"Saved searches"_s);
    cmdSaved->setAccessibleName(u"Saved searches"_s);
    cmdSaved->setPopupMode(QToolButton::InstantPopup);
    cmdSaved->setMenu(mnuSaved);
    mnuSaved->setObjectName(u"mnuSavedFinds"_s);
    connect(mnuSaved, &QMenu::aboutToShow, this, &frmFind::FillSavedMenu);
    auto* row = new QHBoxLayout;
    row->addWidget(txtFind, 1);
    row->addWidget(cmdSaved);
    return row;
}

QLayout* frmFind::MakeModeRow()
{
    cboMode->setObjectName(u"cboMode"_s);
    cboMode->setAccessibleName(u"How the text is understood"_s);
    cboMode->addItem(u"Exact phrase"_s, int(FindMode::Phrase));
    cboMode->addItem(u"All the words"_s, int(FindMode::AllWords));
    cboMode->addItem(u"Regular expression"_s, int(FindMode::Expression));
    cboCase->setObjectName(u"cboCase"_s);
    cboCase->setAccessibleName(u"Whether case counts"_s);
    cboCase->addItem(u"Smart case"_s, int(FindCase::Smart));
    cboCase->setItemData(0, u"Case counts when a capital letter is typed"_s, Qt::ToolTipRole);
    cboCase->addItem(u"Match case"_s, int(FindCase::Exact));
    cboCase->addItem(u"Ignore case"_s, int(FindCase::Folds));
    cmdMore->setObjectName(u"cmdMore"_s);
    cmdMore->setText(u"&More"_s);
    cmdMore->setToolTip(u"Where to look"_s);
    cmdMore->setCheckable(true);
    cmdMore->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    cmdMore->setAutoRaise(true);
    connect(cmdMore, &QToolButton::toggled, this, &frmFind::ShowMore);
    for (QComboBox* combo : {cboMode, cboCase})
        connect(combo, &QComboBox::currentIndexChanged, this, &frmFind::Search);
    for (QCheckBox* box : {chkWholeWord, chkAccents})
        connect(box, &QCheckBox::toggled, this, &frmFind::Search);
    auto* row = new QHBoxLayout;
    for (QWidget* widget : std::initializer_list<QWidget*>{cboMode, cboCase, chkWholeWord, chkAccents})
        row->addWidget(widget);
    row->addStretch(1);
    row->addWidget(cmdMore);
    return row;
}

QLayout* frmFind::MakeReplaceRow()
{
    cmdReplace->setObjectName(u"cmdReplace"_s);
    cmdReplace->setToolTip(u"Shows each change before it is made"_s);
    cmdReplace->setAutoDefault(false);
    connect(cmdReplace, &QPushButton::clicked, this, &frmFind::ReplaceAsked);
    auto* row = new QHBoxLayout;
    row->addWidget(txtReplace, 1);
    row->addWidget(cmdReplace);
    return row;
}

QLayout* frmFind::MakeButtons()
{
    cmdOK = new QPushButton(u"&Find"_s);
    cmdOK->setObjectName(u"cmdOK"_s);
    cmdOK->setDefault(true);
    cmdOK->setToolTip(u"Shows the results in the panel below the item"_s);
    auto* close = new QPushButton(u"Close"_s);
    close->setObjectName(u"cmdCancel"_s);
    close->setAutoDefault(false);
    connect(cmdOK, &QPushButton::clicked, this, [this] { m_finding.Accept(Query()); });
    connect(close, &QPushButton::clicked, this, &QDialog::hide);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(cmdOK);
    row->addWidget(close);
    return row;
}

void frmFind::ShowMore(bool more)
{
    m_options->setVisible(more);
    cmdMore->setIcon(IconNamed(more ? u"go-up"_s : u"go-down"_s));
}

// The query

FindQuery frmFind::Query() const
{
    FindQuery query;
    query.Text = txtFind->text();
    query.Mode = FindMode(cboMode->currentData().toInt());
    query.Case = FindCase(cboCase->currentData().toInt());
    query.WholeWord = chkWholeWord->isChecked();
    query.FoldAccents = chkAccents->isChecked();
    m_options->Put(query);
    return query;
}

void frmFind::ShowQuery(const FindQuery& query)
{
    m_showing = true;
    txtFind->setText(query.Text);
    cboMode->setCurrentIndex(cboMode->findData(int(query.Mode)));
    cboCase->setCurrentIndex(cboCase->findData(int(query.Case)));
    chkWholeWord->setChecked(query.WholeWord);
    chkAccents->setChecked(query.FoldAccents);
    m_options->Show(query);
    m_showing = false;
    cmdMore->setChecked(cmdMore->isChecked() || m_options->IsNarrow());
    Search();
}

void frmFind::SetItem(qint64 item, const QString& title)
{
    m_options->SetItem(item, title);
}

QString frmFind::Replacement() const
{
    return txtReplace->text();
}

void frmFind::SetMayReplace(bool may)
{
    m_mayReplace = may;
    ShowState();
}

void frmFind::Search()
{
    if (m_showing)
        return;
    const bool isExpression = cboMode->currentData().toInt() == int(FindMode::Expression);
    chkAccents->setEnabled(!isExpression); // which is not folded
    m_search.Look(Query());
}

void frmFind::ShowState()
{
    const QString unsaved = m_search.Query().Text.isEmpty() ? QString() : UnsavedItem();
    lblStatus->setText(unsaved.isEmpty()
                           ? m_search.StatusText()
                           : u"%1. “%2” was searched as it is saved."_s.arg(m_search.StatusText(), unsaved));
    lblStatus->setForegroundRole(m_search.Error().isEmpty() ? QPalette::PlaceholderText : QPalette::WindowText);
    QFont font = lblStatus->font();
    font.setBold(!m_search.Error().isEmpty());
    lblStatus->setFont(font);
    const bool mayReplace = m_mayReplace && !m_search.Hits().empty() && !m_search.IsRunning();
    cmdReplace->setEnabled(mayReplace);
    ShowLanguages();
}

/// Those that items of the library name, and its own.
void frmFind::ShowLanguages()
{
    if (!m_search.Texts())
        return;
    QStringList languages{m_search.Texts()->Language()};
    for (const FindSnapshot::Layer& layer : m_search.Texts()->Layers())
        languages << layer.Segment->All().Languages;
    languages.removeAll(QString());
    languages.removeDuplicates();
    languages.sort(Qt::CaseInsensitive);
    m_options->SetLanguages(languages);
}

void frmFind::Open(const QString& selected)
{
    m_history = FindMemory::History();
    m_historyPlace = -1;
    show();
    raise();
    activateWindow();
    txtFind->setFocus();
    if (!selected.isEmpty() && !selected.contains(u'\n') && selected != txtFind->text())
        txtFind->setText(selected);
    else if (!txtFind->text().isEmpty())
        Search(); // the library may be another than it was
    txtFind->selectAll();
}

void frmFind::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    ShowState();
}

// History and saved searches

bool frmFind::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == txtFind && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Up) {
            StepHistory(1);
            return true;
        }
        if (key->key() == Qt::Key_Down && m_historyPlace >= 0) {
            StepHistory(-1);
            return true;
        }
        if (key->key() == Qt::Key_Down) {
            lvHits->setFocus();
            lvHits->Step(true);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

/// Back in time and forward again, to what was typed.
void frmFind::StepHistory(int step)
{
    if (m_historyPlace < 0)
        m_typed = txtFind->text();
    int place = m_historyPlace + step;
    if (place >= 0 && place < m_history.size() && m_history[place] == txtFind->text())
        place += step; // it is there already
    if (place >= m_history.size())
        return;
    m_historyPlace = qMax(-1, place);
    txtFind->setText(m_historyPlace < 0 ? m_typed : m_history[m_historyPlace]);
    txtFind->selectAll();
}

void frmFind::FillSavedMenu()
{
    mnuSaved->clear();
    QAction* save = mnuSaved->addAction(u"&Save This Search..."_s, this, &frmFind::SaveSearch);
    save->setEnabled(!txtFind->text().isEmpty());
    mnuSaved->addSeparator();
    const std::vector<FindMemory::Saved> saved = FindMemory::SavedFinds();
    for (const FindMemory::Saved& one : saved) {
        QAction* entry = mnuSaved->addAction(QString(one.Name).replace(u'&', u"&&"_s));
        connect(entry, &QAction::triggered, this, std::bind_front(&frmFind::ShowQuery, this, one.Query));
    }
    if (saved.empty()) {
        mnuSaved->addAction(u"There are no saved searches"_s)->setEnabled(false);
        return;
    }
    mnuSaved->addSeparator();
    QMenu* remove = mnuSaved->addMenu(u"&Remove"_s);
    for (const FindMemory::Saved& one : saved) {
        QAction* entry = remove->addAction(QString(one.Name).replace(u'&', u"&&"_s));
        connect(entry, &QAction::triggered, this, [name = one.Name] { FindMemory::Remove(name); });
    }
}

void frmFind::SaveSearch()
{
    const std::optional<QString> name = Prompts::Current().InputBox(u"Name of the search:"_s, u"Save Search"_s,
                                                                    txtFind->text().left(60));
    if (name && !name->trimmed().isEmpty())
        FindMemory::Save(name->trimmed(), Query());
}

// Hits

void frmFind::Open(const QModelIndex& index)
{
    const FindHitList::Row& row = m_hits.At(index);
    if (row.What != FindHitList::Row::Is::Place)
        return m_finding.OpenPlace(row.Hit.Id, FindField::Title, row.Place);
    m_finding.OpenPlace(row.Hit.Id, row.Found.Field, row.Place, IsOfStoredFile(row.Found.Field) ? row.Found.Source : 0);
}

/// Enter finds wherever the focus is, but in the list, where it opens a hit.
void frmFind::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        return hide();
    QDialog::keyPressEvent(event);
}

} // namespace qb
