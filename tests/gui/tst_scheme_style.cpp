#include "support/GuiRun.h"
#include "support/ui/Appearance.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>
#include <cmath>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// Relative luminance, as WCAG 2.1 defines it.
double Luminance(QColor color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// The contrast of the most different pixel of a part to its surroundings, by WCAG 2.1: 1 to 21.
double ContrastIn(const QImage& image, const QRect& part, QColor around)
{
    double most = 1;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            const double one = Luminance(image.pixelColor(x, y)), other = Luminance(around);
            most = std::max(most, (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05));
        }
    }
    return most;
}

} // namespace

/// What a user has to see of controls, in both of the program's colour schemes.
class TestSchemeStyle : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { ApplyAppearance(u"System"_s, {}, 0); }

    void emptyControls_areSeen_data()
    {
        QTest::addColumn<QString>("scheme");
        QTest::newRow("dark") << u"Dark"_s;
        QTest::newRow("light") << u"Light"_s;
    }
    void emptyControls_areSeen()
    {
        QFETCH(QString, scheme);
        ApplyAppearance(scheme, {}, 0);
        QWidget window;
        auto* layout = new QVBoxLayout(&window);
        auto* box = new QCheckBox(u"A check box"_s);
        auto* button = new QRadioButton(u"A radio button"_s);
        auto* line = new QLineEdit(u"text"_s);
        line->setClearButtonEnabled(true);
        for (QWidget* control : std::initializer_list<QWidget*>{line, box, button})
            layout->addWidget(control);
        window.resize(240, 120);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTest::qWait(300); // the clear button fades in
        TakePicture(window, u"controls-"_s + scheme.toLower());
        const QImage image = window.grab().toImage();
        const QColor around = window.palette().color(QPalette::Window);
        constexpr int Indicator = 14;
        constexpr double Wanted = 3; // of what is needed to use a control
        for (QWidget* control : std::initializer_list<QWidget*>{box, button}) {
            const QRect indicator(control->mapTo(&window, QPoint(0, (control->height() - Indicator) / 2)),
                                  QSize(Indicator, Indicator));
            const double contrast = ContrastIn(image, indicator, around);
            QVERIFY2(contrast >= Wanted, qPrintable(QString::number(contrast)));
        }
        const QRect clear(line->mapTo(&window, QPoint(line->width() - 24, 4)), QSize(20, line->height() - 8));
        const double contrast = ContrastIn(image, clear, line->palette().color(QPalette::Base));
        QVERIFY2(contrast >= Wanted, qPrintable(QString::number(contrast)));
    }
};

QB_GUI_TEST_MAIN(TestSchemeStyle)
#include "tst_scheme_style.moc"
