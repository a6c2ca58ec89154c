#pragma once

#include "text/CTextFormat.h"
#include "text/ui/CodeBox.h"

namespace qb {

/// A sample of a language in its colours, which can't be edited.
class SampleBox : public CodeBox {
    Q_OBJECT

public:
    explicit SampleBox(QWidget* parent = nullptr);

    void ShowLanguage(const LanguageDefinition& language);
    void ShowPalette(const TokenPalette& palette);

private:
    CTextFormat m_format;
};

} // namespace qb
