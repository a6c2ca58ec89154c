#include "printing/PrintSetup.h"

#include "config/Remembered.h"

#include <QHash>
#include <QLocale>
#include <QStringList>
#include <cmath>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// A length with its name in the text, and what it may be.
struct LengthRow {
    const char* Name;
    double PrintSetup::*Value;
    double Least;
    double Most;
};
constexpr LengthRow Lengths[] = {
    {"width", &PrintSetup::Width, 50, 2000},    {"height", &PrintSetup::Height, 50, 2000},
    {"left", &PrintSetup::Left, 0, 500},        {"top", &PrintSetup::Top, 0, 500},
    {"right", &PrintSetup::Right, 0, 500},      {"bottom", &PrintSetup::Bottom, 0, 500},
    {"points", &PrintSetup::CodePoints, 4, 24},
};

struct SwitchRow {
    const char* Name;
    bool PrintSetup::*Value;
};
constexpr SwitchRow Switches[] = {
    {"landscape", &PrintSetup::Landscape},
    {"numbers", &PrintSetup::LineNumbers},
    {"colours", &PrintSetup::Colours},
    {"newpages", &PrintSetup::NewPages},
};

/// "name=value name=value"
QHash<QString, QString> ValuesOf(const QString& text)
{
    QHash<QString, QString> values;
    for (const QString& word : text.split(u' ', Qt::SkipEmptyParts))
        values.insert(word.section(u'=', 0, 0), word.section(u'=', 1));
    return values;
}

PrintParts PartsFrom(const QString& names)
{
    PrintParts parts;
    for (const PrintPartRow& row : PrintPartRows)
        parts.setFlag(row.Part, names.split(u',').contains(QLatin1StringView(row.Name)));
    return parts;
}

} // namespace

bool PrintSetup::HasRoom() const
{
    constexpr double LeastRoom = 40;
    return PageWidth() - Left - Right >= LeastRoom && PageHeight() - Top - Bottom >= LeastRoom;
}

PrintSetup PrintSetup::Default()
{
    PrintSetup setup;
    if (QLocale::system().measurementSystem() == QLocale::ImperialUSSystem) {
        setup.Width = 215.9;
        setup.Height = 279.4;
    }
    return setup;
}

PrintSetup PrintSetup::FromText(const QString& text)
{
    const QHash<QString, QString> values = ValuesOf(text);
    const PrintSetup standard = Default();
    PrintSetup setup = standard;
    for (const SwitchRow& row : Switches) {
        if (const auto value = values.constFind(QLatin1StringView(row.Name)); value != values.constEnd())
            setup.*row.Value = *value == u"1";
    }
    for (const LengthRow& row : Lengths) {
        bool isNumber = false;
        const double value = values.value(QLatin1StringView(row.Name)).toDouble(&isNumber);
        if (isNumber && std::isfinite(value) && value >= row.Least && value <= row.Most)
            setup.*row.Value = value;
    }
    if (const auto parts = values.constFind(u"parts"_s); parts != values.constEnd())
        setup.Parts = PartsFrom(*parts);
    if (setup.HasRoom())
        return setup;
    for (const LengthRow& row : Lengths)
        setup.*row.Value = standard.*row.Value;
    return setup;
}

QString PrintSetup::ToText() const
{
    QStringList words;
    for (const LengthRow& row : Lengths)
        words << u"%1=%2"_s.arg(QLatin1StringView(row.Name)).arg(this->*row.Value);
    for (const SwitchRow& row : Switches)
        words << u"%1=%2"_s.arg(QLatin1StringView(row.Name)).arg(this->*row.Value ? 1 : 0);
    QStringList parts;
    for (const PrintPartRow& row : PrintPartRows) {
        if (Parts.testFlag(row.Part))
            parts << QString::fromLatin1(row.Name);
    }
    words << u"parts="_s + parts.join(u',');
    return words.join(u' ');
}

PrintSetup PrintSetup::Last()
{
    return FromText(Remembered(Memory::PrintSetup));
}

void PrintSetup::Keep() const
{
    Remember(Memory::PrintSetup, ToText());
}

} // namespace qb
