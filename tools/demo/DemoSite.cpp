#include "DemoSite.h"

#include "app/Credentials.h"
#include "app/ProgramState.h"
#include "core/ScriptedPrompter.h"
#include "core/TransferFile.h"
#include "hostdb/HostDb.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QStringList>

#include <algorithm>

namespace DemoSite {

namespace {

const QStringList kFirstNames = { u"James"_qs, u"Maria"_qs, u"Robert"_qs, u"Linda"_qs,
    u"Michael"_qs, u"Patricia"_qs, u"David"_qs, u"Jennifer"_qs, u"William"_qs, u"Elena"_qs,
    u"Richard"_qs, u"Susan"_qs, u"Joseph"_qs, u"Karen"_qs, u"Thomas"_qs, u"Nancy"_qs, u"Carlos"_qs,
    u"Lisa"_qs, u"Daniel"_qs, u"Betty"_qs, u"Anthony"_qs, u"Sandra"_qs, u"Kevin"_qs, u"Ashley"_qs,
    u"Brian"_qs, u"Dorothy"_qs, u"George"_qs, u"Kimberly"_qs, u"Edward"_qs, u"Grace"_qs };
const QStringList kLastNames = { u"Smith"_qs, u"Johnson"_qs, u"Garcia"_qs, u"Miller"_qs,
    u"Davis"_qs, u"Rodriguez"_qs, u"Martinez"_qs, u"Hernandez"_qs, u"Lopez"_qs, u"Wilson"_qs,
    u"Anderson"_qs, u"Thomas"_qs, u"Taylor"_qs, u"Moore"_qs, u"Jackson"_qs, u"Martin"_qs, u"Lee"_qs,
    u"Perez"_qs, u"Thompson"_qs, u"White"_qs, u"Harris"_qs, u"Sanchez"_qs, u"Clark"_qs,
    u"Ramirez"_qs, u"Lewis"_qs, u"Robinson"_qs, u"Walker"_qs, u"Young"_qs, u"Allen"_qs, u"King"_qs,
    u"Wright"_qs };
const QStringList kStreets
    = { u"Maple Ave"_qs, u"Oak St"_qs, u"Harbor Blvd"_qs, u"Cedar Ln"_qs, u"Mission Rd"_qs,
          u"Sycamore Dr"_qs, u"Pine St"_qs, u"Lakeview Ter"_qs, u"Elm St"_qs, u"Canyon View Rd"_qs,
          u"Birch Ct"_qs, u"Willow Way"_qs, u"Main St"_qs, u"Sunset Blvd"_qs, u"Park Pl"_qs };
struct Town
{
    const char16_t *city;
    const char16_t *state;
    const char16_t *zip;
};
constexpr Town kTowns[] = { { u"Ventura", u"CA", u"93001" }, { u"Oxnard", u"CA", u"93030" },
    { u"Santa Barbara", u"CA", u"93101" }, { u"Camarillo", u"CA", u"93010" },
    { u"Thousand Oaks", u"CA", u"91360" }, { u"Simi Valley", u"CA", u"93065" },
    { u"Ojai", u"CA", u"93023" }, { u"Goleta", u"CA", u"93117" } };
constexpr int kTownCount = int(sizeof kTowns / sizeof kTowns[0]);
const QStringList kPropertyNames = { u"Maple Court"_qs, u"Harbor View"_qs, u"Cedar Gardens"_qs,
    u"Mission Plaza"_qs, u"Sycamore Place"_qs, u"Pine Ridge"_qs, u"Lakeview Terrace"_qs,
    u"Elm Street Duplex"_qs, u"Canyon Villas"_qs, u"Birch Commons"_qs, u"Willow Flats"_qs,
    u"Main Street Lofts"_qs, u"Sunset Arms"_qs, u"Park Place"_qs, u"Oak Hollow"_qs };

struct VendorSeed
{
    const char16_t *name;
    const char16_t *contact;
    const char16_t *ach;
};
constexpr VendorSeed kVendors[] = { { u"Coastal Plumbing & Rooter", u"Frank Ortiz", u"Y" },
    { u"Bright Spark Electric", u"Dana Kim", u"Y" },
    { u"Green Valley Landscaping", u"Luis Ramos", u"N" },
    { u"Pacific Pest Control", u"Amy Chen", u"Y" },
    { u"Ace Appliance Repair", u"Tom Becker", u"D" },
    { u"Harbor Roofing Co", u"Steve Grant", u"Y" },
    { u"Clean Sweep Janitorial", u"Rosa Diaz", u"" },
    { u"Ventura Water District", u"Customer Service", u"N" } };
constexpr int kVendorCount = int(sizeof kVendors / sizeof kVendors[0]);

QString pick(const QStringList &list, qint64 i)
{
    return list[int(i % list.size())];
}

QString phone(qint64 i)
{
    return u"805-555-%1"_qs.arg(int(1000 + (i * 37) % 9000), 4, 10, QChar(u'0'));
}

// A money amount as the host stores it: REAL rounded to 4 places (whole
// cents here).
double cents(qint64 c)
{
    return double(c) / 100.0;
}

void run(QSqlQuery &query, const char *operation)
{
    HostDb::exec(query, operation);
}

struct Owner
{
    int id;
    QString first;
    QString last;
    QString first2;
    QString last2;
    QString ach;
};

} // namespace

Counts fillPortfolio(HostDb &db, int tenants)
{
    Counts counts;
    counts.tenants = std::max(1, tenants);
    counts.properties = std::max(3, counts.tenants / 4);
    counts.owners = std::max(3, counts.properties / 2);
    counts.vendors = kVendorCount;

    // A generated site is thrown away rather than recovered after a crash.
    db.execText(u"PRAGMA synchronous = OFF"_qs, "preparing the demo database");
    db.execText(u"PRAGMA journal_mode = MEMORY"_qs, "preparing the demo database");

    HostDb::Transaction tx(db);

    // The company record: the contact fields Remitra sends.
    QSqlQuery company = db.prepare(u"INSERT INTO Company (CName1, CEmail1, CPhone1, CPhone2) "
                                   "VALUES (:name, :email, :phone1, :phone2)"_qs);
    company.bindValue(u":name"_qs, u"Sunrise Property Management"_qs);
    company.bindValue(u":email"_qs, u"office@sunrise-pm.example"_qs);
    company.bindValue(u":phone1"_qs, u"805-555-0100"_qs);
    company.bindValue(u":phone2"_qs, u"805-555-0101"_qs);
    run(company, "writing the company record");

    // Owners: the first has a second owner at 50%; enrolment flags cycle
    // through enrolled, not enrolled and to be removed.
    QList<Owner> owners;
    QSqlQuery owner = db.prepare(
        u"INSERT INTO Owners (OwnerID, OFirstName1, OLastName1, OFirstName2, OLastName2, "
        u"OAddress1, "
        "OAddress2, OCity, OState, OZip, OPhone1, OPhone2, OEmail1, OACH, OPercent2, OMgmtFee, "
        "OCurrBal) VALUES (:id, :first, :last, :first2, :last2, :address1, :address2, :city, "
        ":state, :zip, :phone1, :phone2, :email, :ach, :percent2, :fee, :balance)"_qs);
    const QStringList ownerAch = { u"Y"_qs, u"Y"_qs, u"N"_qs, u"Y"_qs, u"D"_qs, u"Y"_qs, u""_qs };
    const QStringList fees = { u"8%"_qs, u"25"_qs, u"10%"_qs, u""_qs, u"6.5%"_qs };
    for (int i = 0; i < counts.owners; ++i) {
        Owner o { i + 1, pick(kFirstNames, i * 7 + 3), pick(kLastNames, i * 11 + 5), {}, {},
            pick(ownerAch, i) };
        if (i == 0) {
            o.first2 = pick(kFirstNames, 9);
            o.last2 = o.last;
        }
        const Town &town = kTowns[(i * 3) % kTownCount];
        owner.bindValue(u":id"_qs, o.id);
        owner.bindValue(u":first"_qs, o.first);
        owner.bindValue(u":last"_qs, o.last);
        owner.bindValue(u":first2"_qs, o.first2.isEmpty() ? QVariant() : QVariant(o.first2));
        owner.bindValue(u":last2"_qs, o.last2.isEmpty() ? QVariant() : QVariant(o.last2));
        owner.bindValue(
            u":address1"_qs, u"%1 %2"_qs.arg(100 + (i * 53) % 8800).arg(pick(kStreets, i * 5 + 1)));
        owner.bindValue(
            u":address2"_qs, i % 4 == 1 ? QVariant(u"Apt %1"_qs.arg(i % 30 + 1)) : QVariant());
        owner.bindValue(u":city"_qs, QString::fromUtf16(town.city));
        owner.bindValue(u":state"_qs, QString::fromUtf16(town.state));
        owner.bindValue(u":zip"_qs, QString::fromUtf16(town.zip));
        owner.bindValue(u":phone1"_qs, phone(i * 3 + 1));
        owner.bindValue(u":phone2"_qs, i % 3 == 0 ? QVariant(phone(i * 3 + 2)) : QVariant());
        owner.bindValue(
            u":email"_qs, u"%1.%2@mail.example"_qs.arg(o.first.toLower(), o.last.toLower()));
        owner.bindValue(u":ach"_qs, o.ach);
        owner.bindValue(u":percent2"_qs, i == 0 ? QVariant(u"50"_qs) : QVariant());
        owner.bindValue(u":fee"_qs, pick(fees, i));
        owner.bindValue(u":balance"_qs, cents((i * 104729) % 900000));
        run(owner, "writing owners");
        owners << o;
    }

    QSqlQuery property = db.prepare(
        u"INSERT INTO Properties (PropID, POwnerID, PropName, PropAddress1, PropAddress2, "
        u"PropCity, "
        "PropState, PropZip, CName1, CEmail1, CPhone1, CPhone2, PCurrBal) VALUES (:id, :owner, "
        ":name, :address1, :address2, :city, :state, :zip, :contact, :email, :phone1, :phone2, "
        ":balance)"_qs);
    QList<QString> propertyStreet;
    for (int p = 0; p < counts.properties; ++p) {
        const Town &town = kTowns[p % kTownCount];
        const QString street = u"%1 %2"_qs.arg(200 + (p * 97) % 9700).arg(pick(kStreets, p));
        propertyStreet << street;
        QString name = pick(kPropertyNames, p);
        if (p >= kPropertyNames.size())
            name += u" "_qs + QString::number(p / kPropertyNames.size() + 1);
        property.bindValue(u":id"_qs, 100 + p + 1);
        property.bindValue(u":owner"_qs, p % counts.owners + 1);
        property.bindValue(u":name"_qs, name);
        property.bindValue(u":address1"_qs, street);
        property.bindValue(u":address2"_qs, QVariant());
        property.bindValue(u":city"_qs, QString::fromUtf16(town.city));
        property.bindValue(u":state"_qs, QString::fromUtf16(town.state));
        property.bindValue(u":zip"_qs, QString::fromUtf16(town.zip));
        property.bindValue(
            u":contact"_qs, pick(kFirstNames, p * 13) + u" "_qs + pick(kLastNames, p * 17));
        property.bindValue(u":email"_qs, u"manager%1@sunrise-pm.example"_qs.arg(p % 9 + 1));
        property.bindValue(u":phone1"_qs, phone(p * 5 + 7));
        property.bindValue(u":phone2"_qs, QVariant());
        property.bindValue(u":balance"_qs, cents((p * 7919) % 250000));
        run(property, "writing properties");
    }

    // Tenants and their units: every tenth unit is vacant (a VACANT
    // placeholder tenant); enrolment flags cycle through Y, N, D and blank.
    QSqlQuery tenant = db.prepare(
        u"INSERT INTO Tenants (TenantID, TPropID, TFirstName1, TLastName1, TAddress, TCity, "
        u"TState, "
        "TZip, TEmail1, TEmail2, TACH, TCurrBal, TStartDate) VALUES (:id, :prop, :first, :last, "
        ":address, :city, :state, :zip, :email1, :email2, :ach, :balance, :start)"_qs);
    QSqlQuery unit = db.prepare(
        u"INSERT INTO Units (UTenantID, UAddress, UNumber, UCurrBal) VALUES (:tenant, :address, "
        ":number, :balance)"_qs);
    const QStringList tenantAch = { u"Y"_qs, u"Y"_qs, u"N"_qs, u"Y"_qs, u"D"_qs, u""_qs, u"Y"_qs };
    const QDate firstStart(2015, 1, 1);
    for (int t = 0; t < counts.tenants; ++t) {
        const int id = 1000 + t + 1;
        const int p = int(qint64(t) * counts.properties / counts.tenants);
        const Town &town = kTowns[p % kTownCount];
        const int inProperty
            = t - int((qint64(p) * counts.tenants + counts.properties - 1) / counts.properties);
        const QString number = u"%1%2"_qs.arg(inProperty / 4 + 1).arg(QChar(u'A' + inProperty % 4));
        const bool vacant = t % 10 == 9;
        const QString first = vacant ? (t % 20 == 19 ? u"VACANT "_qs + number : u"VACANT"_qs)
                                     : pick(kFirstNames, t * 7 + 1);
        const QString last = vacant ? QString() : pick(kLastNames, t * 13 + 2);
        const qint64 rent = 95000 + (qint64(t) * 2531) % 160000;
        // Some tenants owe the month's rent, some half of it, some are paid up.
        const qint64 balance = vacant || t % 4 == 1 ? 0 : (t % 4 == 2 ? rent / 2 : rent);
        tenant.bindValue(u":id"_qs, id);
        tenant.bindValue(u":prop"_qs, 100 + p + 1);
        tenant.bindValue(u":first"_qs, first);
        tenant.bindValue(u":last"_qs, vacant ? QVariant(u""_qs) : QVariant(last));
        tenant.bindValue(u":address"_qs, propertyStreet[p] + u" #"_qs + number);
        tenant.bindValue(u":city"_qs, QString::fromUtf16(town.city));
        tenant.bindValue(u":state"_qs, QString::fromUtf16(town.state));
        tenant.bindValue(u":zip"_qs, QString::fromUtf16(town.zip));
        tenant.bindValue(u":email1"_qs,
            vacant ? QVariant()
                   : QVariant(
                       u"%1.%2%3@mail.example"_qs.arg(first.toLower(), last.toLower()).arg(id)));
        tenant.bindValue(u":email2"_qs, QVariant());
        tenant.bindValue(u":ach"_qs, vacant ? QVariant(u"N"_qs) : QVariant(pick(tenantAch, t)));
        tenant.bindValue(u":balance"_qs, cents(balance));
        tenant.bindValue(
            u":start"_qs, firstStart.addDays((qint64(t) * 97) % 3500).toString(Qt::ISODate));
        run(tenant, "writing tenants");

        unit.bindValue(u":tenant"_qs, id);
        unit.bindValue(u":address"_qs, propertyStreet[p]);
        unit.bindValue(u":number"_qs, number);
        unit.bindValue(u":balance"_qs, cents(balance));
        run(unit, "writing units");
    }

    QSqlQuery vendor = db.prepare(
        u"INSERT INTO Vendors (VenID, VenName, VenAddress1, VenAddress2, VenCity, VenState, "
        u"VenZip, "
        "VenContact, VenPhone1, VenPhone2, VenEmail1, VACH) VALUES (:id, :name, :address1, "
        ":address2, :city, :state, :zip, :contact, :phone1, :phone2, :email, :ach)"_qs);
    for (int v = 0; v < kVendorCount; ++v) {
        const Town &town = kTowns[(v * 5) % kTownCount];
        vendor.bindValue(u":id"_qs, 500 + v + 1);
        vendor.bindValue(u":name"_qs, QString::fromUtf16(kVendors[v].name));
        vendor.bindValue(
            u":address1"_qs, u"%1 %2"_qs.arg(10 + v * 211).arg(pick(kStreets, v * 3 + 2)));
        vendor.bindValue(u":address2"_qs, QVariant());
        vendor.bindValue(u":city"_qs, QString::fromUtf16(town.city));
        vendor.bindValue(u":state"_qs, QString::fromUtf16(town.state));
        vendor.bindValue(u":zip"_qs, QString::fromUtf16(town.zip));
        vendor.bindValue(u":contact"_qs, QString::fromUtf16(kVendors[v].contact));
        vendor.bindValue(u":phone1"_qs, phone(v * 11 + 40));
        vendor.bindValue(u":phone2"_qs, QVariant());
        vendor.bindValue(u":email"_qs, u"billing%1@vendor.example"_qs.arg(v + 1));
        vendor.bindValue(u":ach"_qs, QString::fromUtf16(kVendors[v].ach));
        run(vendor, "writing vendors");
    }

    // Entered checks: distributions to owners (one to the second owner's
    // name, one to an owner who is not enrolled) and bills of vendors; each
    // with split lines that post to the owner, a property, a unit, a tenant
    // or both tenant and unit.
    QSqlQuery check = db.prepare(
        u"INSERT INTO CheckEntered (CkPayee, CkDate, CkAmount, CkInvoice, CkRemark, CkVendorID, "
        "CkStatus, CkSplit, CkAccountID, CkPostToID, CkPostTo, CkNumber, CkType) VALUES (:payee, "
        ":date, :amount, :invoice, :remark, :vendor, '', :split, :account, :postToId, :postTo, 0, "
        "'C')"_qs);
    QSqlQuery split = db.prepare(
        u"INSERT INTO SplitChecks (CkNumber, CkAmount, CkAccountID, CkPostToID, CkRemark, "
        u"CkStatus, "
        "CkType, CkPostTo) VALUES (:check, :amount, :account, :postToId, :remark, '', 'C', "
        ":postTo)"_qs);
    struct SplitLine
    {
        qint64 amountCents;
        int account;
        int postToId;
        QString postTo;
        QString remark;
    };
    const QDate checkDate = QDate::currentDate();
    auto addCheck = [&](const QString &payee, int vendorId, const QString &invoice,
                        const QString &remark, const QList<SplitLine> &lines) {
        qint64 total = 0;
        for (const SplitLine &l : lines)
            total += l.amountCents;
        check.bindValue(u":payee"_qs, payee);
        check.bindValue(u":date"_qs, checkDate.addDays(-(counts.checks % 9)).toString(Qt::ISODate));
        check.bindValue(u":amount"_qs, cents(total));
        check.bindValue(u":invoice"_qs, invoice);
        check.bindValue(u":remark"_qs, remark);
        check.bindValue(u":vendor"_qs, vendorId);
        check.bindValue(u":split"_qs, lines.size() > 1 ? u"Y"_qs : u"N"_qs);
        check.bindValue(u":account"_qs, lines.front().account);
        check.bindValue(u":postToId"_qs, lines.front().postToId);
        check.bindValue(u":postTo"_qs, lines.front().postTo);
        run(check, "writing entered checks");
        const qint64 checkId = check.lastInsertId().toLongLong();
        ++counts.checks;
        for (const SplitLine &l : lines) {
            split.bindValue(u":check"_qs, checkId);
            split.bindValue(u":amount"_qs, cents(l.amountCents));
            split.bindValue(u":account"_qs, l.account);
            split.bindValue(u":postToId"_qs, l.postToId);
            split.bindValue(u":remark"_qs, l.remark);
            split.bindValue(u":postTo"_qs, l.postTo);
            run(split, "writing split lines");
            ++counts.splits;
        }
    };

    // The tenant (and unit) ids of a property: the first tenant of it.
    auto firstTenantOf = [&](int p) {
        return 1000 + int((qint64(p) * counts.tenants + counts.properties - 1) / counts.properties)
            + 1;
    };
    const int ownerChecks = std::min<int>(owners.size(), 8);
    for (int i = 0; i < ownerChecks; ++i) {
        const Owner &o = owners[i];
        const int prop = 100 + i + 1; // property i belongs to owner i + 1
        addCheck(o.first + u" "_qs + o.last, 0, u"DIST-%1"_qs.arg(checkDate.toString(u"yyyyMM"_qs)),
            u"Owner distribution"_qs,
            i % 2 == 0 ? QList<SplitLine> { { 125000 + i * 7350, 3100, o.id, u"O"_qs,
                                                u"Owner distribution"_qs },
                { 20000 + i * 500, 3150, prop, u"P"_qs, u"Property reserve release"_qs } }
                       : QList<SplitLine> {
                           { 98000 + i * 6100, 3100, o.id, u"O"_qs, u"Owner distribution"_qs } });
    }
    // Paid to the second owner by name.
    addCheck(owners[0].first2 + u" "_qs + owners[0].last2, 0, u"DIST-2ND"_qs,
        u"Second owner share"_qs, { { 62500, 3100, owners[0].id, u"O"_qs, u"50% share"_qs } });

    for (int v = 0; v < kVendorCount; ++v) {
        const int p = v % counts.properties;
        const int tenantId = firstTenantOf(p);
        QList<SplitLine> lines
            = { { 18500 + v * 1225, 6100, 100 + p + 1, u"P"_qs, u"Repairs"_qs } };
        if (v % 2 == 0)
            lines.append({ 7500 + v * 300, 6150, tenantId, u"T"_qs, u"Tenant damage"_qs });
        if (v % 2 == 1)
            lines.append({ 3500 + v * 150, 6200, tenantId, u"U"_qs, u"Unit lock change"_qs });
        if (v % 3 == 0)
            lines.append({ 4200, 6160, tenantId, u"B"_qs, u"Charged to tenant and unit"_qs });
        addCheck(QString::fromUtf16(kVendors[v].name), -1, u"INV-%1"_qs.arg(4100 + v * 17),
            u"Service call"_qs, lines);
    }

    tx.commit();
    return counts;
}

QString idFileText()
{
    const QStringList items = { u"Sunrise Property Management"_qs, // 0
        u"1200 Harbor Blvd, Suite 300"_qs, u"Ventura"_qs, u"CA"_qs, u"93001"_qs,
        u"805-555-0100"_qs, // 5
        u"office@sunrise-pm.example"_qs, u"DX-20417"_qs, u"7.2"_qs,
        u"Rent Income;4000;B"_qs, // 9: rent income category
        u"Rent payment received"_qs, // 10: rent income default remark
        u"Security Deposit;2200;T"_qs, u"Security deposit received"_qs, u"Owner Draw;3100;O"_qs,
        u"Owner distribution"_qs,
        u"Management Fee;5200;U"_qs, // 15: management fee category
        u"Management fee"_qs, // 16: fee remark
        u"Late Fee Received;4100;T"_qs, // 17: late fee category
        u"Late fee received"_qs, // 18: late fee default remark
        u"Repairs;6100;P"_qs, u"Repair and maintenance"_qs, u"Y"_qs, u"N"_qs, u"12/31"_qs };
    QString text;
    for (int i = 0; i < items.size(); ++i) {
        text += u'"' + items[i] + u'"';
        text += (i % 4 == 3 || i == items.size() - 1) ? u"\r\n"_qs : u","_qs;
    }
    return text;
}

Counts writeSite(const QString &folder, int tenants)
{
    QDir().mkpath(folder);
    const QString dbPath
        = QDir(folder).absoluteFilePath(QString::fromLatin1(HostDb::SqliteFileName));
    QFile::remove(dbPath);
    QFile::remove(dbPath + u"-journal"_qs);
    Counts counts;
    {
        auto db = HostDb::openSqlite(dbPath, true);
        db->createSchema();
        counts = fillPortfolio(*db, tenants);
    }
    TransferFile::writeAtomic(QDir(folder).absoluteFilePath(u"IDFILE.DAT"_qs), idFileText());
    return counts;
}

void writeSettings(
    const QString &iniFile, const QString &url, const QString &user, const QString &password)
{
    ScriptedPrompter prompter;
    ProgramState state(prompter, QDir::currentPath());
    state.settingsFile = QFileInfo(iniFile).absoluteFilePath();
    state.login.url = url;
    state.login.user = user;
    state.login.password = password;
    Credentials::saveLogin(state.settingsFile, state.login);
}

} // namespace DemoSite
