#include "support/testsupport.h"

#include "favorites/favfile.h"
#include "favorites/frmaddfav.h"
#include "favorites/frmfavorites.h"
#include "probes/address.h"
#include "serverlist/probedecisions.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/pulseboxmod.h"
#include "shell/serverrow.h"
#include "shell/vblist.h"

#include <QAction>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

namespace {
// A row of the main list with its record, as a refresh leaves it.
void addServer(MainWindow &w, const char *address, int port, const QString &hostName, bool favorite)
{
    ServerRec rec;
    rec.Address = DottedToAddress(QLatin1String(address));
    rec.Port = port;
    if (!hostName.isNull())
        rec.HostName = ServerRow::pad(hostName, 50);
    rec.IsFavorite = favorite;
    const int index = w.servers().appendServer(rec);
    const QString row = ServerRow::format(10 + index, favorite, QLatin1String(address), hostName, {}, {}, {});
    MainWindowDriver::serverList(w)->setRowData(MainWindowDriver::serverList(w)->addRow(row), index);
}

frmFavorites *openEditor(MainWindow &w)
{
    MainWindowDriver::trigger(w, "favoritesAction_");
    return w.findChild<frmFavorites *>(QStringLiteral("frmFavorites"));
}

void selectRow(VbList *list, int row) { list->SetListIndex(row); }

QStringList favoriteDescriptions(const MainWindow &w)
{
    QStringList texts;
    for (const Favorite &favorite : w.favorites())
        texts << favorite.description;
    return texts;
}

QStringList linkedDescriptions(const VbList *addresses, const VbList *descriptions)
{
    QStringList texts;
    for (int i = 0; i < addresses->ListCount(); ++i)
        texts << descriptions->List(addresses->ItemData(i));
    return texts;
}

const QByteArray kThree = "127.0.1.1:27910\r\nFirst\r\n127.0.2.2\r\nSecond\r\nhost.example:27911\r\nThird  \r\n";

// The main window with the favorites of `file` loaded, and the editor open.
struct Editing {
    explicit Editing(const QByteArray &file = kThree)
    {
        writeFile(FavFile::kName, file);
        w->start();
        editor = openEditor(*w);
    }
    void deleteRow(int row)
    {
        selectRow(editor->List1, row);
        QTest::mouseClick(editor->Delete, Qt::LeftButton);
    }
    frmAddFav *dialog() const { return editor->findChild<frmAddFav *>(QStringLiteral("frmAddFav")); }
    frmAddFav *modify(int row)
    {
        selectRow(editor->List1, row);
        QTest::mouseClick(editor->cmModify, Qt::LeftButton);
        return dialog();
    }
    // Clicks a button of the Add or Modify dialog, which closes it.
    bool closeDialogWith(QPushButton *frmAddFav::*button)
    {
        QTest::mouseClick(dialog()->*button, Qt::LeftButton);
        return QTest::qWaitFor([this] { return !dialog(); });
    }
    bool closeEditorWith(QPushButton *button)
    {
        QTest::mouseClick(button, Qt::LeftButton);
        return QTest::qWaitFor([this] { return !w->findChild<frmFavorites *>(QStringLiteral("frmFavorites")); });
    }

    TestEnvironment env;
    std::unique_ptr<MainWindow> w = newMainWindow();
    frmFavorites *editor = nullptr;
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
        addServer(*w, "127.0.18.1", 27910, QStringLiteral("Pulse Arena"), false);
        addServer(*w, "127.0.18.2", 0, QString(), false);
        addServer(*w, "127.0.18.3", 27910, QStringLiteral("Fav"), true);

        w->findChild<QPushButton *>(QStringLiteral("addFavoriteButton_"))->click();
        QCOMPARE(env.prompts.texts(), QStringList{QStringLiteral("Pick a server from the list first.")});
        QCOMPARE(env.prompts.shown[0].title, QStringLiteral("Pulsebox"));

        MainWindowDriver::addToFavorites(*w, 0);
        const QByteArray first = "127.0.18.1:27910\r\nPulse Arena" + QByteArray(39, ' ') + "\r\n";
        QCOMPARE(readFile(FavFile::kName), first);
        MainWindowDriver::addToFavorites(*w, 1);
        const QByteArray second = "127.0.18.2\r\n" + QByteArray(50, '\0') + "\r\n";
        QCOMPARE(readFile(FavFile::kName), first + second);
        w->findChild<QPushButton *>(QStringLiteral("addFavoriteButton_"))->click();  // no mark on the row: the same server again
        QCOMPARE(readFile(FavFile::kName), first + second + second);

