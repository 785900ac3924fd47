#include "TestSupport.h"
#include "UploadsFixture.h"

#include "enrolment/frmTenantUpdate.h"
#include "hostdb/PortfolioQueries.h"
#include "uploads/SetupFile.h"
#include "uploads/TenantUpload.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QScrollBar>
#include <QSqlQuery>
#include <QTableView>
#include <QTest>

#include <ctime>

// Timings over a generated portfolio. Skipped unless REMITRA_BENCH is set
// (REMITRA_BENCH=100000 gives that many tenants; any other value 100,000).
namespace {

// Processor time of this process in ms: on a shared machine the wall clock
// also counts other people's work.
qint64 cpuMs()
{
    return qint64(std::clock()) * 1000 / CLOCKS_PER_SEC;
}

qint64 residentKb(const char *field)
{
    QFile status(u"/proc/self/status"_qs);
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(qstrlen(field)).trimmed().split(' ').first().toLongLong();
    }
    return -1;
}

void generate(TestSite &site, int tenants)
{
    UploadsFixture::addCompany(site);
    QSqlDatabase db = site.db().database();
    db.transaction();
    QSqlQuery owner(db), property(db), tenant(db), unit(db);
    owner.prepare(
        u"INSERT INTO Owners (OwnerID, OFirstName1, OLastName1, OACH) VALUES (?, ?, ?, ?)"_qs);
    property.prepare(
        u"INSERT INTO Properties (PropID, POwnerID, PropName, PropAddress1, PropAddress2, "
        "PropCity, PropState, PropZip) VALUES (?, ?, ?, ?, ?, 'Springfield', 'IL', '62701')"_qs);
    tenant.prepare(
        u"INSERT INTO Tenants (TenantID, TPropID, TFirstName1, TLastName1, TACH, TCurrBal, "
        "TStartDate) VALUES (?, ?, ?, ?, ?, ?, '2024-03-01')"_qs);
    unit.prepare(u"INSERT INTO Units (UTenantID, UAddress, UNumber) VALUES (?, ?, ?)"_qs);
    const int properties = qMax(1, tenants / 10);
    const int owners = qMax(1, properties / 5);
    for (int o = 1; o <= owners; ++o) {
        owner.addBindValue(o);
        owner.addBindValue(u"First%1"_qs.arg(o));
        owner.addBindValue(u"Owner%1"_qs.arg(o));
        owner.addBindValue(o % 3 ? u"Y"_qs : u"N"_qs);
        owner.exec();
    }
    for (int p = 1; p <= properties; ++p) {
        property.addBindValue(p);
        property.addBindValue(1 + (p * 7919) % owners);
        property.addBindValue(u"Building %1"_qs.arg(p));
        property.addBindValue(u"%1 Main St"_qs.arg(p));
        property.addBindValue(p % 4 ? QString() : u"Suite 2"_qs);
        property.exec();
    }
    for (int t = 1; t <= tenants; ++t) {
        // Entered in an order unrelated to the keys.
        const int id = 1 + int((qint64(t) * 48271) % tenants);
        tenant.addBindValue(id);
        tenant.addBindValue(1 + id % properties);
        tenant.addBindValue(u"Tenant%1"_qs.arg(id));
        tenant.addBindValue(u"Family%1"_qs.arg(id % 997));
        tenant.addBindValue(id % 5 ? u"Y"_qs : u"N"_qs);
        tenant.addBindValue(double(id % 1000) + 0.25);
        tenant.exec();
        unit.addBindValue(id);
        unit.addBindValue(u"Apt %1"_qs.arg(id % 40));
        unit.addBindValue(QString::number(id % 40));
        unit.exec();
    }
    db.commit();
}

} // namespace

class TestBigPortfolio : public QObject
{
    Q_OBJECT

private slots:
    void buildAndOpen()
    {
        const QByteArray env = qgetenv("REMITRA_BENCH");
        if (env.isEmpty())
            QSKIP("set REMITRA_BENCH to run the timings");
        const int tenants = env.toInt() > 0 ? env.toInt() : 100000;
        TestSite site;
        generate(site, tenants);
        const qint64 rssBefore = residentKb("VmRSS:");

        QElapsedTimer timer;
        timer.start();
        for (QSqlQuery rows = PortfolioQueries::setupRows(site.db()); rows.next();)
            rows.value(0);
        const qint64 setupReadMs = timer.restart();
        for (QSqlQuery rows = PortfolioQueries::tenantUploadRows(site.db()); rows.next();)
            rows.value(0);
        const qint64 tenantReadMs = timer.restart();
        qInfo("reading the rows alone: setup %lld ms, tenant %lld ms", setupReadMs, tenantReadMs);
        qint64 cpu = cpuMs();
        BuildSetupFile(*site.state);
        const qint64 setupMs = timer.restart();
        const qint64 setupCpu = cpuMs() - cpu;
        cpu = cpuMs();
        BuildTenantUpload(*site.state);
        const qint64 tenantMs = timer.restart();
        const qint64 tenantCpu = cpuMs() - cpu;
        const qint64 rssAfter = residentKb("VmRSS:");
        qInfo(
            "%d tenants: setup file %lld ms (processor %lld ms, %lld bytes), tenant upload %lld ms "
            "(processor %lld ms, %lld bytes); resident memory %lld kB before, %lld kB after "
            "building",
            tenants, setupMs, setupCpu, QFileInfo(site.path(site.state->SetupUploadName)).size(),
            tenantMs, tenantCpu, QFileInfo(site.path(site.state->TenantUploadName)).size(),
            rssBefore, rssAfter);

        timer.restart();
        cpu = cpuMs();
        frmTenantUpdate screen(*site.state);
        screen.show();
        QCoreApplication::processEvents();
        const qint64 openMs = timer.restart();
        const qint64 openCpu = cpuMs() - cpu;
        auto *grid = screen.findChild<QTableView *>(u"gridACH"_qs);
        QCOMPARE(grid->model()->rowCount(), tenants);
        // Page down through the first thousand pages' worth of scroll steps,
        // then jump to the end and back.
        QScrollBar *bar = grid->verticalScrollBar();
        int pages = 0;
        qint64 worstPageMs = 0;
        QElapsedTimer page;
        for (; pages < 300 && bar->value() < bar->maximum(); ++pages) {
            page.start();
            bar->setValue(bar->value() + bar->pageStep());
            grid->viewport()->repaint();
            worstPageMs = qMax(worstPageMs, page.elapsed());
        }
        page.start();
        bar->setValue(bar->maximum());
        grid->viewport()->repaint();
        const qint64 endMs = page.elapsed();
        qInfo("tenant screen opened in %lld ms (processor %lld ms); %d page steps, slowest %lld "
              "ms; jump to the end %lld ms; "
              "resident memory %lld kB",
            openMs, openCpu, pages, worstPageMs, endMs, residentKb("VmRSS:"));
    }
};

QTEST_MAIN(TestBigPortfolio)
#include "tst_bigportfolio.moc"
