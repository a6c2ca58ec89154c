#include "components/ui/WindowPages.h"

#include "components/PageColours.h"
#include "components/ui/frmPageEditor.h"
#include "support/ui/Colors.h"
#include "web/ui/frmInsertPicture.h"

namespace qb {

namespace {

class WindowPages : public PageComponents {
public:
    WindowPages(QWidget* parent, WindowPagesTools tools) : m_parent(parent), m_tools(std::move(tools)) {}

    PageOutcome Edit(const QString& path) override
    {
        const bool isDark = IsDark(m_parent->palette().color(QPalette::Base));
        frmPageEditor editor(m_parent, path, EditingTools(m_tools.Palette(), isDark), m_tools.Items);
        editor.exec();
        return editor.Outcome();
    }
    std::optional<ChosenPicture> ChoosePicture(const PicturePlace& place) override
    {
        frmInsertPicture dialog(m_parent, place);
        return dialog.exec() == QDialog::Accepted ? std::optional(dialog.Chosen()) : std::nullopt;
    }
    std::optional<PageLink> ChooseLink(const QString& address) override
    {
        frmInsertLink dialog(m_parent, {address, {}, {}, {}}, m_tools.Items);
        return dialog.exec() == QDialog::Accepted ? std::optional(dialog.Link()) : std::nullopt;
    }

private:
    QWidget* m_parent;
    WindowPagesTools m_tools;
};

} // namespace

std::unique_ptr<PageComponents> MakePageComponents(QWidget* parent, WindowPagesTools tools)
{
    return std::make_unique<WindowPages>(parent, std::move(tools));
}

PageEditingTools EditingTools(const TokenPalette& palette, bool isDark)
{
    return {.Colour = ColourCode,
            .ColourRules = ScreenColours(palette, isDark),
            .PageColours = PageColours(palette),
            .DarkColours = DarkPageColours(palette),
            .IsDark = isDark};
}

} // namespace qb
