#pragma once

#include "ScriptedProcessorClient.h"
#include "TestSupport.h"

#include "hostdb/PaymentRow.h"

// Owners, vendors and entered checks for the payment screen and its runs.
//
// Owners: 1 Ann Lee (second pair Bob Lee), 2 Carl Diaz (OACH N), 3 Dana Fox
// (D), 4 Eve Gray (both pairs, OACH "y"), 5 Ann Lee again, 6 (no first
// name) Solo, second pair Hal Solo. Vendors: 8 Acme Repairs, 9 Zed Plumbing
// (VACH N), 10 Bob Lee.
//
// Entered checks (CkID: payee, amount): 1 "Ann Lee" 1500 (owners 1 and 5);
// 2 " Bob Lee  " 250.5, vendor -1 (owner 1's second pair and vendor 10);
// 3 "Acme Repairs" 82.4, vendor -1; 4 "Acme Repairs", vendor 0 (not
// listed); 5 "Ann  Lee" (not listed); 6 Carl Diaz, 7 Dana Fox (not listed);
// 8 "EVE GRAY" 40 (owner 4 once); 9 Zed Plumbing (not listed); 10 "Solo"
// (not listed); 11 "Hal Solo" -12.5, check number 512 (owner 6's second
// pair).
namespace DisburseFixture {

void populate(TestSite &site);

// Adds an entered check; returns its CkID.
qint64 addCheck(TestSite &site, const QString &payee, double amount, const QVariantMap &more = {});
// Adds a split line (account 4000, remark "split") to an entered check.
void addSplit(TestSite &site, qint64 ckId, const QString &postTo, qint64 postToId, double amount,
    const QString &type = QStringLiteral("C"), const QVariantMap &more = {});

// The list rows of the given checks and payees, in the order given.
QList<PaymentRow> rowsFor(TestSite &site, const QList<PaymentRow::Key> &keys);
// Makes the processor answer the next call with the code and text.
std::shared_ptr<ScriptedProcessorClient::Script> answering(
    TestSite &site, qint32 code, const QString &response);
// The rows of a query, fields joined by "|", rows by ";".
QString dump(TestSite &site, const QString &sql);

} // namespace DisburseFixture
