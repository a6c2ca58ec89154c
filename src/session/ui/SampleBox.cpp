#include "session/ui/SampleBox.h"

#include "text/LanguageSample.h"

namespace qb {

using namespace Qt::StringLiterals;

SampleBox::SampleBox(QWidget* parent) : CodeBox(CodeFont, parent)
{
    setObjectName(u"rtbSample"_s);
    setAccessibleName(u"Sample of the language"_s);
    setFrameShape(QFrame::StyledPanel);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    SetLineNumbers(false);
    SetLocked(true);
}

void SampleBox::ShowLanguage(const LanguageDefinition& language)
{
    m_format.SetLanguage(language);
    RichText sample;
    sample.SetText(SampleOf(language));
    if (!m_format.Rules())
        m_format.ColorizeCode(sample);
    SetColouring(m_format.Rules(), {});
    SetContent(sample);
}

void SampleBox::ShowPalette(const TokenPalette& palette)
{
    SetPalette(palette);
}

} // namespace qb
