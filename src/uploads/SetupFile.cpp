#include "uploads/SetupFile.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/TransferFile.h"
#include "core/VbText.h"
#include "hostdb/PortfolioQueries.h"
#include "uploads/FieldRules.h"

using namespace PortfolioQueries;

void buildSetupFile(ProgramState &state)
{
    BusyCursor busy(state.prompter());
    HostDb &db = state.db();

    // The company row supplies the contact fields of every line; its e-mail
    // goes out twice because the processor reads both fields.
    const CompanyContact company = firstCompany(db);
    const QString site = VbText::trim(state.siteCode);
    const QString sep = u"|"_qs;
    const QString contact = FieldRules::text(company.name) + sep + FieldRules::text(company.email)
        + sep + FieldRules::text(company.email) + sep + FieldRules::text(company.phone1) + sep
        + FieldRules::text(company.phone2);

    QSqlQuery rows = setupRows(db);
    TransferFile::LineWriter out(state.pathOf(state.files.setupUpload));
    // Rows come grouped by owner and property, and fields 1 to 14 and 17 to
    // 19 depend on those two alone (their ids are unique), so they are built
    // once per property.
    QVariant ownerId, propId;
    QString head; // fields 1-14 and the separator before field 15
    QString place; // fields 17-19 and the separator before them
    QString line;
    line.reserve(512);
    while (rows.next()) {
        const QVariant rowOwner = rows.value(SetupOwnerID);
        const QVariant rowProp = rows.value(SetupPropID);
        if (head.isNull() || rowOwner != ownerId || rowProp != propId) {
            ownerId = rowOwner;
            propId = rowProp;
            place = sep + FieldRules::text(rows.value(SetupPropCity)) + sep
                + FieldRules::text(rows.value(SetupPropState)) + sep
                + FieldRules::text(rows.value(SetupPropZip));
            head = site + u"|O"_qs + FieldRules::raw(rowOwner) + sep
                + FieldRules::personName(rows.value(SetupOFirstName1), rows.value(SetupOLastName1))
                + u"|P"_qs + FieldRules::raw(rowProp) + sep
                + FieldRules::text(rows.value(SetupPropName)) + sep + contact + sep
                + FieldRules::pairUnlessSecondEmpty(
                    rows.value(SetupPropAddress1), rows.value(SetupPropAddress2), u" "_qs)
                + place + u"|U"_qs;
        }
        line.truncate(0);
        line += head;
        line += FieldRules::raw(rows.value(SetupUTenantID));
        line += sep;
        line += FieldRules::text(rows.value(SetupUAddress));
        line += place;
        out.writeLine(line);
    }
    out.commit();
}
