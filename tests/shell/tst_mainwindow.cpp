#include "support/testsupport.h"

#include "shell/frmpulsebox.h"
#include "shell/splashwindow.h"
#include "shell/helpwindow.h"
#include "shell/pulseboxmod.h"
#include "shell/ticker.h"
#include "shell/vblist.h"
#include "shell/waiting.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
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

SplashWindow *visibleSplash()
{
    for (QWidget *top : QApplication::topLevelWidgets())
        if (auto *s = qobject_cast<SplashWindow *>(top); s && s->isVisible())
            return s;
    return nullptr;
}
}

class TestMainWindow : public QObject {
    Q_OBJECT
private slots:
    void startingStateAndPingMode()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        QCOMPARE(w->windowTitle(), QStringLiteral("Pulsebox Server Kit"));
        QCOMPARE(w->minimumSize(), w->maximumSize());  // not resizable
        struct Button { const char *name, *caption; bool enabled; };
        for (const Button &b : {Button{"Command2", "Refresh List", true}, Button{"Command8", "Fav Refresh", true},
                                Button{"Command1", "Cancel", false}, Button{"cmAddFav", "Add to Favorites", false},
                                Button{"Command7", "Count Hops", false}, Button{"Command6", "Server Info", false}}) {
            auto *button = w->findChild<QPushButton *>(QLatin1String(b.name));
            QVERIFY2(button && button->text() == QLatin1String(b.caption) && button->isEnabled() == b.enabled, b.name);
        }
        QCOMPARE(w->Text4->text(), QStringLiteral("230"));
        QCOMPARE(w->txTTL->text(), QStringLiteral("90"));
        QVERIFY(!w->txIPAddress->isEnabled());
        QVERIFY(w->Text1->isEditable());
        QVERIFY(w->Label14->text().isEmpty());
        for (const char *hidden : {"lbHost", "lbFav", "lbFavDesc", "Text2", "Shape1", "Shape2", "lbHops"})
            QVERIFY2(w->findChild<QWidget *>(QLatin1String(hidden))->isHidden(), hidden);
        QCOMPARE(w->Timer1->interval(), 1000);
        QCOMPARE(w->Timer2->interval(), 0);

        // Quick and Regular Ping are one choice; clicking the checked one keeps it.
        QVERIFY(w->mnuqp[0]->isChecked() && !w->mnuqp[1]->isChecked());
        for (size_t index : {1u, 1u, 0u}) {
            w->mnuqp[index]->trigger();
            QVERIFY(w->mnuqp[index]->isChecked() && !w->mnuqp[1 - index]->isChecked());
        }
        w->mnuupdmaster->trigger();
        QCOMPARE(env.prompts.texts(), QStringList{QStringLiteral("not available yet")});
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

    // The close during a run is refused until Cancel (tst_refresh drives it through a real run).
    void closeAfterCancelEndsTheRun()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        w->Command1->setEnabled(true);  // a long run is going
        QTest::mouseClick(w->Command1, Qt::LeftButton);
        QVERIFY(w->close());
        QVERIFY(waitsAbandoned());  // the run still on the stack unwinds at once

        auto idle = newMainWindow();
        idle->mnuExit->trigger();
        QVERIFY(!idle->isVisible());
        QCOMPARE(idle->windowTitle(), QStringLiteral("Pulsebox Server Kit"));
    }

    // The splash holds the start-up for about two seconds, or until it is clicked.
    void startUpWaitsForTheSplash_data()
    {
        QTest::addColumn<bool>("click");
        QTest::newRow("clicked") << true;
        QTest::newRow("not clicked") << false;
    }

    void startUpWaitsForTheSplash()
    {
        QFETCH(bool, click);
        TestEnvironment env(1.0);  // real seconds
        frmPulsebox w;
        if (click)
            QTimer::singleShot(300, [] {
                SplashWindow *splash = visibleSplash();
                QVERIFY(splash);
                QCOMPARE(splash->findChild<QLabel *>(QStringLiteral("versionLabel_"))->text(), QStringLiteral("Version 1.1.1"));
                QCOMPARE(splash->findChild<QLabel *>(QStringLiteral("riskLabel_"))->text(), QStringLiteral("Use at your own risk."));
                QCOMPARE(splash->findChild<QLabel *>(QStringLiteral("platformLabel_"))->text(), QStringLiteral("Win95"));
                QVERIFY(!(splash->windowFlags() & Qt::FramelessWindowHint));  // a fixed dialog border
                QTest::mouseClick(splash->findChild<QLabel *>(QStringLiteral("logo_")), Qt::LeftButton);
            });
        QElapsedTimer clock;
        clock.start();
        w.Form_Load();
        const qint64 waited = clock.elapsed();
        QVERIFY2(click ? waited < 1500 : waited >= 1500 && waited < 15000, qPrintable(QString::number(waited)));
        QVERIFY(!visibleSplash());
        QCOMPARE(w.Timer2->interval(), 0);
        QCOMPARE(Mod().QueryMode, 1);
        QCOMPARE(w.Text1->count(), 5);
        QCOMPARE(w.Text1->itemText(0), w.Text1->currentText());
        QCOMPARE(w.Text1->itemText(1), QStringLiteral("http://127.0.0.1/"));
        QCOMPARE(w.Text1->itemText(2), QStringLiteral("master://127.0.0.1:27900"));
    }

    void aboutBoxLeavesTheCountersAlone()
    {
        TestEnvironment env;
        auto w = newMainWindow();
        Mod().TimerTicks = 7;
        w->mnuabout->trigger();
        QPointer<SplashWindow> about = visibleSplash();
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
        HelpWindow *help = HelpWindow::showHelp();
        QVERIFY(help->isVisible());
        const QString text = help->text();
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
