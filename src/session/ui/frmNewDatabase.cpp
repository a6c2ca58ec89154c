#include "session/ui/frmNewDatabase.h"

#include "session/FileDialogs.h"
#include "session/ui/LanguageChooser.h"
#include "store/ShippedLanguages.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QRadioButton* MakeOption(const QString& name, const QString& text)
{
    auto* option = new QRadioButton(text);
    option->setObjectName(name);
    return option;
}

} // namespace

frmNewDatabase::frmNewDatabase(QWidget* parent)
    : QDialog(parent), m_vb(MakeOption(u"optVB"_s, u"Visual &Basic"_s)), m_cpp(MakeOption(u"optC"_s, u"&C++"_s)),
      m_file(MakeOption(u"optFile"_s, u"Load definition from &file"_s)),
      m_selfDefined(MakeOption(u"optSelfDefined"_s, u"&Self Defined"_s)), m_path(new QLineEdit),
      m_browse(new QPushButton(u"Browse..."_s)), m_shipped(new LanguageChooser(QString(), LanguageChooser::WithSample))
{
    constexpr int PathWidth = 200;
    constexpr QSize Size(960, 460);
    setObjectName(u"frmNewDatabase"_s);
    setWindowTitle(u"New Library"_s);
    m_path->setObjectName(u"txtPath"_s);
    m_path->setMinimumWidth(PathWidth);
    m_path->setAccessibleName(u"Language definition file"_s);
    m_browse->setObjectName(u"cmdBrowse"_s);
    auto* pathRow = new QHBoxLayout;
    pathRow->addSpacing(style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth));
    pathRow->addWidget(m_path);
    pathRow->addWidget(m_browse);
    auto* frame = new QGroupBox(u"Select Language:"_s);
    auto* options = new QVBoxLayout(frame);
    for (QRadioButton* option : {m_vb, m_cpp, m_file})
        options->addWidget(option);
    options->addLayout(pathRow);
    options->addWidget(m_selfDefined);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    m_ok->setObjectName(u"cmdOK"_s);
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(u"cmdCancel"_s);
    auto* shipped = new QGroupBox(u"Languages that come with the program:"_s);
    shipped->setVisible(!m_shipped->IsEmpty());
    auto* shippedLayout = new QVBoxLayout(shipped);
    shippedLayout->addWidget(m_shipped);
    options->addStretch();
    auto* halves = new QHBoxLayout;
    halves->addWidget(frame);
    halves->addWidget(shipped, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(halves, 1);
    layout->addWidget(buttons);

    m_vb->setChecked(true);
    connect(m_file, &QRadioButton::toggled, this, &frmNewDatabase::UpdateControls);
    connect(m_path, &QLineEdit::textChanged, this, &frmNewDatabase::UpdateControls);
    m_browse->setAutoDefault(false); // or it would be the one for Enter
    connect(m_browse, &QPushButton::clicked, this, &frmNewDatabase::Browse);
    // A shipped language is a definition file like any other.
    connect(m_shipped, &LanguageChooser::CurrentChanged, this, [this](const QString& name) {
        const ShippedLanguage* language = ShippedLanguageNamed(name);
        if (!language)
            return;
        m_file->setChecked(true);
        m_path->setText(language->Path);
    });
    connect(m_shipped, &LanguageChooser::Chosen, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    UpdateControls();
    if (!m_shipped->IsEmpty())
        resize(Size);
}

void frmNewDatabase::UpdateControls()
{
    m_path->setEnabled(m_file->isChecked());
    m_browse->setEnabled(m_file->isChecked());
    m_ok->setEnabled(!m_file->isChecked() || !m_path->text().isEmpty());
}

void frmNewDatabase::Browse()
{
    const QString path = GetFileName(false, u"Please select Quillbase language definition file:"_s,
                                     u"KT Quillbase Language Definition|*.qbl"_s);
    if (!path.isEmpty())
        m_path->setText(path);
}

LanguageType frmNewDatabase::LanguageSelected() const
{
    if (result() != QDialog::Accepted)
        return LanguageType::None;
    if (m_vb->isChecked())
        return LanguageType::VB;
    if (m_cpp->isChecked())
        return LanguageType::Cpp;
    return m_file->isChecked() ? LanguageType::File : LanguageType::SelfDefined;
}

QString frmNewDatabase::LanguageFilePath() const
{
    return LanguageSelected() == LanguageType::File ? m_path->text() : QString();
}

} // namespace qb
