#pragma once

#include "printing/PrintRequest.h"
#include "printing/PrintSetup.h"

#include <QDialog>
#include <QHash>
#include <functional>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QPrinter;
class QPushButton;
class QToolButton;
class QVBoxLayout;

namespace qb {

class PagedPrint;
class PrintPreview;

/// Shows the pages of an item before they are printed, and what can be chosen about them.
class frmPrint : public QDialog, public PrintComponent {
    Q_OBJECT

public:
    explicit frmPrint(QWidget* parent);
    ~frmPrint() override;

    // PrintComponent
    void Print(const PrintRequest& request) override;

    /// Shows the pages of an item, which must outlive the dialog's use.
    void Initialize(const PrintRequest& request);
    PrintPreview* Preview() const { return ctlPreview; }

    /// Asks for a printer and for which pages; false: not to be printed. The system's dialog, if nothing else is set.
    std::function<bool(QPrinter& printer)> AskForPrinter;

private:
    QVBoxLayout* MakeOptions();
    QVBoxLayout* MakePreview();
    void MakeSwitches(QVBoxLayout& options);
    void MakeButtons(QVBoxLayout& options);
    void cboReach_Click(int index);
    void ShowSetup();
    void ReadSetup();
    void ShowPages();
    void ShowPageNumber();
    std::unique_ptr<PagedPrint> MakePrint(PrintSource& source) const;
    bool Report(const std::function<void()>& body);
    void cmdPageSetup_Click();
    void cmdPdf_Click();
    bool SavePdf(const QString& file);
    void cmdPrint_Click();
    void cboZoom_Click(int index);
    bool IsShown() const { return m_request != nullptr; }

    const PrintRequest* m_request = nullptr;
    PrintSetup m_setup;
    std::vector<qint64> m_items;           ///< that are printed
    std::unique_ptr<PrintSource> m_source; ///< of the pages that are shown
    QComboBox* cboReach = nullptr;
    int m_reach = 0; ///< the entry that was chosen last
    QHash<int, QCheckBox*> m_parts;
    QCheckBox* chkLineNumbers = nullptr;
    QCheckBox* chkColours = nullptr;
    QCheckBox* chkNewPages = nullptr;
    QDoubleSpinBox* txtPoints = nullptr;
    QComboBox* cboZoom = nullptr;
    QLabel* lblPage = nullptr;
    QToolButton* cmdPrevious = nullptr;
    QToolButton* cmdNext = nullptr;
    QPushButton* cmdPrint = nullptr;
    QPushButton* cmdPdf = nullptr;
    PrintPreview* ctlPreview = nullptr;
};

} // namespace qb
