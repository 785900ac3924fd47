#pragma once

#include "TestSupport.h"

#include "rent/PostingChoices.h"
#include "rent/RentPayment.h"

// Rent test portfolio: owners 1 (fee "8%"), 2 (fee "25"), 3 (blank fee) with
// properties 10, 20, 30; tenants 100 "Avery, Ann" and 101 "Baker" (blank
// first name) in 10, 200 "Cole, Carl" in 20, 300 "Dunn" (Null first name) in
// 30, each with unit "Unit <id>"; balances 0. Account settings: rent
// "Rent Income;4000;B", late "Late Fee Received;4100;T", fee
// "Management Fee;6100;U", defaults "Rent received;1" and "Late fee;2".
namespace RentSupport {

void seedPortfolio(TestSite &site);
// The six account settings of IDFILE.DAT above.
QStringList accountItems();
// A payment line as the processor sends it (no line end).
QString line(int prop, int tenant, const QString &amount, const QString &date = u"11/02/2026"_qs,
    const QString &check = u"1001"_qs, const QString &method = u"ACH"_qs,
    const QString &type = u"Rent"_qs);
// Writes the payment file as the download does: lines ended by CR LF, then CR LF.
void writePaymentFile(TestSite &site, const QStringList &lines);
// Copies tests/data/rent/<name> into the payment file.
void useFixture(TestSite &site, const QString &name);

// A generated portfolio: one unit per tenant, 20 tenants per property, 5
// properties per owner; every third owner charges "6%", the others "20".
void seedLargePortfolio(TestSite &site, int tenants);
// A payment file of `count` payments spread over the tenants, one in ten a late fee.
void writeLargePaymentFile(TestSite &site, int tenants, int count);

// Every row of the host tables a rent posting writes or changes, with its
// rowid, one text per row: to compare a host database row for row.
QStringList hostRows(TestSite &site);
// Every choice of the review screen on: fees, a deposit numbered 77, the
// payment method as the remark.
PostingChoices everything();
// Posts the rows with the choices; the prompter is cleared first.
bool post(TestSite &site, const RentPayments &rows, const PostingChoices &choices);
// The payment file's rows as the review screen loads them.
RentPayments load(TestSite &site);

} // namespace RentSupport
