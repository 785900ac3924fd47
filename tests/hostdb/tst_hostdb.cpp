#include "TestSupport.h"

#include "core/RuntimeError.h"

#include <QSqlQuery>
#include <QTest>

class TestHostDb : public QObject
{
    Q_OBJECT

private slots:
    void schemaIsCompleteAndIndexed()
    {
        TestSite site;
        site.db().verifySchema();
        QCOMPARE(site.scalar(u"SELECT group_concat(name) FROM (SELECT name FROM sqlite_master "
                             "WHERE type = 'index' AND name IN ('OwnerIDIndex', 'PropIDIndex', "
                             "'UTenantIDIndex', 'TenantIDIndex') ORDER BY name)"_qs)
                     .toString(),
            u"OwnerIDIndex,PropIDIndex,TenantIDIndex,UTenantIDIndex"_qs);
        // Text compares without regard to case, as the host does.
        site.insert(u"Owners"_qs, { { u"OwnerID"_qs, 1 }, { u"OACH"_qs, u"y"_qs } });
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Owners WHERE OACH = 'Y'"_qs).toInt(), 1);

        // A missing field is "item not found"; a missing database 3024.
        site.db().execText(u"ALTER TABLE Company DROP COLUMN CEmail1"_qs, "test");
        QString text;
        const int number = raisedError([&] { site.db().verifySchema(); }, &text);
        QCOMPARE(number, 3265);
        QVERIFY(text.contains(u"Company.CEmail1"_qs));
        QTemporaryDir dir;
        QCOMPARE(raisedError([&] { HostDb::openFolder(dir.path()); }), 3024);
    }

    void transactionRollsBackUnlessCommitted()
    {
        TestSite site;
        {
            HostDb::Transaction tx(site.db());
            site.insert(u"Owners"_qs, { { u"OwnerID"_qs, 1 } });
        }
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Owners"_qs).toInt(), 0);
        {
            HostDb::Transaction tx(site.db());
            site.insert(u"Owners"_qs, { { u"OwnerID"_qs, 1 } });
            tx.commitAndContinue();
            site.insert(u"Owners"_qs, { { u"OwnerID"_qs, 2 } });
        }
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Owners"_qs).toInt(), 1);

        // A second connection (the host application) holds the write lock.
        auto other = HostDb::openSqlite(site.db().path());
        HostDb::Transaction hold(*other);
        QElapsedTimer timer;
        timer.start();
        QString text;
        const int number = raisedError([&] { HostDb::Transaction tx(site.db()); }, &text);
        QCOMPARE(number, RuntimeError::databaseBusy().number());
        QVERIFY(text.contains(u"Dwellix database is busy"_qs));
        QVERIFY(timer.elapsed() >= HostDb::BusyTimeoutMs - 500);
    }
};

QTEST_GUILESS_MAIN(TestHostDb)
#include "tst_hostdb.moc"
