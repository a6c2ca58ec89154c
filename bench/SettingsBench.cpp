#include "BenchLibrary.h"

#include "config/CSettings.h"
#include "platform/dao/DBEngine.h"
#include "platform/richtext/RichText.h"
#include "session/ui/frmSettings.h"
#include "store/CDBCreate.h"
#include "store/KeywordDefiner.h"
#include "store/Library.h"
#include "text/CTextFormat.h"

#include <QCoreApplication>
#include <QFile>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

/// A definition of the C++ language with @p words words, of which only the language's own occur.
LanguageDefinition Definition(int words)
{
    LanguageDefinition language = BuiltInLanguage(LanguageType::Cpp);
    for (int i = int(language.ColouredWords.size()); i < words / 2; ++i)
        language.ColouredWords << u"c%1"_s.arg(i);
    for (int i = int(language.PlainWords.size()); i < words / 2; ++i)
        language.PlainWords << u"p%1"_s.arg(i);
    return language;
}

/// A new library of that language, open.
class LanguageLibrary {
    BenchHome m_home;

public:
    explicit LanguageLibrary(const QString& folder, int words) : m_home(folder), File(m_home.Library() + u".qbl"_s)
    {
        QFile::remove(m_home.Library());
        QFile::remove(File);
        WriteLanguageFile(File, Definition(words));
        CDBCreate().CreateNewDB(m_home.Library(), LanguageType::Cpp, {});
        Library = qb::Library::Open(m_home.Library());
    }
    QString File;
    std::unique_ptr<qb::Library> Library;
};

void ImportLanguage(benchmark::State& state)
{
    LanguageLibrary home(u"import-language"_s, int(state.range(0)));
    for (auto _ : state) {
        KeywordDefiner definer(*home.Library);
        definer.ImportLanguageDefinition(home.File);
        definer.SaveLanguage();
        definer.Commit();
        if (definer.RowCount() != state.range(0) + 1)
            state.SkipWithError("words are missing");
    }
}

/// From the menu entry until the dialog is painted, with its language page.
void OptionsDialogOpen(benchmark::State& state)
{
    LanguageLibrary home(u"options"_s, 5000);
    {
        KeywordDefiner definer(*home.Library);
        definer.ImportLanguageDefinition(home.File);
        definer.Commit();
    }
    CSettings settings([&home] { return home.Library.get(); });
    settings.SkipDayCount();
    for (auto _ : state) {
        frmSettings dialog;
        dialog.InitializeSettings(settings, home.Library.get());
        dialog.show();
        QCoreApplication::processEvents();
        dialog.repaint();
    }
}

void ColorizeWithKeywords(benchmark::State& state)
{
    LanguageLibrary home(u"colorize-keywords"_s, int(state.range(0)));
    {
        KeywordDefiner definer(*home.Library);
        definer.ImportLanguageDefinition(home.File);
        definer.SaveLanguage();
        definer.Commit();
    }
    CTextFormat format;
    format.ColorizeInit(*home.Library);
    const QString text = CppSource(2'000'000);
    for (auto _ : state) {
        RichText box;
        box.SetText(text);
        format.ColorizeCode(box);
        benchmark::DoNotOptimize(box.Document().Length());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * text.size());
}

} // namespace

BENCHMARK(ImportLanguage)->Name("import_language")->Arg(5000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(OptionsDialogOpen)->Name("options_dialog_open")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(10);
BENCHMARK(ColorizeWithKeywords)->Name("colorize/200_keywords")->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(ColorizeWithKeywords)->Name("colorize/5000_keywords")->Arg(5000)->Unit(benchmark::kMillisecond);

} // namespace qb::bench
