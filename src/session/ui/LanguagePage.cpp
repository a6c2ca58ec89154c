#include "session/ui/LanguagePage.h"

#include "config/Remembered.h"
#include "platform/system/Prompts.h"
#include "session/ui/CWaitCursor.h"
#include "session/ui/KeywordGridModel.h"
#include "session/ui/LanguageChooser.h"
#include "session/ui/SampleBox.h"
#include "session/ui/TokenColoursEditor.h"
#include "store/KeywordDefiner.h"
#include "store/ShippedLanguages.h"
#include "support/ErrorRoutine.h"
#include "support/ui/ColorButton.h"
#include "support/ui/Icons.h"
#include "text/LanguageSample.h"
#include "text/ui/RichTextLook.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFormLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"frmSettings"_s;

QLineEdit* MakeBox(const QString& name, int longest)
{
    auto* box = new QLineEdit;
    box->setObjectName(name);
    box->setMaxLength(longest);
    return box;
}

/// Shows a box's text in a colour.
void SetTextColor(QLineEdit& box, quint32 color)
{
    QPalette palette;
    palette.setColor(QPalette::Text, RichTextLook::ColorOn(box.palette().color(QPalette::Base), color));
    box.setPalette(palette);
}

} // namespace

LanguagePage::LanguagePage(QWidget* parent) : QWidget(parent), m_words(new KeywordGridModel(this))
{
    auto* layout = new QVBoxLayout(this);
    m_tabs = new QTabWidget;
    m_tabs->setObjectName(u"tabLanguage"_s);
    m_tabs->addTab(MakeGrid(), u"&Words"_s);
    m_tabs->addTab(MakeColours(), u"Colours by R&ules"_s);
    m_tabs->addTab(MakeRules(), u"&Rules"_s);
    layout->addWidget(MakeValues());
    layout->addWidget(m_tabs, 1);
    layout->addWidget(MakeButtons());
    m_sampleTimer.setSingleShot(true);
    connect(&m_sampleTimer, &QTimer::timeout, this, &LanguagePage::ShowSample);
    connect(this, &LanguagePage::Changed, &m_sampleTimer, qOverload<>(&QTimer::start));
}

LanguagePage::~LanguagePage() = default;

QWidget* LanguagePage::MakeValues()
{
    auto* values = new QWidget;
    auto* form = new QFormLayout(values);
    form->setContentsMargins(0, 0, 0, 0);
    txtLanguage = MakeBox(u"txtLanguage"_s, LongestLanguageName);
    txtCommentDelimiter = MakeBox(u"txtCommentDelimiter"_s, LongestCommentMark);
    txtCommentDelimiterStart = MakeBox(u"txtCommentDelimiterStart"_s, LongestCommentMark);
    txtCommentDelimiterEnd = MakeBox(u"txtCommentDelimiterEnd"_s, LongestCommentMark);
    txtCommentDelimiter->setToolTip(u"Opens a comment that ends with the line"_s);
    txtCommentDelimiterStart->setToolTip(u"Opens a comment that may span lines"_s);
    txtCommentDelimiterEnd->setToolTip(u"Closes a comment that may span lines"_s);
    txtCommentDelimiterEnd->setAccessibleName(u"Closes a comment of many lines"_s);
    lblKeywordColour = new ColorButton(u"Colour of keywords"_s);
    lblKeywordColour->setObjectName(u"lblKeywordColour"_s);
    lblTextColour = new ColorButton(u"Colour of other words"_s);
    lblTextColour->setObjectName(u"lblTextColour"_s);
    lblNotesColour = new ColorButton(u"Colour of comments"_s);
    lblNotesColour->setObjectName(u"lblNotesColour"_s);
    auto* marks = new QHBoxLayout;
    marks->addWidget(txtCommentDelimiter);
    marks->addWidget(txtCommentDelimiterStart);
    marks->addWidget(txtCommentDelimiterEnd);
    auto* colors = new QHBoxLayout;
    for (ColorButton* button : {lblKeywordColour, lblTextColour, lblNotesColour}) {
        button->setToolTip(button->accessibleName());
        colors->addWidget(button);
    }
    colors->addStretch();
    form->addRow(u"&Name of the language:"_s, txtLanguage);
    auto* marksLabel = new QLabel(u"Comment &delimiters:"_s);
    marksLabel->setBuddy(txtCommentDelimiter);
    form->addRow(marksLabel, marks);
    form->addRow(u"Keywords, words, comments:"_s, colors);
    chkCorrectSpelling = new QCheckBox(u"&Correct the spelling of words while colouring"_s);
    chkCorrectSpelling->setObjectName(u"chkCorrectSpelling"_s);
    form->addRow(QString(), chkCorrectSpelling);
    connect(chkCorrectSpelling, &QCheckBox::toggled, this, &LanguagePage::TakeValues);
    for (QLineEdit* box : {txtLanguage, txtCommentDelimiter, txtCommentDelimiterStart, txtCommentDelimiterEnd})
        connect(box, &QLineEdit::textChanged, this, &LanguagePage::TakeValues);
    for (ColorButton* button : {lblKeywordColour, lblTextColour, lblNotesColour})
        connect(button, &ColorButton::ColorChosen, this, &LanguagePage::TakeValues);
    txtCommentDelimiter->setPlaceholderText(u"to the line's end"_s);
    txtCommentDelimiterStart->setPlaceholderText(u"from"_s);
    txtCommentDelimiterEnd->setPlaceholderText(u"to"_s);
    return values;
}

