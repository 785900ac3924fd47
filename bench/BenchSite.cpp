#include "BenchSite.h"

#include "DemoSite.h"

#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "hostdb/HostDb.h"
#include "hostdb/PortfolioQueries.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>

namespace BenchSite {

namespace {

QVariant scalar(HostDb &db, const QString &sql)
{
    QSqlQuery q = db.prepare(sql);
    HostDb::exec(q, "reading the bench portfolio");
    return q.next() ? q.value(0) : QVariant();
}

// Entered checks to enrolled owners, each with three split lines: to the
// owner, to one of the owner's properties and to a unit of that property.
// Owner names are made distinct first, so that every check is listed for
// exactly one payee, as on a real site.
void addChecks(HostDb &db, int checks)
{
    db.execText(u"UPDATE Owners SET OLastName1 = OLastName1 || '-' || OwnerID"_qs,
        "making owner names distinct");
    // Each owner's first property and each property's first tenant, found in
    // one pass: the host has no index on POwnerID or TPropID, and a look-up
    // per payee or per check would scan the table every time.
    db.execText(u"CREATE TEMP TABLE BenchFirstProp AS SELECT POwnerID AS OwnerID, "
                "min(PropID) AS Prop FROM Properties GROUP BY POwnerID"_qs,
        "choosing the payees");
    db.execText(u"CREATE TEMP TABLE BenchFirstTenant AS SELECT TPropID AS Prop, "
                "min(TenantID) AS Tenant FROM Tenants GROUP BY TPropID"_qs,
        "choosing the payees");
    db.execText(u"CREATE INDEX temp.BenchFirstTenantProp ON BenchFirstTenant (Prop)"_qs,
        "choosing the payees");
    db.execText(u"CREATE TEMP TABLE BenchPayee AS SELECT Owners.OwnerID, OFirstName1 || ' ' || "
                "OLastName1 AS Payee, row_number() OVER (ORDER BY Owners.OwnerID) - 1 AS Pos, "
                "f.Prop AS Prop FROM Owners JOIN BenchFirstProp f ON f.OwnerID = Owners.OwnerID "
                "WHERE OACH = 'Y'"_qs,
        "choosing the payees");
    db.execText(u"CREATE INDEX temp.BenchPayeePos ON BenchPayee (Pos)"_qs, "choosing the payees");
    db.execText(
        u"CREATE INDEX temp.BenchPayeeOwner ON BenchPayee (OwnerID)"_qs, "choosing the payees");
    const int payees = scalar(db, u"SELECT count(*) FROM BenchPayee"_qs).toInt();
    if (payees == 0 || checks <= 0)
        return;
    db.execText(
        u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
        "INSERT INTO CheckEntered (CkPayee, CkDate, CkAmount, CkInvoice, CkRemark, "
        "CkVendorID, CkStatus, CkSplit, CkAccountID, CkPostToID, CkPostTo, CkNumber, "
        "CkType) SELECT p.Payee, date('now', '-' || (i % 9) || ' days'), "
        "537.5 + i % 700, 'DIST-' || i, 'Owner distribution ' || i, 0, '', 'Y', 3100, "
        "p.OwnerID, 'O', 0, 'C' FROM n JOIN BenchPayee p ON p.Pos = n.i % %2"_qs.arg(checks - 1)
            .arg(payees),
        "writing entered checks");
    // The split lines of those checks: the owner's share, a property reserve
    // and a unit charge, adding up to the check.
    const QString splits
        = u"INSERT INTO SplitChecks (CkNumber, CkAmount, CkAccountID, CkPostToID, CkRemark, "
          "CkStatus, CkType, CkPostTo) SELECT c.CkID, %1, %2, %3, %4, '', 'C', '%5' FROM "
          "CheckEntered c JOIN BenchPayee p ON p.OwnerID = c.CkPostToID WHERE c.CkInvoice LIKE "
          "'DIST-%' ORDER BY c.CkID"_qs;
    db.execText(splits.arg(u"c.CkAmount - 37.5"_qs, u"3100"_qs, u"p.OwnerID"_qs,
                    u"'Owner distribution'"_qs, u"O"_qs),
        "writing split lines");
    db.execText(splits.arg(u"25"_qs, u"3150"_qs, u"p.Prop"_qs, u"'Property reserve'"_qs, u"P"_qs),
        "writing split lines");
    db.execText(splits.arg(u"12.5"_qs, u"6200"_qs,
                    u"(SELECT Tenant FROM BenchFirstTenant WHERE Prop = p.Prop)"_qs,
                    u"'Unit lock change'"_qs, u"U"_qs),
        "writing split lines");
    for (const QString &table : { u"BenchPayee"_qs, u"BenchFirstProp"_qs, u"BenchFirstTenant"_qs })
        db.execText(u"DROP TABLE "_qs + table, "choosing the payees");
}

// A payment file as the download leaves it: one payment for each of
// `count` occupied units, spread over the site; one in ten a late fee.
int writePayments(HostDb &db, const QString &path, int count)
{
    QSqlQuery q = db.prepare(u"SELECT TenantID, TPropID FROM Tenants WHERE TFirstName1 NOT "
                             "LIKE 'VACANT%' ORDER BY TenantID"_qs);
    HostDb::exec(q, "reading tenants");
    QList<std::pair<qint64, qint64>> tenants;
    while (q.next())
        tenants.append({ q.value(0).toLongLong(), q.value(1).toLongLong() });
    if (tenants.isEmpty())
        return 0;
    QString text;
    text.reserve(qsizetype(count) * 64);
    for (int i = 0; i < count; ++i) {
        const auto &[tenant, prop] = tenants[qsizetype((qint64(i) * 7919) % tenants.size())];
        text += u"P%1,U%2,T%2,%3.%4,11/02/2026,%5,11/03/2026,ACH,%6\r\n"_qs.arg(prop)
                    .arg(tenant)
                    .arg(950 + (i * 37) % 1600)
                    .arg(i % 4 * 25, 2, 10, QChar(u'0'))
                    .arg(200000 + i)
                    .arg(i % 10 == 9 ? u"Late Fee"_qs : u"Rent"_qs);
    }
    text += u"\r\n"_qs;
    TransferFile::writeAtomic(path, text);
    return count;
}

void copyFile(const QString &from, const QString &to)
{
    QFile::remove(to);
    if (!QFile::copy(from, to))
        throw RuntimeError::permissionDenied();
}

} // namespace

Written write(const QString &folder, const Sizes &sizes)
{
    const DemoSite::Counts counts = DemoSite::writeSite(folder, sizes.tenants);
    Written written;
    written.owners = counts.owners;
    written.properties = counts.properties;
    written.tenants = counts.tenants;
    {
        auto db = HostDb::openFolder(folder);
        {
            HostDb::Transaction tx(*db);
            addChecks(*db, sizes.checks);
            tx.commit();
        }
        written.checks = scalar(*db, u"SELECT count(*) FROM CheckEntered"_qs).toInt();
        written.payments
            = writePayments(*db, QDir(folder).filePath(PaymentFileCopy), sizes.payments);
        written.exportSql = setupExportSql(*db);
    }
    DemoSite::writeSettings(QDir(folder).filePath(SettingsName),
        u"http://127.0.0.1:9/qps/upload.php"_qs, u"bench"_qs, u"bench"_qs);
    written.databaseBytes
        = QFileInfo(QDir(folder).filePath(QString::fromLatin1(HostDb::SqliteFileName))).size();
    return written;
}

void copyForJob(const QString &master, const QString &folder, bool withPaymentFile)
{
    const QDir from(master);
    QDir to(folder);
    if (to.exists())
        to.removeRecursively();
    QDir().mkpath(folder);
    for (const QString &name :
        { QString::fromLatin1(HostDb::SqliteFileName), u"IDFILE.DAT"_qs, SettingsName })
        copyFile(from.filePath(name), to.filePath(name));
    if (withPaymentFile)
        copyFile(from.filePath(PaymentFileCopy), to.filePath(u"DX_Quenta_PaymentFile.txt"_qs));
}

QString setupExportSql(const HostDb &db)
{
    return u"SELECT 'DXRM', 'O' || Owners.OwnerID, Owners.OFirstName1 || ' ' || "
           "Owners.OLastName1, 'P' || Properties.PropID, Properties.PropName, "
           "(SELECT CName1 FROM Company LIMIT 1), (SELECT CEmail1 FROM Company LIMIT 1), "
           "(SELECT CEmail1 FROM Company LIMIT 1), (SELECT CPhone1 FROM Company LIMIT 1), "
           "(SELECT CPhone2 FROM Company LIMIT 1), CASE WHEN Properties.PropAddress2 = '' THEN "
           "Properties.PropAddress1 ELSE Properties.PropAddress1 || ' ' || "
           "ifnull(Properties.PropAddress2, '') END, Properties.PropCity, "
           "Properties.PropState, Properties.PropZip, 'U' || Units.UTenantID, Units.UAddress, "
           "Properties.PropCity, Properties.PropState, Properties.PropZip"_qs
        + PortfolioQueries::portfolioJoin(db)
        + u" ORDER BY Owners.OwnerID, Properties.PropID, Units.UTenantID;"_qs;
}

} // namespace BenchSite