        MainWindowDriver::addToFavorites(*w, 2);
        QCOMPARE(env.prompts.texts().last(), QStringLiteral("Already a Favorite"));
        QCOMPARE(MainWindowDriver::favoriteAddresses(*w), (QStringList{QStringLiteral("127.0.18.1:27910"), QStringLiteral("127.0.18.2"),
                                                 QStringLiteral("127.0.18.2")}));
        QCOMPARE(favoriteDescriptions(*w),
                 (QStringList{ServerRow::pad(QStringLiteral("Pulse Arena"), 50), QString(50, QChar(0)), QString(50, QChar(0))}));

        // A write that fails (a full disk) leaves the file and the lists as they were.
        MainWindowDriver::serverList(*w)->selectRow(0);
        {
            FileSizeLimit full(10);
            w->findChild<QPushButton *>(QStringLiteral("addFavoriteButton_"))->click();
        }
        QVERIFY(env.prompts.texts().last().startsWith(QStringLiteral("Could not save the favorites to Pulsebox.fav")));
        QCOMPARE(readFile(FavFile::kName), first + second + second);
        QCOMPARE(static_cast<int>(w->favorites().size()), 3);
    }

    void loadEditAndClose()
    {
        Editing e;
        frmFavorites *editor = e.editor;
        QCOMPARE(favoriteDescriptions(*e.w), (QStringList{QStringLiteral("First"), QStringLiteral("Second"), QStringLiteral("Third  ")}));
        QVERIFY(editor && editor->isVisible());
        QCOMPARE(editor->windowTitle(), QStringLiteral("Favorites"));
        QCOMPARE(editor->List1->Texts(), MainWindowDriver::favoriteAddresses(*e.w));
        QVERIFY(editor->List2->isHidden());

        e.deleteRow(1);  // the second of three
        frmAddFav *dialog = e.modify(0);
        QVERIFY(dialog && dialog->isVisible() && dialog->windowModality() == Qt::ApplicationModal);
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Modify Favorite"));
        QCOMPARE(dialog->cmdAdd->text(), QStringLiteral("Save"));
        QCOMPARE(dialog->txtServer->text(), QStringLiteral("127.0.1.1:27910"));
        QCOMPARE(dialog->txtServerDesc->text(), QStringLiteral("First"));
        dialog->txtServer->setText(QStringLiteral(" 127.0.1.1:27999 "));
        QVERIFY(e.closeDialogWith(&frmAddFav::cmdAdd));

        dialog = e.modify(0);  // the third one, now first
        QCOMPARE(dialog->txtServerDesc->text(), QStringLiteral("Third  "));
        dialog->txtServer->setText(QStringLiteral("changed and dropped"));
        QVERIFY(e.closeDialogWith(&frmAddFav::cmdCancel));

        QCOMPARE(editor->List1->Texts(), (QStringList{QStringLiteral(" 127.0.1.1:27999 "), QStringLiteral("host.example:27911")}));
        QVERIFY(e.closeEditorWith(editor->cmClose));
        QCOMPARE(readFile(FavFile::kName), QByteArray(" 127.0.1.1:27999 \r\nFirst\r\nhost.example:27911\r\nThird  \r\n"));
        QCOMPARE(MainWindowDriver::favoriteAddresses(*e.w), (QStringList{QStringLiteral(" 127.0.1.1:27999 "), QStringLiteral("host.example:27911")}));
        QCOMPARE(favoriteDescriptions(*e.w), (QStringList{QStringLiteral("First"), QStringLiteral("Third  ")}));
    }