QWidget* LanguagePage::MakeGrid()
{
    constexpr int SelectorWidth = 24;
    constexpr int ColouredWidth = 90;
    fgrdList = new QTableView;
    fgrdList->setObjectName(u"fgrdList"_s);
    fgrdList->setAccessibleName(u"Words of the language"_s);
    fgrdList->setModel(m_words);
    fgrdList->verticalHeader()->hide();
    fgrdList->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    fgrdList->horizontalHeader()->setSectionResizeMode(KeywordGridModel::KeywordColumn, QHeaderView::Stretch);
    fgrdList->setColumnWidth(KeywordGridModel::SelectorColumn, SelectorWidth);
    fgrdList->setColumnWidth(KeywordGridModel::ColouredColumn, ColouredWidth);
    fgrdList->setSelectionBehavior(QAbstractItemView::SelectRows);
    fgrdList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    fgrdList->setTabKeyNavigation(false);
    fgrdList->installEventFilter(this);
    txtEdit = MakeBox(u"txtEdit"_s, LongestKeyword);
    txtEdit->setParent(fgrdList->viewport());
    txtEdit->setAccessibleName(u"Word"_s);
    txtEdit->hide();
    txtEdit->installEventFilter(this);
    connect(txtEdit, &QLineEdit::textChanged, this, &LanguagePage::txtEdit_Change);
    connect(fgrdList->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &LanguagePage::fgrdList_RowColChange);
    connect(fgrdList, &QTableView::clicked, this, [this](const QModelIndex& index) {
        if (index.column() == KeywordGridModel::ColouredColumn)
            UpdateColouredTick(index.row());
    });
    const auto follow = [this] {
        if (!txtEdit->isHidden())
            txtEdit->setGeometry(fgrdList->visualRect(fgrdList->currentIndex()));
    };
    connect(fgrdList->horizontalHeader(), &QHeaderView::sectionResized, this, follow);
    // The columns that stretch are known once the header has been laid out.
    connect(fgrdList->horizontalHeader(), &QHeaderView::geometriesChanged, this, follow, Qt::QueuedConnection);
    return fgrdList;
}

