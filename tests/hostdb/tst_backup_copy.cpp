#include "TestSupport.h"

#include "hostdb/RentBackup.h"

#include <QSqlQuery>
#include <QTest>

// The backup written before a posting run is a consistent snapshot of the
// host database whatever other connections are doing: rows another writer
// has not committed stay out, and rows still in a write-ahead log are in.
class TestBackupCopy : public QObject
{
    Q_OBJECT

    static int tenantsIn(const QString &path)
    {
        auto copy = HostDb::openSqlite(path);
        QSqlQuery q(copy->database());
        if (!q.exec(u"SELECT count(*) FROM Tenants"_qs) || !q.next())
            return -1;
        return q.value(0).toInt();
    }

    static void addTenant(QSqlDatabase db, int id)
    {
        QSqlQuery q(db);
        q.prepare(u"INSERT INTO Tenants (TenantID, TPropID, TCurrBal) VALUES (?, 1, 0)"_qs);
        q.addBindValue(id);
        QVERIFY(q.exec());
    }

private slots:
    void snapshotLeavesOutAnotherWritersOpenTransaction()
    {
        TestSite site;
        addTenant(site.db().database(), 1);
        auto other = HostDb::openSqlite(site.db().path());
        QSqlQuery begin(other->database());
        QVERIFY(begin.exec(u"BEGIN IMMEDIATE"_qs));
        addTenant(other->database(), 2);

        const QString copy = RentBackup::write(site.db(), site.folder());
        QCOMPARE(tenantsIn(copy), 1);

        // The writer is not kept out once the copy is written.
        QSqlQuery commit(other->database());
        QVERIFY(commit.exec(u"COMMIT"_qs));
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Tenants"_qs).toInt(), 2);
    }

    void writeAheadLogIsCopiedThroughTheEngine()
    {
        TestSite site;
        site.db().execText(u"PRAGMA journal_mode = WAL"_qs, "test");
        site.db().execText(u"PRAGMA wal_autocheckpoint = 0"_qs, "test");
        for (int id = 1; id <= 3; ++id)
            addTenant(site.db().database(), id);

        const QString copy = RentBackup::write(site.db(), site.folder());
        QCOMPARE(tenantsIn(copy), 3);
    }
};

QTEST_GUILESS_MAIN(TestBackupCopy)
#include "tst_backup_copy.moc"
