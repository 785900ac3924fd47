#include "DisburseFixture.h"

#include "app/Startup.h"
#include "app/TopLevel.h"
#include "core/RuntimeError.h"
#include "disburse/DistributionRun.h"
#include "hostdb/DisburseList.h"
#include "hostdb/EngineSql.h"
#include "hostdb/KeyedRows.h"
#include "hostdb/PortfolioQueries.h"

#include <QSqlQuery>
#include <QTest>

namespace {

// The host tables and fields Remitra knows, and no more.
const std::pair<const char *, const char *> kKnownFields[] = {
    { "Company", "CName1 CEmail1 CPhone1 CPhone2" },
    { "Owners",
        "OwnerID OFirstName1 OLastName1 OFirstName2 OLastName2 OAddress1 OAddress2 OCity OState "
        "OZip OPhone1 OPhone2 OEmail1 OACH OPercent2 OMgmtFee OCurrBal" },
    { "Properties",
        "PropID POwnerID PropName PropAddress1 PropAddress2 PropCity PropState PropZip CName1 "
        "CEmail1 CPhone1 CPhone2 PCurrBal" },
    { "Units", "UTenantID UAddress UNumber UCurrBal" },
    { "Tenants",
        "TenantID TPropID TFirstName1 TLastName1 TAddress TCity TState TZip TEmail1 TEmail2 TACH "
        "TCurrBal TStartDate" },
    { "Vendors",
        "VenID VenName VenAddress1 VenAddress2 VenCity VenState VenZip VenContact VenPhone1 "
        "VenPhone2 VenEmail1 VACH" },
    { "Transactions",
        "TransAccountID TransPostToID TransAmount TransDate TransCheckNumber TransRemark "
        "TransType TransStatus TransTax TransOID TransPID TransUID TransTID" },
    { "CheckEntered",
        "CkID CkPayee CkDate CkAmount CkInvoice CkRemark CkVendorID CkStatus CkSplit CkAccountID "
        "CkPostToID CkPostTo CkNumber CkType" },
    { "CheckDepPrinted",
        "CkID CkPayee CkAccountID CkAmount CkDate CkInvoice CkRemark CkStatus CkVendorID CkPostTo "
        "CkPostToText CkNumber CkType CkSplit" },
    { "SplitChecks", "CkNumber CkAmount CkAccountID CkPostToID CkRemark CkStatus CkType CkPostTo" },
    { "SplitPrintedChecks",
        "CkNumber CkCheckNumber CkAmount CkAccountID CkPostToID CkRemark CkStatus CkType "
        "CkPostTo" },
};

const EngineSql &engineNamed(const QString &name)
{
    return name == u"access"_qs ? EngineSql::access() : EngineSql::sqlite();
}

} // namespace

class TestHostDb : public QObject
{
    Q_OBJECT

private slots:
    // The fixtures and the demo site build the host from schema.sql: exactly
    // the fields and indexes Remitra uses, so nothing passes here that a
    // real host database would fail.
    void schemaHoldsOnlyWhatRemitraUses()
    {
        TestSite site;
        QStringList tables;
        for (const auto &[table, fields] : kKnownFields) {
            tables << QString::fromLatin1(table);
            QStringList columns;
            for (const QVariantMap &c : site.rows(u"PRAGMA table_info("_qs + tables.last() + u')'))
                columns << c.value(u"name"_qs).toString();
            QCOMPARE(columns.join(u' '), QString::fromLatin1(fields));
        }
        QCOMPARE(site.scalar(u"SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name "
                             "NOT LIKE 'sqlite%'"_qs)
                     .toInt(),
            tables.size());
        QCOMPARE(site.scalar(u"SELECT group_concat(name) FROM (SELECT name FROM sqlite_master "
                             "WHERE type = 'index' AND sql IS NOT NULL ORDER BY name)"_qs)
                     .toString(),
            u"OwnerIDIndex,PropIDIndex,TenantIDIndex,UTenantIDIndex"_qs);
        site.db().verifySchema();

        // Text compares without regard to case, as the host does.
        site.insert(u"Owners"_qs, { { u"OwnerID"_qs, 1 }, { u"OACH"_qs, u"y"_qs } });
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Owners WHERE OACH = 'Y'"_qs).toInt(), 1);
        QTemporaryDir dir;
        QCOMPARE(raisedError([&] { HostDb::openFolder(dir.path()); }), 3024);
    }

    // A field the host lacks stops the command that needs it, with "Company
    // Remitra field not found", and nothing else; a payment run stops before
    // anything is sent when the accepted payments could not be posted.
    void missingFieldStopsOnlyWhatNeedsIt()
    {
        TestSite site;
        DisburseFixture::populate(site);
        site.db().execText(u"ALTER TABLE Tenants DROP COLUMN TACH"_qs, "test");
        QString text;
        QCOMPARE(raisedError([&] { site.db().require(HostFeature::TenantUpload); }, &text), 3265);
        QVERIFY(text.contains(u"Tenants.TACH"_qs));
        QVERIFY(TopLevel::run(*site.state, [&] { PortfolioQueries::ownerRows(site.db()); }));
        QVERIFY(
            !TopLevel::run(*site.state, [&] { PortfolioQueries::tenantUploadRows(site.db()); }));
        QCOMPARE(site.prompter.texts(), QStringList { Startup::fieldNotFoundText() });
        QCOMPARE(site.prompter.titles(), QStringList { u"Remitra"_qs });
        QVERIFY(!site.state->EndRequested);

        site.db().execText(u"ALTER TABLE SplitChecks DROP COLUMN CkPostTo"_qs, "test");
        const QList<PaymentRow> rows = DisburseList::load(site.db(), u"Payee"_qs);
        QVERIFY(!rows.isEmpty());
        auto script = DisburseFixture::answering(site, 200, u""_qs);
        bool stop = false;
        QCOMPARE(raisedError([&] { DistributionRun(*site.state, stop).MakePaymentsNow(rows, {}); }),
            3265);
        QVERIFY(script->calls.isEmpty());
        QVERIFY(site.fileBytes(site.state->DisbursementUploadName).isNull());
    }