QWidget* LanguagePage::MakeButtons()
{
    struct Button {
        const char* Name;
        const char* Caption;
        const char* Icon;
        std::function<void()> Run;
    };
    const auto last = [this] { return m_words->rowCount() - 1; };
    const auto now = [this] { return fgrdList->currentIndex().row(); };
    const Button buttons[] = {
        {"cmdMoveFirst", "First", "go-first", [this] { GoToRow(0); }},
        {"cmdMovePrevious", "Previous", "go-previous", [this, now] { GoToRow(now() - 1); }},
        {"cmdMoveNext", "Next", "go-next", [this, now] { GoToRow(now() + 1); }},
        {"cmdMoveLast", "Last", "go-last", [this, last] { GoToRow(last()); }},
        {"cmdAddNew", "GoTo New Line", "", [this, last] { GoToRow(last()); }},
        {"cmdDelete", "Delete Selected Record(s)", "", [this] { DeleteSelectedRows(); }},
    };
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    for (const Button& button : buttons) {
        auto* control = new QPushButton;
        control->setObjectName(QString::fromLatin1(button.Name));
        control->setAutoDefault(false);
        if (*button.Icon) {
            control->setIcon(IconNamed(QString::fromLatin1(button.Icon)));
            control->setToolTip(QString::fromLatin1(button.Caption));
            control->setAccessibleName(QString::fromLatin1(button.Caption));
        } else {
            control->setText(QString::fromLatin1(button.Caption));
        }
        layout->addWidget(control);
        connect(control, &QPushButton::clicked, this,
                [this, run = button.Run] { Guarded(ModuleName, u"LanguagePage"_s, run); });
    }
    layout->addStretch();
    AddDefinitionButtons(*layout);
    return row;
}

/// The buttons that take a whole language, and give it out.
void LanguagePage::AddDefinitionButtons(QBoxLayout& layout)
{
    cmdExport = new QPushButton(u"&Export..."_s);
    cmdExport->setObjectName(u"cmdExport"_s);
    cmdImport = new QPushButton(u"&Import..."_s);
    cmdImport->setObjectName(u"cmdImport"_s);
    m_shipped = new QToolButton;
    m_shipped->setObjectName(u"cmdShippedLanguages"_s);
    m_shipped->setText(u"Languages"_s);
    m_shipped->setToolTip(u"Take a language that comes with the program"_s);
    m_shipped->setVisible(!ShippedLanguages().isEmpty());
    connect(m_shipped, &QToolButton::clicked, this, [this] {
        LanguageChooser::Popup(*m_shipped, QString(), m_definer ? m_definer->Values().Language : QString(),
                               [this](const QString& name) {
                                   if (const ShippedLanguage* language = ShippedLanguageNamed(name))
                                       ImportFile(language->Path);
                               });
    });
    cmdExport->setAutoDefault(false);
    cmdImport->setAutoDefault(false);
    for (QWidget* control :
         {static_cast<QWidget*>(m_shipped), static_cast<QWidget*>(cmdImport), static_cast<QWidget*>(cmdExport)})
        layout.addWidget(control);
    connect(cmdExport, &QPushButton::clicked, this, &LanguagePage::ExportLanguageDefinition);
    connect(cmdImport, &QPushButton::clicked, this, &LanguagePage::ImportLanguageDefinition);
}

QWidget* LanguagePage::MakeColours()
{
    auto* page = new QWidget;
    m_colours = new TokenColoursEditor;
    m_sample = new SampleBox;
    auto* layout = new QHBoxLayout(page);
    layout->addWidget(m_colours);
    layout->addWidget(m_sample, 1);
    connect(m_colours, &TokenColoursEditor::Changed, this, [this] {
        m_sample->SetPalette(m_colours->Palette());
        Q_EMIT PaletteChanged();
    });
    return page;
}

