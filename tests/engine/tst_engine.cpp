#include <QtTest>
class TestEngine : public QObject {
    Q_OBJECT
};
QTEST_GUILESS_MAIN(TestEngine)
#include "tst_engine.moc"
