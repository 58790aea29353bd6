#include "support/dialogsupport.h"
#include "support/testsupport.h"

#include "favorites/addfavoritedialog.h"
#include "favorites/favfile.h"
#include "favorites/favoritesdialog.h"

#include <QAction>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {
const QByteArray kThree = "127.0.1.1:27910\r\nFirst\r\n127.0.2.2\r\nSecond\r\nhost.example:27911\r\nThird  \r\n";

// The editor on the favorites of `file`, which is also on disk.
struct Editing {
    explicit Editing(const QByteArray &file = kThree)
        : editor((writeFile(FavFile::kName, file), new FavoritesDialog(FavFile::parse(file), nullptr)))
    {
        editor->show();
    }
    ~Editing() { delete editor.data(); }  // a test that leaves the editor open
    ItemList *list() const { return child<ItemList>(*editor, "favoritesList_"); }
    void click(const char *button) { QTest::mouseClick(child<QPushButton>(*editor, button), Qt::LeftButton); }
    void deleteRow(int row)
    {
        list()->selectRow(row);
        click("deleteButton_");
    }
    AddFavoriteDialog *dialog() const { return editor->findChild<AddFavoriteDialog *>(); }
    QLineEdit *box(const char *name) const { return child<QLineEdit>(*dialog(), name); }
    AddFavoriteDialog *modify(int row)
    {
        list()->selectRow(row);
        click("modifyButton_");
        return dialog();
    }
    // Clicks a button of the Add or Modify dialog, which closes it.
    bool closeDialogWith(const char *button)
    {
        QTest::mouseClick(child<QPushButton>(*dialog(), button), Qt::LeftButton);
        return QTest::qWaitFor([this] { return !dialog(); });
    }
    bool closeEditorWith(const char *button)
    {
        click(button);
        return QTest::qWaitFor([this] { return !editor; });
    }

    TestEnvironment env;
    QPointer<FavoritesDialog> editor;
    QSignalSpy saved{editor.data(), &FavoritesDialog::favoritesSaved};
};
}

class TestFavorites : public QObject {
    Q_OBJECT
private slots:
    void addToFavoritesWritesTheFile()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        MainWindowDriver::offerListCommands(*w);
        addListedServer(*w, "127.0.18.1", 27910, u"Pulse Arena"_s);
        addListedServer(*w, "127.0.18.2", 0);
        addListedServer(*w, "127.0.18.3", 27910, u"Fav"_s, true);

        MainWindowDriver::addToFavorites(*w, -1);
        QCOMPARE(env.prompts.texts(), QStringList{u"Pick a server from the list first."_s});
        QCOMPARE(env.prompts.shown[0].title, u"Pulsebox"_s);

        MainWindowDriver::addToFavorites(*w, 0);
        const QByteArray first = "127.0.18.1:27910\r\nPulse Arena" + QByteArray(39, ' ') + "\r\n";
        QCOMPARE(readFile(FavFile::kName), first);
        MainWindowDriver::addToFavorites(*w, 1);
        MainWindowDriver::addToFavorites(*w, 1);  // no mark on the row: the same server again
        const QByteArray second = "127.0.18.2\r\n" + QByteArray(50, '\0') + "\r\n";
        QCOMPARE(readFile(FavFile::kName), first + second + second);
        MainWindowDriver::addToFavorites(*w, 2);
        QCOMPARE(env.prompts.texts().last(), u"Already a Favorite"_s);

        // A write that fails (a full disk) leaves the file and the lists as they were.
        {
            FileSizeLimit full(10);
            MainWindowDriver::addToFavorites(*w, 0);
        }
        QVERIFY(env.prompts.texts().last().startsWith(u"Could not save the favorites to Pulsebox.fav"_s));
        QCOMPARE(readFile(FavFile::kName), first + second + second);

