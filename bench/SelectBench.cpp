#include "BenchLibrary.h"

#include "panels/ui/ctlSmartTreeView.h"
#include "platform/dao/DBEngine.h"
#include "platform/richtext/RtfPlainText.h"
#include "session/ui/frmCodeLib.h"
#include "store/CCodeItem.h"
#include "store/CDBCreate.h"
#include "store/Library.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QPlainTextEdit>
#include <QTreeView>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int CodeLength = 10000;
constexpr int ItemCount = 50;

void MakeLibrary(const QString& path)
{
    CDBCreate().CreateNewDB(path, LanguageType::Cpp, {});
    const auto database = Library::Open(path);
    QString code;
    for (int line = 0; code.size() < CodeLength; ++line)
        code += u"    const auto value%1 = Compute(%1, factor); // line %1\r\n"_s.arg(line);
    Transaction transaction(*database);
    for (int i = 0; i < ItemCount; ++i) {
        CCodeItem item;
        item.Initialise(*database, {});
        item.SetTitle(u"item %1"_s.arg(i));
        item.SetCode(RtfFromPlainText(code.left(CodeLength - 10) + QString::number(i), CodeFont));
        item.Commit();
    }
    transaction.Commit();
}

/// Counts how often a widget is drawn.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    int Paints = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        Paints += event->type() == QEvent::Paint;
        return false;
    }
};

/// From the selection of an item in the tree until its code is drawn.
void SelectItem(benchmark::State& state)
{
    const BenchHome home(u"select"_s);
    MakeLibrary(home.Library());
    frmCodeLib window;
    window.Form_Load();
    window.resize(1400, 900);
    window.show();
    QCoreApplication::processEvents();
    auto* tree = window.findChild<QTreeView*>(u"tvwTree"_s);
    const QModelIndex root = tree->model()->index(0, 0);
    PaintCounter counter(window.findChild<QPlainTextEdit*>(u"rtbCode"_s)->viewport());
    int row = 0;
    for (auto _ : state) {
        const int before = counter.Paints;
        tree->setCurrentIndex(tree->model()->index(row++ % ItemCount, 0, root));
        while (counter.Paints == before)
            QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }
    window.close();
}

} // namespace

BENCHMARK(SelectItem)->Name("select_item/10kB")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace qb::bench
