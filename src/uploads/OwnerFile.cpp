#include "uploads/OwnerFile.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/TransferFile.h"
#include "core/VbText.h"
#include "hostdb/PortfolioQueries.h"
#include "processor/ExchangeJournal.h"
#include "processor/ProcessorCall.h"
#include "uploads/FieldRules.h"

using namespace PortfolioQueries;

namespace {

// The name pair joined with null propagation: a Null half makes it Null,
// which is neither empty nor non-empty.
QString joinedNames(const QVariant &first, const QVariant &last)
{
    return VbText::trim(VbText::joinNull(VbText::text(first), VbText::text(last)));
}

bool hasSecondOwner(const QSqlQuery &row)
{
    const QVariant percent = row.value(OwnerOPercent2);
    if (percent.isNull())
        return false;
    const QString names = joinedNames(row.value(OwnerOFirstName2), row.value(OwnerOLastName2));
    if (names.isNull() || names.isEmpty())
        return false;
    const double share = VbText::val(VbText::text(percent));
    return share >= 1 && share <= 100;
}

} // namespace

void buildOwnerFile(ProgramState &state)
{
    const QString sep = u"|"_qs;
    QSqlQuery rows = ownerRows(state.db());
    TransferFile::LineWriter out(state.pathOf(state.files.ownerUpload));
    while (rows.next()) {
        const QString id = FieldRules::raw(rows.value(OwnerOwnerID));
        const QString street = FieldRules::pairUnlessSecondEmpty(
            rows.value(OwnerOAddress1), rows.value(OwnerOAddress2), u" "_qs);
        const QString place = FieldRules::text(rows.value(OwnerOCity)) + sep
            + FieldRules::text(rows.value(OwnerOState)) + sep
            + FieldRules::text(rows.value(OwnerOZip));
        const QString flagAction = FieldRules::flagAction(rows.value(OwnerOACH));

        const QString names
            = joinedNames(rows.value(OwnerOFirstName1), rows.value(OwnerOLastName1));
        const QString action = FieldRules::isEmpty(names) ? u"delete"_qs : flagAction;
        out.writeLine(u"O"_qs + id + u"|Owner|"_qs
            + FieldRules::personName(rows.value(OwnerOFirstName1), rows.value(OwnerOLastName1))
            + sep + street + sep + place + u"||||"_qs + FieldRules::text(rows.value(OwnerOPhone1))
            + sep + FieldRules::text(rows.value(OwnerOPhone2)) + sep
            + FieldRules::text(rows.value(OwnerOEmail1)) + sep + action);

        // The second owner of the same record is paid as a payee of its own;
        // the share itself is not sent.
        if (hasSecondOwner(rows)) {
            out.writeLine(u"O%"_qs + id + u"|Owner|"_qs
                + FieldRules::personName(rows.value(OwnerOFirstName2), rows.value(OwnerOLastName2))
                + sep + street + sep + place + u"|||||||"_qs + flagAction);
        }
    }
    out.commit();
}

void uploadOwnerFile(ProgramState &state)
{
    buildOwnerFile(state);
    const QString path = state.pathOf(state.files.ownerUpload);
    if (!TransferFile::exists(path)) {
        state.prompter().notice(
            u"The Owner Remitra file was not found. Please make sure that you have set up the "
            "Owners that are participating in the Remitra system."_qs,
            u"Owner Remitra"_qs);
        return;
    }
    ExchangeJournal exchange(
        state, Journal::Kind::OwnerUpload, { { state.files.ownerUpload }, {}, {}, {} });
    ProcessorCall::transmitPayees(
        state, CallText::file(path), CallText(QStringLiteral("")), exchange.keep());
}
