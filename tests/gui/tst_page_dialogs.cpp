#include "support/GuiRun.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "web/ui/frmInsertLink.h"
#include "web/ui/frmInsertPicture.h"

#include <QBuffer>
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray Png(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

std::vector<LinkableItem> Items()
{
    return {{7, u"Binary search"_s, u"Algorithms"_s},
            {8, u"Linked list"_s, u"Containers"_s},
            {9, u"List of colours"_s, {}}};
}

} // namespace

/// The dialogs that ask what to put into a page.
class TestPageDialogs : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support )"_s));
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_place = {m_home->Path(u"pages"_s) + u'/', u"17"_s};
        m_file = m_home->Path(u"tree.png"_s);
        WriteFile(m_file, Png(400, 300));
    }
    void cleanup() { m_prompts.reset(); }

    void picture_isCopiedWhenAccepted()
    {
        frmInsertPicture dialog(nullptr, m_place);
        QVERIFY(!Find<QPushButton>(dialog, u"cmdInsert"_s)->isEnabled());
        m_prompts->ExpectFileName(u"Insert picture"_s, m_file);
        Find<QPushButton>(dialog, u"cmdFile"_s)->click();
        QVERIFY(Find<QLabel>(dialog, u"lblPicture"_s)->text().startsWith(u"tree.png: 400 × 300 pixels"_s));
        Find<QSpinBox>(dialog, u"txtWidth"_s)->setValue(200);
        QCOMPARE(Find<QSpinBox>(dialog, u"txtHeight"_s)->value(), 150);
        Find<QCheckBox>(dialog, u"chkRatio"_s)->setChecked(false);
        Find<QSpinBox>(dialog, u"txtHeight"_s)->setValue(10);
        QCOMPARE(Find<QSpinBox>(dialog, u"txtWidth"_s)->value(), 200);
        QVERIFY(!QDir(m_place.PagesFolder).exists());
        Find<QPushButton>(dialog, u"cmdInsert"_s)->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.Chosen().Picture.Source, u"17/tree.png"_s);
        QCOMPARE(dialog.Chosen().Width, 200);
        QCOMPARE(dialog.Chosen().Height, 10);
        QCOMPARE(ReadFile(m_place.PagesFolder + u"17/tree.png"_s), ReadFile(m_file));
    }

    void cancelled_leavesNothing()
    {
        frmInsertPicture dialog(nullptr, m_place);
        dialog.TakeFile(m_file);
        dialog.reject();
        QVERIFY(!QDir(m_place.PagesFolder).exists());
    }

    void whatIsNoPicture_isToldAndNotTaken()
    {
        frmInsertPicture dialog(nullptr, m_place);
        const QString text = m_home->Path(u"text.png"_s);
        WriteFile(text, "\x89PNG\r\n\x1a\n and nothing behind it");
        for (const QString& file : {text, m_home->Path(u"none.png"_s), m_home->Path()}) {
            dialog.TakeFile(file);
            QVERIFY(!Find<QPushButton>(dialog, u"cmdInsert"_s)->isEnabled());
            QVERIFY(!Find<QLabel>(dialog, u"lblPicture"_s)->text().isEmpty());
        }
        dialog.accept();
        QVERIFY(dialog.result() != QDialog::Accepted);
    }

    void pictureOfTheClipboard_isTaken()
    {
        frmInsertPicture dialog(nullptr, m_place);
        QApplication::clipboard()->clear();
        Find<QPushButton>(dialog, u"cmdClipboard"_s)->click();
        QCOMPARE(Find<QLabel>(dialog, u"lblPicture"_s)->text(), u"There is no picture on the clipboard."_s);
        QApplication::clipboard()->setImage(QImage::fromData(Png(30, 20)));
        Find<QPushButton>(dialog, u"cmdClipboard"_s)->click();
        dialog.accept();
        QCOMPARE(dialog.Chosen().Picture.Source, u"17/picture.png"_s);
        QCOMPARE(dialog.Chosen().Width, 30);
    }

    void link_isWhatWasTyped()
    {
        frmInsertLink dialog(nullptr, {u"http://example.org"_s, {}, {}, {}}, Items);
        Find<QLineEdit>(dialog, u"txtText"_s)->setText(u"text"_s);
        Find<QLineEdit>(dialog, u"txtBefore"_s)->setText(u"see"_s);
        Find<QLineEdit>(dialog, u"txtBehind"_s)->setText(u"there"_s);
        const PageLink link = dialog.Link();
        QCOMPARE(QStringList({link.Address, link.Text, link.Before, link.Behind}),
                 QStringList({u"http://example.org"_s, u"text"_s, u"see"_s, u"there"_s}));
        Find<QLineEdit>(dialog, u"txtAddress"_s)->setText(u"  "_s);
        QCOMPARE(dialog.Link().Address, u"http://"_s);
    }

    void enter_inserts()
    {
        frmInsertLink link(nullptr, {u"http://example.org"_s, {}, {}, {}}, Items);
        link.show();
        QTest::keyClick(Find<QLineEdit>(link, u"txtText"_s), Qt::Key_Return);
        QCOMPARE(link.result(), int(QDialog::Accepted));
        frmInsertPicture picture(nullptr, m_place);
        picture.show();
        picture.TakeFile(m_file);
        QTest::keyClick(&picture, Qt::Key_Return);
        QCOMPARE(picture.result(), int(QDialog::Accepted));
    }

    void item_isFoundAndTaken()
    {
        frmInsertLink dialog(nullptr, {}, Items);
        dialog.show();
        Find<QPushButton>(dialog, u"cmdItem"_s)->click();
        auto* list = Find<QListWidget>(dialog, u"lstItems"_s);
        QVERIFY(list->isVisible());
        QCOMPARE(list->count(), 3);
        Find<QLineEdit>(dialog, u"txtItem"_s)->setText(u"list"_s);
        QCOMPARE(list->count(), 2);
        list->setCurrentRow(1);
        QCOMPARE(dialog.Link().Address, u"local://Item8"_s);
        QCOMPARE(dialog.Link().Text, u"Linked list"_s);
        list->setCurrentRow(0);
        QCOMPARE(dialog.Link().Text, u"List of colours"_s);
        Find<QLineEdit>(dialog, u"txtText"_s)->setText(u"mine"_s);
        list->setCurrentRow(1);
        QCOMPARE(dialog.Link().Text, u"mine"_s);
        TakePicture(dialog, u"insert-link-item"_s);
    }

    void pictures()
    {
        for (const bool dark : {false, true}) {
            const QString suffix = dark ? u"-dark"_s : QString();
            const QPalette before = QApplication::palette();
            if (dark)
                QApplication::setPalette(DarkPalette());
            frmInsertPicture picture(nullptr, m_place);
            picture.show();
            TakePicture(picture, u"insert-picture-empty"_s + suffix);
            picture.TakeFile(m_file);
            TakePicture(picture, u"insert-picture"_s + suffix);
            frmInsertLink link(nullptr, {u"http://example.org"_s, u"The rules"_s, {}, {}}, Items);
            link.show();
            TakePicture(link, u"insert-link"_s + suffix);
            QApplication::setPalette(before);
        }
    }

private:
    template <class Type>
    Type* Find(QWidget& dialog, const QString& name)
    {
        return dialog.findChild<Type*>(name);
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    PicturePlace m_place;
    QString m_file;
};

QB_GUI_TEST_MAIN(TestPageDialogs)
#include "tst_page_dialogs.moc"
