#pragma once

#include "text/ItemDetailsView.h"

#include <QWidget>
#include <array>

class QLabel;
class QPlainTextEdit;
class QStackedWidget;
class QTabWidget;

namespace qb {

/// The panel that shows the current item: its title and description, and a tab each for code,
/// notes, usage and info, whose images tell which of them have content. With no item it shows
/// the welcome page.
class ctlCodeDetails : public QWidget, public ItemDetailsView {
    Q_OBJECT

public:
    explicit ctlCodeDetails(QWidget* parent = nullptr);

    void Initialise(Database* database, CCodeItem* item) override;
    void TreeReplaced() override;
    void SetLocked(bool locked) override;
    void SetCodeEnabled(bool hasContent) override;
    void SetNotesEnabled(bool hasContent) override;
    void SetUsageEnabled(bool hasContent) override;
    void SetFilesEnabled(bool hasContent) override;
    void SetLinksEnabled(bool hasContent) override;

private:
    enum Tab { CodeTab, NotesTab, UsageTab, InfoTab, TabCount };

    QWidget* MakeWelcomePage();
    QWidget* MakeItemPage();
    QPlainTextEdit* MakeBox(const QString& name, bool isCode);
    void SetTabEnabled(Tab tab, bool hasContent);
    void DisplayTabWithContent();
    void ShowAttachments();
    void ShowWelcomeFacts(Database* database);

    QStackedWidget* m_pages;
    QLabel* m_title = nullptr;
    QLabel* m_description = nullptr;
    QLabel* m_attachments = nullptr;
    QLabel* m_facts = nullptr;
    QLabel* m_hint = nullptr;
    QTabWidget* m_tabs = nullptr;
    std::array<QPlainTextEdit*, TabCount> m_boxes{};
    std::array<bool, TabCount> m_hasContent{};
    bool m_hasFiles = false;
    bool m_hasPage = false;
    bool m_locked = false;
};

} // namespace qb
