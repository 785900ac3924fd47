#include "DisburseFixture.h"

#include "app/Startup.h"
#include "app/TopLevel.h"
#include "core/RuntimeError.h"
#include "disburse/DistributionRun.h"
#include "hostdb/BatchRead.h"
#include "hostdb/DisburseList.h"
#include "hostdb/EngineSql.h"
#include "hostdb/EnrolmentQueries.h"
#include "hostdb/HostStatement.h"
#include "hostdb/KeyedRows.h"
#include "hostdb/PortfolioQueries.h"
#include "hostdb/TenantListing.h"

#include <QDate>
#include <QSqlQuery>
#include <QTest>

#include <algorithm>

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
        QVERIFY(!TopLevel::run(*site.state, [&] { PortfolioQueries::tenantUploadSql(site.db()); }));
        QCOMPARE(site.prompter.texts(), QStringList { Startup::fieldNotFoundText() });
        QCOMPARE(site.prompter.titles(), QStringList { u"Remitra"_qs });
        QVERIFY(!site.state->endRequested);

        site.db().execText(u"ALTER TABLE SplitChecks DROP COLUMN CkPostTo"_qs, "test");
        const QList<PaymentRow> rows = DisburseList::load(site.db(), u"Payee"_qs);
        QVERIFY(!rows.isEmpty());
        auto script = DisburseFixture::answering(site, 200, u""_qs);
        bool stop = false;
        QCOMPARE(raisedError([&] { DistributionRun(*site.state, stop).makePaymentsNow(rows, {}); }),
            3265);
        QVERIFY(script->calls.isEmpty());
        QVERIFY(site.fileBytes(site.state->files.disbursementUpload).isNull());
    }

    void statementsBindAsTheDriverDoes_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("null text") << QVariant(QString());
        QTest::newRow("empty text") << QVariant(u""_qs);
        QTest::newRow("text") << QVariant(u"Flat \"B\", Rue Lépine"_qs);
        QTest::newRow("null date") << QVariant(QDate());
        QTest::newRow("date") << QVariant(QDate(2026, 11, 2));
        QTest::newRow("whole number") << QVariant(qint64(-7));
        QTest::newRow("money") << QVariant(1234.5678);
        QTest::newRow("null") << QVariant();
    }

    // A posting's writes go through the engine's own interface: what they
    // store must be what the driver would have stored.
    void statementsBindAsTheDriverDoes()
    {
        QFETCH(QVariant, value);
        TestSite site;
        site.db().execText(u"CREATE TEMP TABLE bound (via TEXT, v)"_qs, "test");
        HostStatement engine(site.db(), u"INSERT INTO bound VALUES ('engine', :v)"_qs);
        engine.bind(0, value);
        engine.exec("test");
        QSqlQuery driver = site.db().prepare(u"INSERT INTO bound VALUES ('driver', :v)"_qs);
        driver.bindValue(0, value);
        HostDb::exec(driver, "test");
        const auto stored = [&](const QString &via) {
            return site.scalar(
                u"SELECT typeof(v) || ':' || quote(v) FROM bound WHERE via = '"_qs + via + u"'"_qs);
        };
        QCOMPARE(stored(u"engine"_qs), stored(u"driver"_qs));
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

    // Many keys in batches give the rows a seek gives, once each, with the
    // values as the driver reads them; an UPDATE takes its new value before
    // the keys.
    void batchReadAnswersAsSeeksDo()
    {
        TestSite site;
        for (int t = 1; t <= 450; ++t)
            site.insert(u"Tenants"_qs,
                { { u"TenantID"_qs, t }, { u"TPropID"_qs, t % 7 == 0 ? QVariant() : QVariant(t) },
                    { u"TLastName1"_qs, t % 5 == 0 ? QVariant() : QVariant(u"Lee é %1"_qs.arg(t)) },
                    { u"TCurrBal"_qs, t + 0.25 } });
        QList<qint64> keys;
        for (qint64 k = 900; k >= -3; k -= 2)
            keys << k << k; // three batches: missing, doubled, out of order
        QList<QList<QVariant>> read;
        BatchRead::run(site.db(),
            u"SELECT TenantID, TPropID, TLastName1, TCurrBal FROM Tenants WHERE TenantID IN ("_qs,
            keys, "test", [&](const BatchRead::Row &row) {
                read << QList<QVariant> { row.value(0), row.value(1), row.value(2), row.value(3) };
            });
        QList<QList<QVariant>> seek;
        QSqlQuery one = site.db().prepare(
            u"SELECT TenantID, TPropID, TLastName1, TCurrBal FROM Tenants WHERE TenantID = ?"_qs);
        std::sort(keys.begin(), keys.end());
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
        for (qint64 key : keys) {
            one.bindValue(0, key);
            HostDb::exec(one, "test");
            while (one.next())
                seek << QList<QVariant> { one.value(0), one.value(1), one.value(2), one.value(3) };
        }
        QCOMPARE(seek.size(), 225);
        QCOMPARE(read, seek);

        BatchRead::run(site.db(), u"UPDATE Tenants SET TACH = ? WHERE TenantID IN ("_qs, keys,
            "test", [](const BatchRead::Row &) {}, { u"Y"_qs });
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Tenants WHERE TACH = 'Y'"_qs).toInt(), 225);
    }

    void tenantListingMatchesTheDatabase_data()
    {
        QTest::addColumn<QString>("sort");
        QTest::addColumn<bool>("enrolledOnly");
        for (const QString &sort : EnrolmentQueries::sortTexts(EnrolmentQueries::Roster::Tenants))
            for (bool enrolled : { false, true })
                QTest::addRow("%s%s", qPrintable(sort), enrolled ? ", enrolled" : "")
                    << sort << enrolled;
    }

    // The tenant list worked out in the program has the rows and the order
    // of the database's own join and sort: its collation (ASCII letters
    // folded, other characters by their bytes), Nulls first, equal texts
    // by the unit's row, rows whose chain of ids is broken left out.
    void tenantListingMatchesTheDatabase()
    {
        QFETCH(QString, sort);
        QFETCH(bool, enrolledOnly);
        TestSite site;
        const QVariant null;
        const QList<QVariant> names { u"apple"_qs, u"Apple"_qs, u"APPLE "_qs, u"Éclair"_qs,
            u"eclair"_qs, u"_x"_qs, u"Zed"_qs, u""_qs, null, u"apple "_qs };
        auto name = [&](int i) { return names[i % names.size()]; };
        for (int o = 1; o <= 4; ++o)
            site.insert(u"Owners"_qs,
                { { u"OwnerID"_qs, o }, { u"OLastName1"_qs, name(o) },
                    { u"OFirstName1"_qs, name(o * 3) } });
        for (int p = 1; p <= 9; ++p)
            site.insert(u"Properties"_qs,
                { { u"PropID"_qs, p }, { u"POwnerID"_qs, p == 9 ? null : QVariant(p % 5) },
                    { u"PropName"_qs, name(p / 2) } });
        const QList<QVariant> flags { u"Y"_qs, u"y"_qs, u" Y"_qs, u"N"_qs, null, u"Yes"_qs };
        for (int t = 1; t <= 30; ++t)
            site.insert(u"Tenants"_qs,
                { { u"TenantID"_qs, t }, { u"TPropID"_qs, t == 30 ? null : QVariant(t % 11) },
                    { u"TLastName1"_qs, name(t * 7) }, { u"TFirstName1"_qs, name(t) },
                    { u"TACH"_qs, flags[t % flags.size()] } });
        for (int u = 1; u <= 45; ++u)
            site.insert(u"Units"_qs,
                { { u"UTenantID"_qs, u == 45 ? null : QVariant(u % 32) },
                    { u"UAddress"_qs, name(u * 5) }, { u"UNumber"_qs, name(u) } });

        EnrolmentQueries::Listing listing;
        listing.sortText = sort;
        listing.enrolledOnly = enrolledOnly;
        const std::optional<QList<qint64>> listed = TenantListing::keys(site.db(), listing);
        QVERIFY(listed.has_value());
        const QList<qint64> bySql = EnrolmentQueries::listedKeysBySql(
            site.db(), EnrolmentQueries::Roster::Tenants, listing);
        QVERIFY(bySql.size() > 10);
        QCOMPARE(*listed, bySql);

        // A search, or an id that is not a whole number, is left to the
        // database.
        listing.search = u"apple"_qs;
        QVERIFY(!TenantListing::keys(site.db(), listing));
        listing.search.clear();
        site.db().execText(u"UPDATE Tenants SET TPropID = 2.5 WHERE TenantID = 3"_qs, "test");
        QVERIFY(!TenantListing::keys(site.db(), listing));
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
