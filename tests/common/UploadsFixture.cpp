#include "UploadsFixture.h"

#include "TestSupport.h"

namespace UploadsFixture {

namespace {

const QVariant Null;

// One row: the named fields take the given values in order; fields left
// over are not set.
void add(TestSite &site, const QString &table, const QStringList &fields, const QVariantList &values)
{
    QVariantMap row;
    for (qsizetype i = 0; i < values.size(); ++i)
        row.insert(fields[i], values[i]);
    site.insert(table, row);
}

void owner(TestSite &site, const QVariantList &values)
{
    add(site, u"Owners"_qs,
        { u"OwnerID"_qs, u"OFirstName1"_qs, u"OLastName1"_qs, u"OACH"_qs, u"OAddress1"_qs,
            u"OAddress2"_qs, u"OCity"_qs, u"OState"_qs, u"OZip"_qs, u"OPercent2"_qs,
            u"OFirstName2"_qs, u"OLastName2"_qs, u"OPhone1"_qs, u"OPhone2"_qs, u"OEmail1"_qs },
        values);
}

void property(TestSite &site, const QVariantList &values)
{
    add(site, u"Properties"_qs,
        { u"PropID"_qs, u"POwnerID"_qs, u"PropName"_qs, u"PropAddress1"_qs, u"PropAddress2"_qs,
            u"PropCity"_qs, u"PropState"_qs, u"PropZip"_qs },
        values);
}

void tenant(TestSite &site, const QVariantList &values)
{
    add(site, u"Tenants"_qs,
        { u"TenantID"_qs, u"TPropID"_qs, u"TFirstName1"_qs, u"TLastName1"_qs, u"TACH"_qs,
            u"TCurrBal"_qs, u"TStartDate"_qs },
        values);
}

void unit(TestSite &site, const QVariantList &values)
{
    add(site, u"Units"_qs, { u"UTenantID"_qs, u"UAddress"_qs, u"UNumber"_qs }, values);
}

void vendor(TestSite &site, QVariantList values)
{
    values.insert(4, u"Town"_qs);
    values.insert(5, u"ST"_qs);
    values.insert(6, u"11111"_qs);
    add(site, u"Vendors"_qs,
        { u"VenID"_qs, u"VenName"_qs, u"VenAddress1"_qs, u"VenAddress2"_qs, u"VenCity"_qs,
            u"VenState"_qs, u"VenZip"_qs, u"VACH"_qs, u"VenContact"_qs },
        values);
}

} // namespace

void addCompany(TestSite &site)
{
    site.insert(u"Company"_qs,
        { { u"CName1"_qs, Null }, { u"CEmail1"_qs, u" office@pm.test "_qs },
            { u"CPhone1"_qs, u"555-0100"_qs }, { u"CPhone2"_qs, Null } });
    // Only the first row counts.
    site.insert(
        u"Company"_qs, { { u"CName1"_qs, u"Second Co"_qs }, { u"CEmail1"_qs, u"no@pm.test"_qs } });
}

void addPortfolio(TestSite &site)
{
    const QString E = QStringLiteral(""); // empty, not Null
    owner(site, { 9, u"  "_qs, u" "_qs, u"Y"_qs, u"9 Nine"_qs, E, u"C9"_qs, u"S9"_qs, u"Z9"_qs,
        u"1"_qs, u"Cy"_qs, u"Dee"_qs });
    owner(site, { 7, u" Ann "_qs, u"Lee"_qs, u"Y"_qs, u"1 Main St"_qs, u"Suite 5"_qs,
        u"Springfield"_qs, u"IL"_qs, u"62701"_qs, Null, Null, Null, u"555-1"_qs, u"555-2"_qs,
        u"ann@x.test"_qs });
    owner(site, { 8, E, u"Bj\u00f6rk"_qs, u" y "_qs, u"2 Fjord"_qs, u"  "_qs, u"Oslo"_qs, u"NA"_qs,
        u"0150"_qs, u"50"_qs, u"Bo"_qs, u"Bj\u00f6rk"_qs });
    owner(site, { 10, Null, u"Nullfirst"_qs, u"D"_qs, u"10 Ten"_qs, Null, u"Dover"_qs, u"DE"_qs,
        u"19901"_qs, u"100"_qs, u"E"_qs, Null, Null, Null, u"n@x.test"_qs });
    owner(site, { 11, Null, Null, Null, Null, Null, Null, Null, Null, u"0.5"_qs, u"F"_qs, u"G"_qs });
    owner(site, { 12, u"Pat"_qs, u"Pipe|Co"_qs, u"N"_qs, u"12 Twelve"_qs, u"Rear"_qs, u"X"_qs,
        u"Y"_qs, u"Z"_qs, u"101"_qs, u"H"_qs, u"I"_qs });
    owner(site, { 13, u"Quin"_qs, u"Q"_qs, u"Y"_qs, u"13 A"_qs, E, u"X"_qs, u"Y"_qs, u"Z"_qs, u"0"_qs,
        u"J"_qs, u"K"_qs });
    owner(site, { 14, u"Rae"_qs, u"R"_qs, u"D"_qs, u"14 A"_qs, E, u"X"_qs, u"Y"_qs, u"Z"_qs, u"50"_qs,
        u" "_qs, u" "_qs });
    owner(site, { 15, u"Sam"_qs, u"S"_qs, u"Y"_qs, u"15 A"_qs, E, u"X"_qs, u"Y"_qs, u"Z"_qs,
        u" 75abc"_qs, E, u"Tee"_qs });

    property(site, { 20, 7, u" Oak Court "_qs, u"10 Oak"_qs, u"Bldg B"_qs, u"Springfield"_qs,
        u"IL"_qs, u"62701"_qs });
    property(site, { 21, 8, u"Elm|House"_qs, u"5 Elm"_qs, u"  "_qs, u"Caf\u00e9 Town"_qs, u"IL"_qs,
        u"62702"_qs });
    property(site, { 22, 99, u"No Owner"_qs, u"22 A"_qs, E, u"X"_qs, u"Y"_qs, u"Z"_qs });
    property(site, { 19, 7, u"Ash Flats"_qs, u"9 Ash"_qs, Null, u"Springfield"_qs, u"IL"_qs, u"62701"_qs });
    property(site, { 23, 10, u"Null Prop"_qs, u" 2 Pine "_qs, E, u"Dover"_qs, u"DE"_qs, u"19901"_qs });

    tenant(site, { 300, 21, u" Zoe "_qs, u"Zed"_qs, u" Y "_qs, 125.5, u"2024-03-01"_qs });
    tenant(site, { 100, 20, u"VACANT 12B"_qs, E, u"Y"_qs, 0, u"2023-12-31"_qs });
    tenant(site, { 101, 20, u"Vacant"_qs, u"Unit"_qs, u"Y"_qs });
    tenant(site, { 102, 19, u"Amy"_qs, u"Ash"_qs, u"y"_qs, -35 });
    tenant(site, { 103, 20, Null, u"Nully"_qs, Null, Null });
    tenant(site, { 104, 20, u"Dan"_qs, u"Del"_qs, u"D"_qs });
    tenant(site, { 105, 22, u"Out"_qs, u"Side"_qs, u"Y"_qs });
    tenant(site, { 106, 20, u"No"_qs, u"Unit"_qs, u"Y"_qs });
    tenant(site, { 107, 19, u"Ed"_qs, u"Eve"_qs, u"N"_qs, 1234.5678 });
    tenant(site, { 108, 20, u"VACANT"_qs, E, u"Y"_qs });
    tenant(site, { 109, 20, Null, u"Noname"_qs, u"Y"_qs });
    tenant(site, { 110, 23, u"Ida"_qs, u"Ivy"_qs, u"Y"_qs });
    site.db().execText(
        u"UPDATE Tenants SET TAddress = '77 Home Rd', TCity = 'Caf\u00e9 Town', "
        "TState = 'IL', TZip = '62702', TEmail1 = ' zoe@t.test ' WHERE TenantID = 300"_qs,
        "fixture");

    unit(site, { 109, u"9"_qs, u"9"_qs });
    unit(site, { 300, u"Apt 1, Rear"_qs, u"1"_qs });
    unit(site, { 100, u"12B"_qs, u"12"_qs });
    unit(site, { 101, u"12C"_qs, u"12"_qs });
    unit(site, { 102, u"1 Ash"_qs, u"1"_qs });
    unit(site, { 103, u"3"_qs, u"3"_qs });
    unit(site, { 104, u"4"_qs, u"4"_qs });
    unit(site, { 105, u"5"_qs, u"5"_qs });
    unit(site, { 107, u"7"_qs, u"7"_qs });
    unit(site, { 108, u"8"_qs, u"8"_qs });
    unit(site, { 110, u"10"_qs, u"10"_qs });
    unit(site, { 999, u"No Tenant"_qs });
}

void addVendors(TestSite &site)
{
    const QString E = QStringLiteral("");
    vendor(site, { 3, Null, u"3 Way"_qs, E, u"Y"_qs });
    vendor(site, { 1, u"Acme Supply"_qs, u"1 Road"_qs, u"Unit 2"_qs, u"Y"_qs, u" Joe "_qs });
    vendor(site, { 2, u"  "_qs, u"2 Road"_qs, E, u"Y"_qs });
    vendor(site, { 4, u"Null Flag"_qs, u"4 Road"_qs, E, Null });
    vendor(site, { 5, u"No"_qs, u"5 Five"_qs, Null, u"N"_qs });
    vendor(site, { 6, u"\u20acuro Parts"_qs, u"6 Road"_qs, E, u"D"_qs });
    site.db().execText(u"UPDATE Vendors SET VenPhone1 = 'p1', VenPhone2 = ' p2', "
                       "VenEmail1 = 'a@v.test' WHERE VenID = 1"_qs,
        "fixture");
}

void addAll(TestSite &site)
{
    addCompany(site);
    addPortfolio(site);
    addVendors(site);
}

} // namespace UploadsFixture