    void keyedRows_data()
    {
        QTest::addColumn<QString>("engine");
        QTest::newRow("sqlite") << u"sqlite"_qs;
        // The Access forms are plain SQL that SQLite reads as well.
        QTest::newRow("access") << u"access"_qs;
    }

    // A tenant's first unit alone takes a posting; a row changed by someone
    // else since it was read is not overwritten; rows that cannot be told
    // apart stop the posting rather than take it twice. The Access join
    // gives the same rows as the embedded one.
    void keyedRows()
    {
        QFETCH(QString, engine);
        const EngineSql &sql = engineNamed(engine);
        TestSite site;
        auto unit = [&](qint64 tenant, const QString &address, double balance) {
            site.insert(u"Units"_qs,
                { { u"UTenantID"_qs, tenant }, { u"UAddress"_qs, address },
                    { u"UNumber"_qs, QVariant() }, { u"UCurrBal"_qs, balance } });
        };
        unit(7, u"1 Oak St"_qs, 100);
        unit(7, u"2 Oak St"_qs, 100);
        unit(8, u"3 Oak St"_qs, 5);
        KeyedRows units(site.db(), sql, u"Units"_qs, u"UTenantID"_qs,
            { u"UCurrBal"_qs, u"UAddress"_qs, u"UNumber"_qs });
        QVERIFY(units.addToFirst(7, 0, Currency::fromWhole(25)));
        QVERIFY(!units.addToFirst(9, 0, Currency::fromWhole(25)));
        QCOMPARE(site.rows(u"SELECT UCurrBal FROM Units ORDER BY rowid"_qs),
            (QList<QVariantMap> { { { u"UCurrBal"_qs, 125.0 } }, { { u"UCurrBal"_qs, 100.0 } },
                { { u"UCurrBal"_qs, 5.0 } } }));

        const KeyedRows::Row read = *units.first(8);
        site.db().execText(u"UPDATE Units SET UCurrBal = 6 WHERE UTenantID = 8"_qs, "test");
        QCOMPARE(units.set(read, 0, 50.0), engine == u"sqlite"_qs ? 1 : 0);

        unit(9, u"4 Oak St"_qs, 1);
        unit(9, u"4 Oak St"_qs, 1);
        if (engine == u"access"_qs) {
            {
                HostDb::Transaction tx(site.db());
                QCOMPARE(
                    raisedError([&] { units.addToFirst(9, 0, Currency::fromWhole(1)); }), 3197);
            }
            QCOMPARE(
                site.scalar(u"SELECT sum(UCurrBal) FROM Units WHERE UTenantID = 9"_qs).toInt(), 2);
        } else {
            QVERIFY(units.addToFirst(9, 0, Currency::fromWhole(1)));
            QCOMPARE(
                site.scalar(u"SELECT sum(UCurrBal) FROM Units WHERE UTenantID = 9"_qs).toInt(), 3);
        }

        // Rows read in a batch are the rows a seek meets, in its order; a
        // balance changed twice in one posting adds up from what was
        // written, not from what the batch read.
        const QStringList fields { u"UCurrBal"_qs, u"UAddress"_qs, u"UNumber"_qs };
        KeyedRows batch(site.db(), sql, u"Units"_qs, u"UTenantID"_qs, fields);
        KeyedRows seek(site.db(), sql, u"Units"_qs, u"UTenantID"_qs, fields);
        auto values = [](const QList<KeyedRows::Row> &rows) {
            QList<QList<QVariant>> out;
            for (const KeyedRows::Row &row : rows)
                out << row.values;
            return out;
        };
        batch.readKeys({ 9, 7, 42, 8, 7 });
        for (qint64 key : { 7, 8, 9, 42 })
            QCOMPARE(values(batch.rows(key)), values(seek.rows(key)));
        QVERIFY(batch.addToFirst(8, 0, Currency::fromWhole(10)));
        QVERIFY(batch.addToFirst(8, 0, Currency::fromWhole(10)));
        QCOMPARE(site.scalar(u"SELECT UCurrBal FROM Units WHERE UTenantID = 8"_qs).toInt(),
            engine == u"sqlite"_qs ? 70 : 26);

        // The portfolio join, as written for the engine.
        site.insert(u"Owners"_qs, { { u"OwnerID"_qs, 1 } });
        site.insert(u"Owners"_qs, { { u"OwnerID"_qs, 2 } });
        site.insert(u"Properties"_qs, { { u"PropID"_qs, 10 }, { u"POwnerID"_qs, 1 } });
        site.insert(u"Properties"_qs, { { u"PropID"_qs, 20 }, { u"POwnerID"_qs, 3 } });
        for (const auto &[tenant, prop] : { std::pair { 7, 10 }, { 8, 10 }, { 9, 20 }, { 6, 10 } })
            site.insert(u"Tenants"_qs, { { u"TenantID"_qs, tenant }, { u"TPropID"_qs, prop } });
        QStringList joined;
        for (const QVariantMap &r : site.rows(u"SELECT Units.UAddress"_qs + sql.portfolioJoin()
                 + u" ORDER BY Units.UAddress"_qs))
            joined << r.value(u"UAddress"_qs).toString();
        QCOMPARE(joined, (QStringList { u"1 Oak St"_qs, u"2 Oak St"_qs, u"3 Oak St"_qs }));
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
