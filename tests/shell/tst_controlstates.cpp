// The one rule for the main window's controls, over every run that can be going.
#include "shell/activity.h"
#include "shell/controlstates.h"

#include <QtTest>

using Kind = Activity::Kind;

class TestControlStates : public QObject {
    Q_OBJECT
private slots:
    void eachRunSwitchesItsControls()
    {
        Activity activity;
        ControlFacts facts;
        ControlStates start;
        start.refresh = start.favoritesRefresh = start.pingLimit = start.ttl = start.pingMenu = start.fastRefresh = true;
        QCOMPARE(controlStates(activity, facts), start);  // the list's commands wait for a first refresh

        facts.listRefreshed = true;
        activity.begin(Kind::Refresh);
        ControlStates refreshing;
        refreshing.cancel = true;
        QCOMPARE(controlStates(activity, facts), refreshing);
        facts.refreshProbing = true;
        refreshing.progress = true;
        QCOMPARE(controlStates(activity, facts), refreshing);
        activity.end(Kind::Refresh);
        facts.refreshProbing = false;

        ControlStates idle = start;
        idle.addFavorite = idle.countHops = true;
        QCOMPARE(controlStates(activity, facts), idle);

        facts.hopsCounted = true;
        activity.begin(Kind::CountHops);
        ControlStates counting;
        counting.cancel = counting.favoritesRefresh = counting.addFavorite = counting.fastRefresh = true;
        counting.hopsHeader = counting.progress = true;
        QCOMPARE(controlStates(activity, facts), counting);

        // A Fav Refresh inside Count Hops: while it runs only Cancel; after it, Count Hops' controls again.
        facts.hopsCounted = false;
        activity.begin(Kind::Refresh);
        QCOMPARE(controlStates(activity, facts), refreshing);
        activity.end(Kind::Refresh);
        counting.hopsHeader = false;
        QCOMPARE(controlStates(activity, facts), counting);
        activity.end(Kind::CountHops);

        // The queries and the matcher's run leave the main window's controls alone.
        for (Kind kind : {Kind::ServerQuery, Kind::LauncherQuery, Kind::MatcherRun})
            activity.begin(kind);
        facts.serverInfoArmed = true;
        idle.serverInfo = true;
        QCOMPARE(controlStates(activity, facts), idle);
    }

    void closeAndRowPickRules()
    {
        Activity activity;
        QVERIFY(!closeRefused(activity, false) && rowPickArmsServerInfo(activity, false));
        activity.begin(Kind::ServerQuery);
        QVERIFY(!closeRefused(activity, false));
        for (Kind run : {Kind::Refresh, Kind::CountHops}) {
            Activity::Scope running(activity, run);
            QVERIFY(closeRefused(activity, false) && !rowPickArmsServerInfo(activity, false));
            QVERIFY(!closeRefused(activity, true) && rowPickArmsServerInfo(activity, true));  // Cancel was pressed
        }
        QVERIFY(!runHoldsClose(activity));
    }
};

QTEST_GUILESS_MAIN(TestControlStates)
#include "tst_controlstates.moc"
