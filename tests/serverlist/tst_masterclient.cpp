#include "demonet/demonetwork.h"
#include "serverlist/masterclient.h"
#include "shell/ticker.h"
#include "support/udppeer.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

namespace {
QList<Demo::Server> servers(qsizetype count)
{
    QList<Demo::Server> list(count);  // 127.1.0.0 up, on the default port
    for (qsizetype i = 0; i < count; ++i)
        list[i].address = QHostAddress(0x7f010000u + static_cast<quint32>(i));
    return list;
}

// Runs the client against 127.0.0.1:port until it ends (bounded).
bool run(MasterClient &client, quint16 port)
{
    QSignalSpy done(&client, &MasterClient::finished);
    client.start(QStringLiteral("127.0.0.1"), port);
    return done.wait(20000) && done.size() == 1 && !client.isRunning();
}
}

class TestMasterClient : public QObject {
    Q_OBJECT
private slots:
    void init() { Ticker::setTimeScale(1.0); }

    void severalDatagrams()
    {
        Demo::MasterServer master(servers(7) + servers(2));  // two repeated
        master.perDatagram = 3;
        QString error;
        QVERIFY2(master.start(0, &error), qPrintable(error));
        MasterClient client;
        client.quietMs = 300;
        QVERIFY(run(client, master.port()));
        QCOMPARE(master.received, QList<QByteArray>{QByteArray("query\n\0", 7)});
        QCOMPARE(client.errorText(), QString());
        QCOMPARE(client.entries().size(), 7);
        QCOMPARE(client.entries().first(), QStringLiteral("127.1.0.0:27910"));
        QCOMPARE(client.entries().last(), QStringLiteral("127.1.0.6:27910"));
        QCOMPARE(client.counts().datagrams, 3);
        QCOMPARE(client.counts().duplicates, 2);
    }

    // Answers from anyone but the master (another address, or the master's address
    // on another port) are dropped, and junk from the master is not a list.
    void foreignAndJunkDatagrams()
    {
        UdpPeer master("127.0.0.1"), otherPort("127.0.0.1"), otherAddress("127.0.0.2", master.socket.localPort());
        QVERIFY(master.bound && otherPort.bound && otherAddress.bound);
        master.onDatagram = [&](const QNetworkDatagram &query) {
            const QByteArray poison("\xff\xff\xff\xffservers \x7f\x00\x00\x63\x6d\x06", 18);
            const QByteArray real("\xff\xff\xff\xffservers \x7f\x00\x00\x02\x6d\x06", 18);
            otherAddress.sendTo(poison, query);
            otherPort.sendTo(poison, query);
            master.sendTo("\xff\xff\xff\xffprint\nhello", query);
            master.sendTo(real, query);
        };
        MasterClient client;
        client.quietMs = 300;
        QVERIFY(run(client, master.socket.localPort()));
        QCOMPARE(client.entries(), QStringList{QStringLiteral("127.0.0.2:27910")});
        QCOMPARE(client.counts().foreign, 2);
        QCOMPARE(client.counts().junk, 1);
    }

    void silentMasterEndsAtTheTimeLimit()
    {
        Demo::MasterServer master({});
        master.silent = true;
        QString error;
        QVERIFY(master.start(0, &error));
        MasterClient client;
        client.timeoutMs = 2000;
        Ticker::setTimeScale(0.25);  // the limit scales like every other wait
        QElapsedTimer clock;
        clock.start();
        QVERIFY(run(client, master.port()));
        QVERIFY(clock.elapsed() >= 400);
        QCOMPARE(client.errorText(), QStringLiteral("The master server 127.0.0.1 did not answer."));
        QVERIFY(client.entries().isEmpty());

        // A host that does not resolve (no look-up leaves the machine for it) ends with a reason too.
        QSignalSpy done(&client, &MasterClient::finished);
        client.start(QString(), 27900);
        QVERIFY(done.wait(20000));
        QVERIFY2(client.errorText().startsWith(QStringLiteral("The master server  was not found")),
                 qPrintable(client.errorText()));
    }

    void seventyThousandRecords()
    {
        Demo::MasterServer master(servers(70000));
        master.perDatagram = 1000;
        master.gapMs = 2;
        QString error;
        QVERIFY(master.start(0, &error));
        MasterClient client;
        client.quietMs = 500;
        QVERIFY(run(client, master.port()));
        QCOMPARE(client.errorText(), QString());
        QCOMPARE(client.entries().size(), 70000);
        QCOMPARE(client.counts().datagrams, 70);

        // The cap keeps the first entries and counts the rest.
        client.maxEntries = 1000;
        QVERIFY(run(client, master.port()));
        QCOMPARE(client.entries().size(), 1000);
        QCOMPARE(client.counts().skipped, 69000);
    }
};

QTEST_GUILESS_MAIN(TestMasterClient)
#include "tst_masterclient.moc"