QWidget* LanguagePage::MakeRules()
{
    auto* page = new QWidget;
    txtRules = new QPlainTextEdit;
    txtRules->setObjectName(u"txtRules"_s);
    txtRules->setAccessibleName(u"Rules of the language"_s);
    txtRules->setPlaceholderText(u"line: #\nblock: /* */ lines\nstring: \" \" escape=\\\nwords type: int long"_s);
    txtRules->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    txtRules->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_problems = new QLabel;
    m_problems->setObjectName(u"lblRulesState"_s);
    m_problems->setTextFormat(Qt::PlainText);
    m_problems->setWordWrap(true);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(txtRules, 1);
    layout->addWidget(m_problems);
    connect(txtRules, &QPlainTextEdit::textChanged, this, &LanguagePage::TakeRules);
    return page;
}

QList<std::pair<QString, QWidget*>> LanguagePage::Places() const
{
    return {{u"Correct the spelling of words while colouring"_s, chkCorrectSpelling},
            {u"Colours by rules: comments, strings, numbers, keywords, types"_s, m_tabs},
            {u"Rules of the language"_s, m_tabs},
            {u"Name of the language"_s, txtLanguage},
            {u"Comment delimiter"_s, txtCommentDelimiter},
            {u"Comments of many lines: delimiters"_s, txtCommentDelimiterStart},
            {u"Colour of keywords"_s, lblKeywordColour},
            {u"Colour of other words"_s, lblTextColour},
            {u"Colour of comments"_s, lblNotesColour},
            {u"Keywords of the language"_s, fgrdList},
            {u"Import a language definition"_s, cmdImport},
            {u"Export the language definition"_s, cmdExport}};
}

// What is shown

void LanguagePage::Initialize(KeywordDefiner* definer)
{
    m_definer = definer;
    for (QWidget* part : {static_cast<QWidget*>(txtLanguage), static_cast<QWidget*>(txtCommentDelimiter),
                          static_cast<QWidget*>(txtCommentDelimiterStart),
                          static_cast<QWidget*>(txtCommentDelimiterEnd), static_cast<QWidget*>(lblKeywordColour),
                          static_cast<QWidget*>(lblTextColour), static_cast<QWidget*>(lblNotesColour),
                          static_cast<QWidget*>(fgrdList), static_cast<QWidget*>(txtRules), cmdExport->parentWidget()})
        part->setEnabled(definer); // the colours by rules are the user's, whatever library is open
    QList<quint32> recent;
    for (const QString& color : Remembered(Memory::KeywordDefinerColours).split(u',', Qt::SkipEmptyParts))
        recent << color.toUInt();
    for (ColorButton* button : {lblKeywordColour, lblTextColour, lblNotesColour})
        button->SetRecent(recent);
    InitializeLanguagePage();
}

TokenPalette LanguagePage::Palette() const
{
    return m_colours->Palette();
}

void LanguagePage::SetPalette(const TokenPalette& palette)
{
    m_colours->SetPalette(palette);
    m_sample->SetPalette(palette);
}

void LanguagePage::KeepColours() const
{
    Remember(Memory::KeywordDefinerColours,
             QString::number(lblNotesColour->Color()) + u',' + QString::number(lblKeywordColour->Color()));
}

void LanguagePage::InitializeLanguagePage()
{
    const QScopedValueRollback loading(m_loading, true);
    ShowValues();
    FillKeywordGrid();
}

void LanguagePage::ShowValues()
{
    const LanguageDefinition values = m_definer ? m_definer->Values() : LanguageDefinition();
    txtLanguage->setText(values.Language);
    txtCommentDelimiter->setText(values.Comment);
    txtCommentDelimiterStart->setText(values.CommentStart);
    txtCommentDelimiterEnd->setText(values.CommentEnd);
    lblKeywordColour->SetColor(quint32(values.ColouredKeywordColour));
    lblTextColour->SetColor(quint32(values.KeywordColour));
    lblNotesColour->SetColor(quint32(values.CommentColour));
    for (QLineEdit* box : {txtCommentDelimiter, txtCommentDelimiterStart, txtCommentDelimiterEnd})
        SetTextColor(*box, quint32(values.CommentColour));
    chkCorrectSpelling->setChecked(CorrectsSpelling(values.Rules));
    txtRules->setPlainText(WithCorrectsSpelling(values.Rules, true));
    ShowRulesState();
    ShowSample();
}

