#include "uploads/VendorFile.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/TransferFile.h"
#include "hostdb/PortfolioQueries.h"
#include "processor/ExchangeJournal.h"
#include "processor/ProcessorCall.h"
#include "uploads/FieldRules.h"

using namespace PortfolioQueries;

void buildVendorFile(ProgramState &state)
{
    const QString sep = u"|"_qs;
    QSqlQuery rows = vendorRows(state.db());
    TransferFile::LineWriter out(state.pathOf(state.files.vendorUpload));
    while (rows.next()) {
        const QString name = FieldRules::text(rows.value(VendorVenName));
        // A blank name removes the vendor; a Null name does not count as blank.
        const QString action = FieldRules::isEmpty(name)
            ? u"delete"_qs
            : FieldRules::flagAction(rows.value(VendorVACH));
        out.writeLine(u"V"_qs + FieldRules::raw(rows.value(VendorVenID)) + u"|Vendor|"_qs + name
            + sep
            + FieldRules::pairUnlessSecondEmpty(
                rows.value(VendorVenAddress1), rows.value(VendorVenAddress2), u", "_qs)
            + sep + FieldRules::text(rows.value(VendorVenCity)) + sep
            + FieldRules::text(rows.value(VendorVenState)) + sep
            + FieldRules::text(rows.value(VendorVenZip)) + u"|||"_qs
            + FieldRules::text(rows.value(VendorVenContact)) + sep
            + FieldRules::text(rows.value(VendorVenPhone1)) + sep
            + FieldRules::text(rows.value(VendorVenPhone2)) + sep
            + FieldRules::text(rows.value(VendorVenEmail1)) + sep + action);
    }
    out.commit();
}

void uploadVendorFile(ProgramState &state)
{
    buildVendorFile(state);
    const QString path = state.pathOf(state.files.vendorUpload);
    if (!TransferFile::exists(path)) {
        state.prompter().notice(
            u"The Vendor Remitra file was not found. Please make sure that you have set up the "
            "Vendors that are participating in the Remitra system."_qs,
            u"Vendor Remitra"_qs);
        return;
    }
    ExchangeJournal exchange(
        state, Journal::Kind::VendorUpload, { { state.files.vendorUpload }, {}, {}, {} });
    ProcessorCall::transmitPayees(
        state, CallText::file(path), CallText(QStringLiteral("")), exchange.keep());
}
