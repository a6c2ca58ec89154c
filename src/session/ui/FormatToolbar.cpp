#include "session/ui/FormatToolbar.h"

#include "config/CSettings.h"
#include "support/ErrorRoutine.h"
#include "support/ui/ColorButton.h"
#include "support/ui/Colors.h"
#include "support/ui/Icons.h"
#include "text/ui/RichTextBox.h"
#include "text/ui/ctlCodeDetails.h"

#include <QActionGroup>
#include <QComboBox>
#include <QFontDatabase>
#include <QFontDialog>
#include <QGuiApplication>
#include <QMenu>
#include <QPainter>
#include <QToolButton>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

using Details = ctlCodeDetails;

struct FormatRow {
    const char* Key;  ///< of the button
    const char* Menu; ///< name of the entry
    const char* Caption;
    const char* Icon;
    const char* Shortcut;
    bool IsState; ///< is on or off
    void (*Run)(Details& details);
};
constexpr FormatRow FormatRows[] = {
    {"BOLD", "mnuBoldItem", "&Bold", "format-text-bold", "Ctrl+B", true,
     [](Details& details) { details.SetBold(!details.Bold()); }},
    {"ITALIC", "mnuItalicItem", "&Italic", "format-text-italic", "Ctrl+I", true,
     [](Details& details) { details.SetItalic(!details.Italic()); }},
    {"UNDERLINE", "mnuUnderlineItem", "&Underline", "format-text-underline", "Ctrl+U", true,
     [](Details& details) { details.SetUnderline(!details.Underline()); }},
    {"", "", "", "", "", false, nullptr},
    {"BULLETS", "mnuBullet", "B&ullets", "format-list-unordered", "", true,
     [](Details& details) { details.SetBullets(!details.Bullets()); }},
    {"ALIGN_LEFT", "mnuAlignmentLeft", "Align &Left", "format-justify-left", "", true,
     [](Details& details) { details.SetAlignment(int(TextAlignment::Left)); }},
    {"ALIGN_CENTER", "mnuAlignmentCenter", "Align &Centre", "format-justify-center", "", true,
     [](Details& details) { details.SetAlignment(int(TextAlignment::Center)); }},
    {"ALIGN_RIGHT", "mnuAlignmentRight", "Align &Right", "format-justify-right", "", true,
     [](Details& details) { details.SetAlignment(int(TextAlignment::Right)); }},
    {"", "", "", "", "", false, nullptr},
    {"GROW", "mnuIncreaseIndent", "I&ncrease Indent", "format-indent-more", "", false,
     [](Details& details) { details.IncreaseIndent(); }},
    {"SHRINK", "mnuDecreaseIndent", "&Decrease Indent", "format-indent-less", "", false,
     [](Details& details) { details.DecreaseIndent(); }},
};