/// With rules that paint, no spelling is ever corrected.
void LanguagePage::ShowRulesState()
{
    const LanguageRules rules(txtRules->toPlainText(), {}, {});
    chkCorrectSpelling->setEnabled(m_definer && !rules.Paints());
    const QString state = rules.Paints()
                              ? u"Texts are painted by these rules, which change no character of them."_s
                              : u"Without rules, texts are coloured by the words and comment delimiters alone."_s;
    m_problems->setText(rules.Problems().isEmpty() ? state
                                                   : u"Passed over: "_s + rules.Problems().mid(0, 3).join(u' '));
}

void LanguagePage::TakeRules()
{
    if (m_loading)
        return;
    TakeValues();
    ShowRulesState();
}

void LanguagePage::ShowSample()
{
    LanguageDefinition language = m_definer ? m_definer->Values() : LanguageDefinition();
    if (!m_definer || SampleOf(language).isEmpty())
        language = LanguageNamed(u"cpp"_s);
    if (m_definer) {
        language.ColouredWords = m_definer->GetKeywords(true);
        language.PlainWords = m_definer->GetKeywords(false);
    }
    m_sample->ShowLanguage(language);
}

void LanguagePage::TakeValues()
{
    if (m_loading || !m_definer)
        return;
    LanguageDefinition values = m_definer->Values();
    values.Language = txtLanguage->text();
    values.Comment = txtCommentDelimiter->text();
    values.CommentStart = txtCommentDelimiterStart->text();
    values.CommentEnd = txtCommentDelimiterEnd->text();
    values.ColouredKeywordColour = qint32(lblKeywordColour->Color());
    values.KeywordColour = qint32(lblTextColour->Color());
    values.CommentColour = qint32(lblNotesColour->Color());
    values.Rules = WithCorrectsSpelling(txtRules->toPlainText(), chkCorrectSpelling->isChecked());
    m_definer->SetValues(values);
    for (QLineEdit* box : {txtCommentDelimiter, txtCommentDelimiterStart, txtCommentDelimiterEnd})
        SetTextColor(*box, lblNotesColour->Color());
    Q_EMIT Changed();
}

// Definition files

void LanguagePage::ExportLanguageDefinition()
{
    const QString path = RequestFileName ? RequestFileName(true) : QString();
    if (path.isEmpty() || !m_definer)
        return;
    Guarded(ModuleName, u"ExportLanguageDefinition"_s, [&] {
        CWaitCursor wait;
        wait.SetCursor(CWaitCursor::Hourglass);
        QCoreApplication::processEvents();
        m_definer->ExportLanguageDefinition(path);
    });
}

void LanguagePage::ImportLanguageDefinition()
{
    const QString path = RequestFileName ? RequestFileName(false) : QString();
    if (!path.isEmpty())
        ImportFile(path);
}

void LanguagePage::ImportFile(const QString& path)
{
    if (!m_definer)
        return;
    bool taken = false;
    try {
        CWaitCursor wait;
        wait.SetCursor(CWaitCursor::Hourglass);
        QCoreApplication::processEvents();
        taken = m_definer->ImportLanguageDefinition(path);
    } catch (const RuntimeError& error) { // what is wrong with the file is no fault of the program
        Prompts::Current().MsgBox(
            {.Text = error.Description(), .Caption = u"Import Language Definition"_s, .Icon = MsgBoxIcon::Exclamation});
    }
    InitializeLanguagePage();
    if (taken)
        Q_EMIT Changed();
}

} // namespace qb