    void addManuallyAndDialogClosedByItsWindowControl()
    {
        Editing e;
        frmFavorites *editor = e.editor;
        QTest::mouseClick(editor->Manually, Qt::LeftButton);
        frmAddFav *dialog = e.dialog();
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Add Favorite"));
        QCOMPARE(dialog->cmdAdd->text(), QStringLiteral("Add"));
        QCOMPARE(dialog->txtServerDesc->maxLength(), 50);
        QTest::keyClicks(dialog->txtServer, QStringLiteral("127.0.9.9:27910"));
        QTest::keyClicks(dialog->txtServerDesc, QString(60, u'd'));
        QVERIFY(e.closeDialogWith(&frmAddFav::cmdAdd));

        e.modify(0)->close();  // the window's own close control: acts as Cancel
        QTRY_VERIFY(!e.dialog());
        QCOMPARE(editor->List1->Texts(), (QStringList{QStringLiteral("127.0.2.2"), QStringLiteral("host.example:27911"),
                                                      QStringLiteral("127.0.9.9:27910"), QStringLiteral("127.0.1.1:27910")}));
        QCOMPARE(linkedDescriptions(editor->List1, editor->List2),
                 (QStringList{QStringLiteral("Second"), QStringLiteral("Third  "), QString(50, u'd'), QStringLiteral("First")}));
        QTest::mouseClick(editor->Delete, Qt::LeftButton);  // nothing selected: nothing happens
        QCOMPARE(editor->List1->ListCount(), 4);
    }

    void modifyKeepsALongDescription()
    {
        // A hand-edited file may hold more than the box lets anyone type.
        const QByteArray file = "127.0.1.1\r\n" + QByteArray(45, 'x') + "- 60 characters\r\n";
        Editing e(file);
        frmAddFav *dialog = e.modify(0);
        const QString longDesc = QString::fromLatin1(file.mid(11, 60));
        QCOMPARE(dialog->txtServerDesc->text(), longDesc);
        dialog->txtServerDesc->end(false);
        QTest::keyClicks(dialog->txtServerDesc, QStringLiteral("y"));  // typing stays limited
        QTest::keyClick(dialog->txtServerDesc, Qt::Key_Backspace);
        QTest::keyClicks(dialog->txtServerDesc, QStringLiteral("z"));
        QCOMPARE(dialog->txtServerDesc->text(), longDesc.chopped(1));
        QVERIFY(e.closeDialogWith(&frmAddFav::cmdCancel));
        e.modify(0);
        QVERIFY(e.closeDialogWith(&frmAddFav::cmdAdd));
        QVERIFY(e.closeEditorWith(e.editor->cmClose));
        QCOMPARE(readFile(FavFile::kName), file);
    }

    void cancelKeepsFileAndLists()
    {
        Editing e;
        for (int i = 0; i < 3; ++i)
            e.deleteRow(0);
        QVERIFY(e.closeEditorWith(e.editor->Cancel));
        QCOMPARE(readFile(FavFile::kName), kThree);
        QCOMPARE(static_cast<int>(e.w->favorites().size()), 3);

        e.editor = openEditor(*e.w);  // Close with nothing left: an empty file
        for (int i = 0; i < 3; ++i)
            e.deleteRow(0);
        QVERIFY(e.closeEditorWith(e.editor->cmClose));
        QCOMPARE(readFile(FavFile::kName), QByteArray());
        QCOMPARE(static_cast<int>(e.w->favorites().size()), 0);
        QCOMPARE(static_cast<int>(e.w->favorites().size()), 0);
    }

    void failedCloseKeepsTheEditorOpen()
    {
        Editing e;
        e.deleteRow(2);
        {
            FileSizeLimit full(8);
            QTest::mouseClick(e.editor->cmClose, Qt::LeftButton);
        }
        QVERIFY(e.editor->isVisible());
        QVERIFY(e.env.prompts.texts().last().contains(QStringLiteral("left as it was")));
        QCOMPARE(e.env.prompts.shown.last().icon, Prompter::Icon::Warning);
        QCOMPARE(readFile(FavFile::kName), kThree);
        QCOMPARE(static_cast<int>(e.w->favorites().size()), 3);
        QTest::mouseClick(e.editor->cmClose, Qt::LeftButton);
        QCOMPARE(static_cast<int>(e.w->favorites().size()), 2);
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
        QCOMPARE(static_cast<int>(w->favorites().size()), 32767);
        QCOMPARE(env.prompts.texts().last(), QStringLiteral("The favorites file holds 40000 favorites; the first 32767 were loaded."));

        // A file too large to be a favorites file is neither loaded nor appended to.
        writeFile(FavFile::kName, QByteArray(17 * 1024 * 1024, 'x'));
        w->setFavorites({});
        w->start();
        QCOMPARE(static_cast<int>(w->favorites().size()), 0);
        QVERIFY(env.prompts.texts().last().contains(QStringLiteral("too large to be a favorites file")));
    }
};

QTEST_MAIN(TestFavorites)
#include "tst_favorites.moc"
