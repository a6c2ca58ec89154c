#include "panels/ui/frmImportType.h"

#include "platform/system/Prompts.h"
#include "support/ui/Icons.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QStyle>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

frmImportType::frmImportType(QWidget* parent)
    : QDialog(parent), lblInfo(new QLabel), optNo(new QRadioButton), optYesEach(new QRadioButton),
      optYesAll(new QRadioButton(u"Yes, compress &all files into one file:"_s)), txtZipFileName(new QLineEdit),
      chkDontShowAgain(new QCheckBox(u"&Don't show this dialog again"_s))
{
    constexpr int IconSize = 48;
    constexpr int InfoWidth = 400;
    constexpr int Gap = 12;
    setObjectName(u"frmImportType"_s);
    setWindowTitle(u"Import Files"_s);
    lblInfo->setObjectName(u"lblInfo"_s);
    lblInfo->setWordWrap(true);
    lblInfo->setMinimumWidth(InfoWidth);
    auto* icon = new QLabel;
    icon->setPixmap(IconNamed(u"package-x-generic"_s).pixmap(IconSize));
    icon->setAlignment(Qt::AlignTop);
    const std::pair<QWidget*, QString> names[] = {{optNo, u"optNo"_s},
                                                  {optYesEach, u"optYesEach"_s},
                                                  {optYesAll, u"optYesAll"_s},
                                                  {txtZipFileName, u"txtZipFileName"_s},
                                                  {chkDontShowAgain, u"chkDontShowAgain"_s}};
    for (const auto& [widget, name] : names)
        widget->setObjectName(name);
    txtZipFileName->setAccessibleName(u"Name of the zip file"_s);
    txtZipFileName->setPlaceholderText(u"Name of the zip file"_s);
    txtZipFileName->setValidator(
        new QRegularExpressionValidator(QRegularExpression(u"[^/\\\\]*"_s), this)); // it is a name, no path
    auto* nameRow = new QHBoxLayout;
    nameRow->addSpacing(style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth)
                        + style()->pixelMetric(QStyle::PM_RadioButtonLabelSpacing));
    nameRow->addWidget(txtZipFileName);
    auto* head = new QHBoxLayout;
    head->setSpacing(Gap);
    head->addWidget(icon);
    head->addWidget(lblInfo, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(u"cmdOK"_s);
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(u"cmdCancel"_s);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(head);
    layout->addSpacing(Gap);
    for (QRadioButton* option : {optNo, optYesEach, optYesAll})
        layout->addWidget(option);
    layout->addLayout(nameRow);
    layout->addSpacing(Gap);
    layout->addWidget(chkDontShowAgain);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    connect(optYesAll, &QRadioButton::toggled, this, &frmImportType::UpdateControls);
    connect(buttons, &QDialogButtonBox::accepted, this, &frmImportType::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    optNo->setChecked(true);
    SetMultipleFiles(true);
}

void frmImportType::SetInfo(const QString& text)
{
    lblInfo->setText(text);
}

void frmImportType::SetNoCaption(const QString& text)
{
    optNo->setText(text);
}

void frmImportType::SetYesEachCaption(const QString& text)
{
    optYesEach->setText(text);
}

void frmImportType::SetMultipleFiles(bool multiple)
{
    if (multiple) {
        SetInfo(u"KT Quillbase can compress the files for you. Do you wish the files to be compressed, before saving "
                "them to the library?"_s);
        SetNoCaption(u"&No, don't compress the files."_s);
        SetYesEachCaption(u"Yes, compress &each file to its own zip file."_s);
    } else {
        SetInfo(
            u"KT Quillbase can compress the file for you. Do you wish the file to be compressed, before saving it to "
            "the library?"_s);
        SetNoCaption(u"&No, don't compress the file."_s);
        SetYesEachCaption(u"Yes, compress the file."_s);
        if (optYesAll->isChecked())
            optYesEach->setChecked(true);
    }
    optYesAll->setVisible(multiple);
    txtZipFileName->setVisible(multiple);
    UpdateControls();
}

ImportOption frmImportType::OptionSelected() const
{
    return optYesAll->isChecked()    ? ImportOption::ZipAll
           : optYesEach->isChecked() ? ImportOption::ZipEach
                                     : ImportOption::AsTheyAre;
}

void frmImportType::SetOptionSelected(ImportOption option)
{
    const bool all = option == ImportOption::ZipAll;
    QRadioButton* button = all && !optYesAll->isHidden()            ? optYesAll
                           : all || option == ImportOption::ZipEach ? optYesEach
                                                                    : optNo;
    button->setChecked(true);
}

QString frmImportType::ZipFileName() const
{
    return txtZipFileName->text();
}

void frmImportType::SetZipFileName(const QString& name)
{
    txtZipFileName->setText(name);
    txtZipFileName->selectAll();
}

bool frmImportType::DontShowAgain() const
{
    return chkDontShowAgain->isChecked();
}

void frmImportType::UpdateControls()
{
    txtZipFileName->setEnabled(optYesAll->isChecked());
}

void frmImportType::accept()
{
    if (OptionSelected() == ImportOption::ZipAll) {
        const QString name = txtZipFileName->text().trimmed();
        if (name.isEmpty()) {
            Prompts::Current().MsgBox({.Text = u"Please enter a name for the new zip file that you want to create."_s,
                                       .Caption = u"Zip File Name Missing"_s,
                                       .Icon = MsgBoxIcon::Exclamation});
            txtZipFileName->setFocus();
            return;
        }
        txtZipFileName->setText(WithZipExtension(name));
    }
    QDialog::accept();
}

} // namespace qb
