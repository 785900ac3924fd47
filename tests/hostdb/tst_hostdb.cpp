#include "TestSupport.h"

#include "core/RuntimeError.h"
#include "hostdb/PostingTargets.h"

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
        for (const char *index : {"OwnerIDIndex", "PropIDIndex", "UTenantIDIndex", "TenantIDIndex"}) {
            QVERIFY2(site.scalar(u"SELECT count(*) FROM sqlite_master WHERE type='index' AND name=:n"_qs,
                                 {{u":n"_qs, QString::fromLatin1(index)}})
                             .toInt() == 1,
                     index);
        }
        // Text compares without regard to case, as the host does.
        site.insert(u"Owners"_qs, {{u"OwnerID"_qs, 1}, {u"OACH"_qs, u"y"_qs}});
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Owners WHERE OACH = 'Y'"_qs).toInt(), 1);
    }

    void missingFieldIsItemNotFound()
    {
        TestSite site;
        site.db().execText(u"ALTER TABLE Company DROP COLUMN CEmail1"_qs, "test");
        try {
            site.db().verifySchema();
            QFAIL("a missing field must raise");
        } catch (const RuntimeError &e) {
            QCOMPARE(e.number(), 3265);
            QVERIFY(e.description().contains(u"Company.CEmail1"_qs));
        }
    }

    void missingDatabaseIs3024()
    {
        QTemporaryDir dir;
        try {
            HostDb::openFolder(dir.path());
            QFAIL("no database must raise");
        } catch (const RuntimeError &e) {
            QCOMPARE(e.number(), 3024);
        }
    }

    void postingTargets()
    {
        TestSite site;
        site.insert(u"Properties"_qs, {{u"PropID"_qs, 20}, {u"POwnerID"_qs, 3}});
        site.insert(u"Tenants"_qs, {{u"TenantID"_qs, 300}, {u"TPropID"_qs, 20}});
        site.insert(u"Tenants"_qs, {{u"TenantID"_qs, 301}, {u"TPropID"_qs, 99}});
        PostingTargets targets(site.db());
        using Ids = PostingTargets::Ids;
        QCOMPARE(targets(7, u"O"_qs), (Ids{7, 0, 0, 0}));
        QCOMPARE(targets(20, u"P"_qs), (Ids{3, 20, 0, 0}));
        QCOMPARE(targets(300, u"U"_qs), (Ids{3, 20, 300, 300}));
        QCOMPARE(targets(300, u"T"_qs), (Ids{3, 20, 300, 300}));
        QCOMPARE(targets(300, u"B"_qs), (Ids{0, 0, 0, 0}));
        QCOMPARE(targets(300, u"X"_qs), (Ids{0, 0, 0, 0}));
        // Missing records end the look-up silently.
        QCOMPARE(targets(21, u"P"_qs), (Ids{0, 0, 0, 0}));
        QCOMPARE(targets(999, u"T"_qs), (Ids{0, 0, 0, 0}));
        QCOMPARE(targets(301, u"U"_qs), (Ids{0, 0, 0, 0}));
    }

    void transactionRollsBackUnlessCommitted()
    {
        TestSite site;
        {
            HostDb::Transaction tx(site.db());
            site.insert(u"Owners"_qs, {{u"OwnerID"_qs, 1}});
        }
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Owners"_qs).toInt(), 0);
        {
            HostDb::Transaction tx(site.db());
            site.insert(u"Owners"_qs, {{u"OwnerID"_qs, 1}});
            tx.commitAndContinue();
            site.insert(u"Owners"_qs, {{u"OwnerID"_qs, 2}});
        }
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Owners"_qs).toInt(), 1);
    }

    void lockedDatabaseReportsBusy()
    {
        TestSite site;
        // A second connection (the host application) holds the write lock.
        auto other = HostDb::openSqlite(site.db().path());
        HostDb::Transaction hold(*other);
        QElapsedTimer timer;
        timer.start();
        try {
            HostDb::Transaction tx(site.db());
            QFAIL("a locked database must raise");
        } catch (const RuntimeError &e) {
            QCOMPARE(e.number(), RuntimeError::databaseBusy().number());
            QVERIFY(e.description().contains(u"Dwellix database is busy"_qs));
        }
        QVERIFY(timer.elapsed() >= HostDb::BusyTimeoutMs - 500);
    }
};

QTEST_GUILESS_MAIN(TestHostDb)
#include "tst_hostdb.moc"
