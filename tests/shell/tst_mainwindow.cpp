#include "support/testsupport.h"

#include "shell/frmpulsebox.h"
#include "shell/frmsplash.h"
#include "shell/frmhelp.h"
#include "shell/pulseboxmod.h"
#include "shell/ticker.h"
#include "shell/twips.h"
#include "shell/vblist.h"
#include "shell/waiting.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTextBrowser>
#include <QtTest>

#include <ctime>

namespace {
double cpuSeconds()
{
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) / 1e9;
}

QRect twipsRect(int l, int t, int w, int h)
{
    return {qRound(l / 15.0), qRound(t / 15.0), qRound(w / 15.0), qRound(h / 15.0)};
}
}

class TestMainWindow : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QCOMPARE(qRound(QGuiApplication::primaryScreen()->logicalDotsPerInch()), 96); }

    void controlsHaveTheirDesignedState()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        QCOMPARE(w->windowTitle(), QStringLiteral("Pulsebox Server Kit"));
        QCOMPARE(w->centralWidget()->size(), QSize(674, 451));
        QCOMPARE(w->minimumSize(), w->maximumSize());  // not resizable

        struct Button { const char *name, *caption, *tip; bool enabled; };
        const Button buttons[] = {
            {"Command2", "Refresh List", "Refresh Server List", true},
            {"Command8", "Fav Refresh", "Refresh Favs List Only", true},
            {"Command1", "Cancel", "Cancel Refresh", false},
            {"cmAddFav", "Add to Favorites", "Add Server to Favorites", false},
            {"Command7", "Count Hops", "Do traceroute on server.", false},
            {"Command6", "Server Info", "Show Server Info", false},
        };
        for (const Button &b : buttons) {
            auto *button = w->findChild<QPushButton *>(QLatin1String(b.name));
            QVERIFY2(button, b.name);
            QCOMPARE(button->text(), QLatin1String(b.caption));
            QCOMPARE(button->toolTip(), QLatin1String(b.tip));
            QCOMPARE(button->isEnabled(), b.enabled);
        }
        const auto edit = [&](const char *name) { return w->findChild<QLineEdit *>(QLatin1String(name)); };
        QCOMPARE(edit("txIPAddress")->text(), QStringLiteral("200.200.200.100"));
        QVERIFY(!edit("txIPAddress")->isEnabled());
        QCOMPARE(edit("Text4")->text(), QStringLiteral("230"));
        QCOMPARE(edit("Text4")->toolTip(), QStringLiteral("Maximum ping to accept in list"));
        QCOMPARE(edit("txTTL")->text(), QStringLiteral("90"));
        QCOMPARE(edit("txTTL")->toolTip(), QStringLiteral("Maximum Number of Hops before giving up."));
        auto *text1 = w->findChild<QComboBox *>(QStringLiteral("Text1"));
        QVERIFY(text1->isEditable());
        QVERIFY(text1->currentText().endsWith(QStringLiteral("/quake2/gamespy.txt")));
        QCOMPARE(text1->toolTip(), QStringLiteral("Location of server list"));

        const auto label = [&](const char *name) { return w->findChild<QLabel *>(QLatin1String(name)); };
        const QList<std::pair<const char *, const char *>> labels{
            {"Label1", "Server IP:"}, {"Label4", "Location of List"}, {"Label5", "Ping Limit:"},
            {"Label3", "Time To Live ((TTL) :"}, {"Label6", "Server Information:"}, {"Label7", "List Count:"},
            {"Label2", "Return Information :"}, {"Label10", "Ping"}, {"Label12", "Address"}, {"Label11", "Name"},
            {"lbHops", "Hops"}, {"Label8", "Version"}, {"Label13", "Map"}, {"Label9", "Use/Cap"}};
        for (const auto &[name, caption] : labels)
            QCOMPARE(label(name)->text(), QLatin1String(caption));
        QVERIFY(label("lbHops")->isHidden());
        QVERIFY(label("Label6")->font().bold());
        QVERIFY(label("Label14")->text().isEmpty());
        QCOMPARE(label("Statusbar")->text(), QStringLiteral(" "));
        QCOMPARE(label("Label9")->geometry().topLeft(), twipsRect(9180, 1440, 0, 0).topLeft());

        QCOMPARE(w->List1->geometry(), twipsRect(180, 1680, 9735, 1950));  // twips become pixels at 96 dpi
        for (const char *hidden : {"lbHost", "lbFav", "lbFavDesc", "Text2", "Shape1", "Shape2"})
            QVERIFY2(w->findChild<QWidget *>(QLatin1String(hidden))->isHidden(), hidden);
        QCOMPARE(w->Timer1->interval(), 1000);
        QCOMPARE(w->Timer2->interval(), 0);
        QCOMPARE(w->Timer3->interval(), 0);
    }

    void menusAndPingMode()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        QStringList top;
        for (QAction *a : w->menuBar()->actions())
            top << a->text();
        QCOMPARE(top, (QStringList{QStringLiteral("&File"), QStringLiteral("&Options"), QStringLiteral("&Iconize"),
                                   QStringLiteral("Help")}));
        QStringList options;
        for (QAction *a : w->mnuOptions->actions())
            options << (a->isSeparator() ? QStringLiteral("-") + a->objectName() : a->objectName());
        QCOMPARE(options, (QStringList{QStringLiteral("mnuFavorites"), QStringLiteral("-sep5"),
                                       QStringLiteral("mnuupdmaster"), QStringLiteral("-sep1"), QStringLiteral("mnuPing"),
                                       QStringLiteral("mnuFastRefresh"), QStringLiteral("-sep2"), QStringLiteral("mnuSettings")}));
        QVERIFY(w->mnuFastRefresh->isCheckable() && !w->mnuFastRefresh->isChecked());  // off at start
        QCOMPARE(w->findChild<QAction *>(QStringLiteral("mnuExit"))->text(), QStringLiteral("&Exit"));

        QCOMPARE(w->mnuqp[0]->text(), QStringLiteral("&Quick Ping"));
        QCOMPARE(w->mnuqp[1]->text(), QStringLiteral("&Regular Ping"));
        QVERIFY(w->mnuqp[0]->isChecked() && !w->mnuqp[1]->isChecked());
        w->mnuqp[1]->trigger();
        QVERIFY(!w->mnuqp[0]->isChecked() && w->mnuqp[1]->isChecked());
        w->mnuqp[1]->trigger();  // clicking the checked item keeps it checked
        QVERIFY(!w->mnuqp[0]->isChecked() && w->mnuqp[1]->isChecked());
        w->mnuqp[0]->trigger();
        QVERIFY(w->mnuqp[0]->isChecked() && !w->mnuqp[1]->isChecked());

        w->mnuupdmaster->trigger();
        QCOMPARE(env.prompts.texts(), QStringList{QStringLiteral("not available yet")});
    }

    void sortedListKeepsItemData()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        const int b = w->List1->AddItem(QStringLiteral("045 - b"));
        w->List1->SetItemData(b, 1);
        const int a = w->List1->AddItem(QStringLiteral("045 - A"));
        w->List1->SetItemData(a, 2);
        const int c = w->List1->AddItem(QStringLiteral("012 - z"));
        w->List1->SetItemData(c, 3);
        QCOMPARE(w->List1->Texts(), (QStringList{QStringLiteral("012 - z"), QStringLiteral("045 - A"),
                                                 QStringLiteral("045 - b")}));
        QCOMPARE(w->List1->ItemData(0), 3);
        QCOMPARE(w->List1->ItemData(1), 2);
        QCOMPARE(w->List1->ItemData(2), 1);
        QCOMPARE(w->List1->ListIndex(), -1);
    }

    void listClickRule()
    {
        // Server Info follows every click on List1: enabled only when no run goes or Cancel was pressed.
        TestEnvironment env;
        auto w = newMainWindow();
        for (int i = 0; i < 2; ++i)
            w->List1->AddItem(QStringLiteral("00%1 - row").arg(i));
        const auto clickRow = [&](int row) {
            QTest::mouseClick(w->List1->viewport(), Qt::LeftButton, {}, w->List1->visualItemRect(w->List1->item(row)).center());
        };
        w->Command1->setEnabled(true);  // a run is going
        clickRow(0);
        QTest::keyClick(w->List1, Qt::Key_Down);
        QCOMPARE(w->List1->ListIndex(), 1);
        QVERIFY(!w->Command6->isEnabled());
        Mod().CancelRequested = 1;  // Cancel pressed, the run not yet unwound
        clickRow(1);  // the row selected already
        QVERIFY(w->Command6->isEnabled());

        w->Command6->setEnabled(false);
        Mod().CancelRequested = 0;
        w->Command1->setEnabled(false);  // the run has ended
        clickRow(1);  // still the row chosen during the run
        QVERIFY(w->Command6->isEnabled());
        w->Command6->setEnabled(false);
        QTest::keyClick(w->List1, Qt::Key_Up);
        QVERIFY(w->Command6->isEnabled());
    }

    void closeIsRefusedDuringARun()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        w->Command1->setEnabled(true);  // a long run is going
        QVERIFY(!w->close());
        QVERIFY(w->isVisible());
        QCOMPARE(w->windowTitle(), QStringLiteral("Pulsebox Server Kit - CAN'T CLOSE BEFORE CANCEL!"));
        w->mnuExit->trigger();  // Exit goes through the same rule
        QVERIFY(w->isVisible());
        QTest::mouseClick(w->Command1, Qt::LeftButton);
        QCOMPARE(Mod().CancelRequested, qint16(1));
        QVERIFY(w->close());
        QVERIFY(!w->isVisible());
        QCOMPARE(w->windowTitle(), QStringLiteral("Pulsebox Server Kit - CAN'T CLOSE BEFORE CANCEL!"));
        QVERIFY(waitsAbandoned());  // the run still on the stack unwinds at once
    }

    void exitClosesWhenIdle()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        w->mnuExit->trigger();
        QVERIFY(!w->isVisible());
        QCOMPARE(w->windowTitle(), QStringLiteral("Pulsebox Server Kit"));
    }

    void startUpWaitsForTheSplashAndEndsEarlyOnAClick()
    {
        TestEnvironment env(1.0);
        frmPulsebox w;
        QElapsedTimer clock;
        clock.start();
        QTimer::singleShot(300, [] {
            frmSplash *splash = nullptr;
            for (QWidget *top : QApplication::topLevelWidgets())
                if (top->objectName() == QStringLiteral("frmSplash") && top->isVisible())
                    splash = qobject_cast<frmSplash *>(top);
            QVERIFY(splash);
            QCOMPARE(splash->lblVersion->text(), QStringLiteral("Version 1.1.1"));
            QCOMPARE(splash->Label1->text(), QStringLiteral("Use at your own risk."));
            QCOMPARE(splash->lblPlatform->text(), QStringLiteral("Win95"));
            QCOMPARE(splash->size(), QSize(492, 201));
            QVERIFY(!(splash->windowFlags() & Qt::FramelessWindowHint));  // a fixed dialog border
            QCOMPARE(splash->lblVersion->pos(), Twips::rect(6030, 1080, 0, 0).topLeft());
            QCOMPARE(splash->lblPlatform->pos(), Twips::rect(6000, 720, 0, 0).topLeft());
            QTest::mouseClick(splash->imgLogo, Qt::LeftButton);
        });
        w.Form_Load();
        QVERIFY(clock.elapsed() < 1500);
        QCOMPARE(Mod().SplashTicks, 5);
        QCOMPARE(w.Timer2->interval(), 0);
        QCOMPARE(Mod().QueryMode, 1);
        QCOMPARE(w.Text1->count(), 5);
        QCOMPARE(w.Text1->itemText(0), w.Text1->currentText());
        QCOMPARE(w.Text1->itemText(1), QStringLiteral("http://127.0.0.1/"));
        QCOMPARE(w.Text1->itemText(2), QStringLiteral("master://127.0.0.1:27900"));
    }

    void startUpWaitLastsAboutTwoSecondsWithoutAClick()
    {
        TestEnvironment env(1.0);  // real seconds
        frmPulsebox w;
        QElapsedTimer clock;
        clock.start();
        w.Form_Load();
        const qint64 waited = clock.elapsed();
        QVERIFY2(waited >= 1500 && waited < 15000, qPrintable(QString::number(waited)));
        for (QWidget *top : QApplication::topLevelWidgets())
            QVERIFY(!(qobject_cast<frmSplash *>(top) && top->isVisible()));
        QCOMPARE(w.Timer2->interval(), 0);
    }

    void aboutBoxLeavesTheCountersAlone()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        Mod().TimerTicks = 7;
        w->mnuabout->trigger();
        frmSplash *about = nullptr;
        for (QWidget *top : QApplication::topLevelWidgets())
            if (auto *s = qobject_cast<frmSplash *>(top); s && s->isVisible())
                about = s;
        QVERIFY(about);
        QTest::keyClick(about, Qt::Key_Space);
        QTRY_VERIFY(!about || !about->isVisible());
        QCOMPARE(Mod().TimerTicks, 7);
        QCOMPARE(w->Timer1->interval(), 1000);
    }

    void helpShowsTheDocumentInside()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        w->mnuContents->trigger();
        frmHelp *help = frmHelp::showHelp();
        QVERIFY(help->isVisible());
        const QString text = help->browser->toPlainText();
        for (const char *topic : {"Refresh List", "Fav Refresh", "Server Info", "Add to Favorites", "Settings",
                                  "Quick Ping", "Favorites", "Update Master List"})
            QVERIFY2(text.contains(QLatin1String(topic)), topic);
        help->close();
    }

    void waitingSleepsInsteadOfSpinning()
    {
        TestEnvironment env(1.0);
        auto w = newMainWindow();
        Mod().TimerTicks = 0;
        w->Timer1->setInterval(1000);
        const double cpuBefore = cpuSeconds();
        QElapsedTimer clock;
        clock.start();
        waitUntil([] { return Mod().TimerTicks >= 2; });
        const double cpu = cpuSeconds() - cpuBefore;
        QVERIFY(clock.elapsed() >= 1900);
        qInfo() << "CPU over a two-tick wait:" << cpu * 1000 << "ms";
        QVERIFY2(cpu < 0.1, "a two-second wait must stay well under 5% of a core");
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