        // The editor opens on what was added and its Close hands the edit back.
        MainWindowDriver::trigger(*w, "favoritesAction_");
        auto *editor = w->findChild<FavoritesDialog *>();
        QVERIFY(editor && editor->isVisible() && editor->windowTitle() == u"Favorites"_s);
        QCOMPARE(editor->workingCopy(), FavFile::parse(first + second + second));
        child<ItemList>(*editor, "favoritesList_")->selectRow(1);
        QTest::mouseClick(child<QPushButton>(*editor, "deleteButton_"), Qt::LeftButton);
        QTest::mouseClick(child<QPushButton>(*editor, "closeButton_"), Qt::LeftButton);
        QCOMPARE(readFile(FavFile::kName), first + second);
        QCOMPARE(w->favorites(), (QList<Favorite>{{u"127.0.18.1:27910"_s, ServerRow::pad(u"Pulse Arena"_s, 50)},
                                                  {u"127.0.18.2"_s, QString(50, QChar(0))}}));
    }

    void deleteModifyAndClose()
    {
        Editing e;
        QCOMPARE(e.list()->texts(), (QStringList{u"127.0.1.1:27910"_s, u"127.0.2.2"_s, u"host.example:27911"_s}));
        e.deleteRow(1);  // the second of three
        AddFavoriteDialog *dialog = e.modify(0);
        QVERIFY(dialog && dialog->isVisible() && dialog->windowModality() == Qt::ApplicationModal);
        QCOMPARE(dialog->windowTitle(), u"Modify Favorite"_s);
        QCOMPARE(child<QPushButton>(*dialog, "addButton_")->text(), u"Save"_s);
        QCOMPARE(e.box("serverEdit_")->text(), u"127.0.1.1:27910"_s);
        QCOMPARE(e.box("descriptionEdit_")->text(), u"First"_s);
        e.box("serverEdit_")->setText(u" 127.0.1.1:27999 "_s);
        QVERIFY(e.closeDialogWith("addButton_"));

        e.modify(0);  // the third one, now first
        QCOMPARE(e.box("descriptionEdit_")->text(), u"Third  "_s);
        e.box("serverEdit_")->setText(u"changed and dropped"_s);
        QVERIFY(e.closeDialogWith("cancelButton_"));  // back unchanged, at the end

        QVERIFY(e.closeEditorWith("closeButton_"));
        const QByteArray written = " 127.0.1.1:27999 \r\nFirst\r\nhost.example:27911\r\nThird  \r\n";
        QCOMPARE(readFile(FavFile::kName), written);
        QCOMPARE(e.saved.size(), 1);
        QCOMPARE(e.saved[0][0].value<QList<Favorite>>(), FavFile::parse(written));
    }

    void addManuallyAndDialogClosedByItsWindowControl()
    {
        Editing e;
        e.click("addManuallyButton_");
        AddFavoriteDialog *dialog = e.dialog();
        QCOMPARE(dialog->windowTitle(), u"Add Favorite"_s);
        QCOMPARE(child<QPushButton>(*dialog, "addButton_")->text(), u"Add"_s);
        QTest::keyClicks(e.box("serverEdit_"), u"127.0.9.9:27910"_s);
        QTest::keyClicks(e.box("descriptionEdit_"), QString(60, u'd'));  // 50 at most
        QVERIFY(e.closeDialogWith("addButton_"));

        e.modify(0)->close();  // the window's own close control: acts as Cancel
        QTRY_VERIFY(!e.dialog());
        e.list()->selectRow(-1);
        e.click("deleteButton_");  // nothing selected: nothing happens
        QCOMPARE(e.editor->workingCopy(),
                 (QList<Favorite>{{u"127.0.2.2"_s, u"Second"_s}, {u"host.example:27911"_s, u"Third  "_s},
                                  {u"127.0.9.9:27910"_s, QString(50, u'd')}, {u"127.0.1.1:27910"_s, u"First"_s}}));
    }

    void modifyKeepsALongDescription()
    {
        // A hand-edited file may hold more than the box lets anyone type.
        const QByteArray file = "127.0.1.1\r\n" + QByteArray(45, 'x') + "- 60 characters\r\n";
        Editing e(file);
        e.modify(0);
        QLineEdit *description = e.box("descriptionEdit_");
        const QString longDesc = QString::fromLatin1(file.mid(11, 60));
        QCOMPARE(description->text(), longDesc);
        description->end(false);
        QTest::keyClicks(description, u"y"_s);  // typing stays limited
        QTest::keyClick(description, Qt::Key_Backspace);
        QTest::keyClicks(description, u"z"_s);
        QCOMPARE(description->text(), longDesc.chopped(1));
        QVERIFY(e.closeDialogWith("cancelButton_"));
        e.modify(0);
        QVERIFY(e.closeDialogWith("addButton_"));
        QVERIFY(e.closeEditorWith("closeButton_"));
        QCOMPARE(readFile(FavFile::kName), file);
    }

    void cancelKeepsTheFileAndCloseMayEmptyIt()
    {
        for (const char *button : {"cancelButton_", "closeButton_"}) {
            Editing e;
            for (int i = 0; i < 3; ++i)
                e.deleteRow(0);
            QVERIFY(e.closeEditorWith(button));
            const bool cancelled = QByteArray(button) == "cancelButton_";
            QCOMPARE(readFile(FavFile::kName), cancelled ? kThree : QByteArray());
            QCOMPARE(e.saved.size(), cancelled ? 0 : 1);
        }
    }

    void failedCloseKeepsTheEditorOpen()
    {
        Editing e;
        e.deleteRow(2);
        {
            FileSizeLimit full(8);
            e.click("closeButton_");
        }
        QVERIFY(e.editor->isVisible());
        QVERIFY(e.env.prompts.texts().last().contains(u"left as it was"_s));
        QCOMPARE(e.env.prompts.shown.last().icon, Prompter::Icon::Warning);
        QCOMPARE(readFile(FavFile::kName), kThree);
        QVERIFY(e.saved.isEmpty());
        QVERIFY(e.closeEditorWith("closeButton_"));
        QCOMPARE(e.saved.size(), 1);
    }

    void oversizedFilesLoadInPart()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        // A huge count is cut at the largest list the program keeps, with a word why.
        QByteArray many;
        for (int i = 0; i < 40000; ++i)
            many += "127.0.0.1\r\nx\r\n";
        writeFile(FavFile::kName, many);
        w->start();
        QCOMPARE(w->favorites().size(), qsizetype(32767));
        QCOMPARE(env.prompts.texts().last(), u"The favorites file holds 40000 favorites; the first 32767 were loaded."_s);

        // A file too large to be a favorites file is neither loaded nor appended to.
        writeFile(FavFile::kName, QByteArray(17 * 1024 * 1024, 'x'));
        w->setFavorites({});
        w->start();
        QVERIFY(w->favorites().isEmpty());
        QVERIFY(env.prompts.texts().last().contains(u"too large to be a favorites file"_s));
    }
};

QTEST_MAIN(TestFavorites)
#include "tst_favorites.moc"
