#pragma once

#include "TestSupport.h"

#include <QString>

// A small rent portfolio for the rent tests:
//   owners 1 (fee "8%"), 2 (fee "25"), 3 (no fee);
//   properties 10, 20, 30 of owners 1, 2, 3;
//   tenants 100 "Avery, Ann" and 101 "Baker" (blank first name) in 10,
//   200 "Cole, Carl" in 20, 300 "Dunn" (Null first name) in 30, each with a
//   unit "Unit <id>" and balances of 0;
//   account settings: rent "Rent Income;4000;B", late "Late Fee Received;4100;T",
//   fee "Management Fee;6100;U", defaults "Rent received;1" and "Late fee;2".
namespace RentSupport {

void seedPortfolio(TestSite &site);
// The account settings above as the six IdItems.
QStringList accountItems();
// A payment line as the processor sends it (no line end).
QString line(int prop, int tenant, const QString &amount, const QString &date = u"11/02/2026"_qs,
             const QString &check = u"1001"_qs, const QString &method = u"ACH"_qs,
             const QString &type = u"Rent"_qs);
// Writes the payment file as the download does: the text, then CR LF.
void writePaymentFile(TestSite &site, const QStringList &lines);

// A generated portfolio of the given number of tenants (one unit each, 20
// tenants per property, 5 properties per owner; every third owner charges
// "6%", the others a flat "20"), written in one transaction.
void seedLargePortfolio(TestSite &site, int tenants);
// A payment file text of `count` rent payments spread over the tenants.
QString largePaymentFile(int tenants, int count);

} // namespace RentSupport