/// A letter over a bar of the colour, sharp at every scale.
QIcon LetterOver(quint32 color, const QWidget& widget)
{
    QIcon icon;
    for (const int scale : {1, 2, 3}) {
        constexpr int Size = 22;
        constexpr int Bar = 5;
        QPixmap pixmap(Size * scale, Size * scale);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.scale(scale, scale);
        QFont font = widget.font();
        font.setBold(true);
        font.setPixelSize(Size - Bar - 3);
        painter.setFont(font);
        painter.setPen(
            QGuiApplication::palette().color(QPalette::WindowText)); // the widget may not have heard of it yet
        painter.drawText(QRect(0, 0, Size, Size - Bar), Qt::AlignCenter, u"A"_s);
        painter.fillRect(QRect(2, Size - Bar, Size - 4, Bar - 1), ColorOf(color));
        painter.end();
        pixmap.setDevicePixelRatio(scale);
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

FormatToolbar::FormatToolbar(ctlCodeDetails& details, QWidget* parent) : QToolBar(parent), m_details(details)
{
    setObjectName(u"tlbTextFormat"_s);
    setWindowTitle(u"Format"_s);
    MakeFontLists();
    auto* alignment = new QActionGroup(this);
    for (const FormatRow& row : FormatRows) {
        if (!*row.Key) {
            addSeparator();
            continue;
        }
        QAction* action = MakeAction(QString::fromLatin1(row.Key));
        action->setText(QString::fromLatin1(row.Caption));
        action->setIcon(IconNamed(QString::fromLatin1(row.Icon)));
        action->setCheckable(row.IsState);
        if (*row.Shortcut)
            action->setShortcut(QKeySequence(QString::fromLatin1(row.Shortcut)));
        if (QByteArrayView(row.Key).startsWith("ALIGN"))
            alignment->addAction(action);
        connect(action, &QAction::triggered, this, std::bind_front(&FormatToolbar::Run, this, row.Run));
        addAction(action);
        widgetForAction(action)->setProperty("key", action->property("key"));
    }
    addSeparator();
    MakeColorButton(Color1);
    MakeColorButton(Color2);
    ConnectState();
}

QAction* FormatToolbar::MakeAction(const QString& key)
{
    auto* action = new QAction(this);
    action->setProperty("key", key);
    action->setObjectName(key);
    m_actions.insert(key, action);
    return action;
}

void FormatToolbar::Run(const std::function<void(ctlCodeDetails&)>& change)
{
    const UserTextBox* box = m_details.CurrentBox();
    if (!box || box->Locked() || !m_settings)
        return;
    change(m_details);
    m_details.CurrentView() == DetailsTab::Files ? m_details.FileNotesSetFocus() : m_details.NotesSetFocus();
}

template <class Method, class Value>
void FormatToolbar::Set(Method set, const Value& value)
{
    Run([&](ctlCodeDetails& details) { (details.*set)(value); });
}

// Fonts

void FormatToolbar::MakeFontLists()
{
    constexpr int FontCharacters = 14;
    cboFont = new QComboBox;
    cboFont->setObjectName(u"cboFont"_s);
    cboFont->setAccessibleName(u"Font"_s);
    cboFont->setToolTip(u"Font"_s);
    cboFont->setMinimumContentsLength(FontCharacters);
    cboFont->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cboFontSize = new QComboBox;
    cboFontSize->setObjectName(u"cboFontSize"_s);
    cboFontSize->setAccessibleName(u"Font size"_s);
    cboFontSize->setToolTip(u"Font size"_s);
    connect(cboFont, &QComboBox::textActivated, this,
            [this](const QString& name) { Set(&ctlCodeDetails::SetFontName, name); });
    connect(cboFontSize, &QComboBox::textActivated, this,
            [this](const QString& size) { Set(&ctlCodeDetails::SetFontSize, size.toInt()); });
    addWidget(cboFont);
    addWidget(cboFontSize);
    addSeparator();
}

void FormatToolbar::sbTextTomatToolbarInitialize()
{
    cboFont->clear();
    cboFont->addItems(QFontDatabase::families());
    cboFontSize->clear();
    for (const int size : QFontDatabase::standardSizes())
        cboFontSize->addItem(QString::number(size));
    cboFont->setCurrentIndex(-1);
    cboFontSize->setCurrentIndex(-1);
}

// Colours

void FormatToolbar::MakeColorButton(Color which)
{
    const QString key = which == Color1 ? u"COLOUR1"_s : u"COLOUR2"_s;
    QAction* apply = MakeAction(key);
    apply->setText(which == Color1 ? u"Colour &1"_s : u"Colour &2"_s);
    apply->setShortcut(QKeySequence(which == Color1 ? u"Ctrl+1"_s : u"Ctrl+2"_s));
    connect(apply, &QAction::triggered, this, std::bind_front(&FormatToolbar::ApplyColor, this, which));
    addAction(apply);
    auto* button = qobject_cast<QToolButton*>(widgetForAction(apply));
    button->setProperty("key", key);
    auto* menu = new QMenu(button);
    for (const ColorPreset& row : ColorPresets()) {
        QAction* entry = menu->addAction(Swatch(row.Value), QString::fromLatin1(row.Caption));
        entry->setProperty("key", QString::fromLatin1(row.Key));
        connect(entry, &QAction::triggered, this, std::bind_front(&FormatToolbar::ChooseColor, this, which, row.Value));
    }
    menu->addSeparator();
    QAction* custom = menu->addAction(u"Custom..."_s);
    custom->setProperty("key", u"CUSTOM"_s);
    connect(custom, &QAction::triggered, this, std::bind_front(&FormatToolbar::ChooseCustomColor, this, which));
    button->setMenu(menu);
    button->setPopupMode(QToolButton::MenuButtonPopup);
    m_colorButtons[which] = button;
}

void FormatToolbar::ShowColors(CSettings& settings)
{
    m_settings = &settings;
    m_actions[u"COLOUR1"_s]->setIcon(LetterOver(quint32(settings.DefaultColor1()), *this));
    m_actions[u"COLOUR2"_s]->setIcon(LetterOver(quint32(settings.DefaultColor2()), *this));
}

void FormatToolbar::ApplyColor(Color which)
{
    if (!m_settings)
        return;
    const auto color = quint32(which == Color1 ? m_settings->DefaultColor1() : m_settings->DefaultColor2());
    Set(&ctlCodeDetails::SetFontColor, color);
}

void FormatToolbar::ChooseColor(Color which, quint32 color)
{
    which == Color1 ? m_settings->SetDefaultColor1(int(color)) : m_settings->SetDefaultColor2(int(color));
    m_settings->ApplyOrTakeBack();
    ShowColors(*m_settings);
    Set(&ctlCodeDetails::SetFontColor, color); // whether it can be kept or not
}

void FormatToolbar::ChooseCustomColor(Color which)
{
    if (!m_settings)
        return;
    const auto now = quint32(which == Color1 ? m_settings->DefaultColor1() : m_settings->DefaultColor2());
    if (const auto color = qb::AskForColor(this, now, u"Text Colour"_s))
        ChooseColor(which, *color);
}

void FormatToolbar::AskForColor()
{
    if (const auto color = qb::AskForColor(this, 0, u"Text Colour"_s))
        Set(&ctlCodeDetails::SetFontColor, *color);
}

void FormatToolbar::AskForFont()
{
    bool chosen = false;
    const QFont font = QFontDialog::getFont(&chosen, QFont(m_details.FontName(), m_details.FontSize()), this,
                                            u"Font"_s);
    if (!chosen)
        return;
    Run([&](ctlCodeDetails& details) {
        details.SetFontName(font.family());
        details.SetFontSize(font.pointSize());
    });
}

// State and menu

void FormatToolbar::ConnectState()
{
    const auto check = [this](const QString& key) {
        return [action = m_actions[key]](bool on) { action->setChecked(on); };
    };
    connect(&m_details, &ctlCodeDetails::eNotesBoldStateChanged, this, check(u"BOLD"_s));
    connect(&m_details, &ctlCodeDetails::eNotesItalicStateChanged, this, check(u"ITALIC"_s));
    connect(&m_details, &ctlCodeDetails::eNotesUnderlineStateChanged, this, check(u"UNDERLINE"_s));
    connect(&m_details, &ctlCodeDetails::NotesBulletStateChanged, this, check(u"BULLETS"_s));
    connect(&m_details, &ctlCodeDetails::NotesAllignmentStateChanged, this, [this](int alignment) {
        const QString keys[] = {u"ALIGN_LEFT"_s, u"ALIGN_RIGHT"_s, u"ALIGN_CENTER"_s};
        if (alignment >= 0 && size_t(alignment) < std::size(keys))
            m_actions[keys[alignment]]->setChecked(true);
    });
    connect(&m_details, &ctlCodeDetails::eNotesFontChanged, this, [this](const QString& font) {
        if (!font.isEmpty() && cboFont->findText(font) < 0)
            cboFont->addItem(font); // of a text from elsewhere; this machine shows it with another
        cboFont->setCurrentIndex(cboFont->findText(font));
    });
    connect(&m_details, &ctlCodeDetails::eNotesFontSizeChanged, this, [this](int size) {
        const QString text = QString::number(size);
        if (size > 0 && cboFontSize->findText(text) < 0)
            cboFontSize->addItem(text);
        cboFontSize->setCurrentIndex(cboFontSize->findText(text));
    });
}

void FormatToolbar::FillMenu(QMenu& menu)
{
    const auto add = [&](const QString& name, const QString& caption, auto run) {
        QAction* action = menu.addAction(caption);
        action->setObjectName(name);
        connect(action, &QAction::triggered, this, run);
        m_menuActions << action;
        return action;
    };
    // A button's own action serves in the menu too, under the button's name; the entry's is a property.
    for (const FormatRow& row : FormatRows) {
        if (!*row.Key) {
            menu.addSeparator();
            continue;
        }
        QAction* action = m_actions[QString::fromLatin1(row.Key)];
        action->setObjectName(QString::fromLatin1(row.Menu));
        menu.addAction(action);
    }
    menu.addSeparator();
    add(u"mnuFontItem"_s, u"&Font..."_s, std::bind_front(&FormatToolbar::AskForFont, this));
    QMenu* sizes = menu.addMenu(u"Font &Size"_s);
    sizes->menuAction()->setObjectName(u"mnuFontSizeItem"_s);
    m_menuActions << sizes->menuAction();
    for (int i = 0; i < cboFontSize->count(); ++i) {
        const QString size = cboFontSize->itemText(i);
        connect(sizes->addAction(size), &QAction::triggered, this,
                [this, size] { Set(&ctlCodeDetails::SetFontSize, size.toInt()); });
    }
    menu.addSeparator();
    for (const Color which : {Color1, Color2}) {
        QAction* action = m_actions[which == Color1 ? u"COLOUR1"_s : u"COLOUR2"_s];
        action->setObjectName(which == Color1 ? u"mnuFontColor1"_s : u"mnuFontColor2"_s);
        menu.addAction(action);
    }
    add(u"mnuColorItem"_s, u"C&olour..."_s, std::bind_front(&FormatToolbar::AskForColor, this));
}

void FormatToolbar::SetCommandsEnabled(bool enabled)
{
    for (QAction* action : std::as_const(m_actions))
        action->setEnabled(enabled);
    for (QAction* action : std::as_const(m_menuActions))
        action->setEnabled(enabled);
    cboFont->setEnabled(enabled);
    cboFontSize->setEnabled(enabled);
}

} // namespace qb
