#include "uploads/SetupFile.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/TransferFile.h"
#include "core/VbText.h"
#include "hostdb/PortfolioQueries.h"
#include "uploads/FieldRules.h"

using namespace PortfolioQueries;

void BuildSetupFile(ProgramState &state)
{
    BusyCursor busy(state.prompter());
    HostDb &db = state.db();

    // The company row supplies the contact fields of every line; its e-mail
    // goes out twice because the processor reads both fields.
    const CompanyContact company = firstCompany(db);
    const QString site = VbText::Trim(state.SiteCode);
    const QString sep = u"|"_qs;
    const QString contact = FieldRules::text(company.name) + sep + FieldRules::text(company.email)
        + sep + FieldRules::text(company.email) + sep + FieldRules::text(company.phone1) + sep
        + FieldRules::text(company.phone2);

    QSqlQuery rows = setupRows(db);
    TransferFile::LineWriter out(state.pathOf(state.SetupUploadName));
    QString line;
    line.reserve(512);
    while (rows.next()) {
        const QString city = FieldRules::text(rows.value(SetupPropCity));
        const QString st = FieldRules::text(rows.value(SetupPropState));
        const QString zip = FieldRules::text(rows.value(SetupPropZip));
        line.truncate(0);
        line += site;
        line += u"|O"_qs + FieldRules::raw(rows.value(SetupOwnerID));
        line += sep
            + FieldRules::personName(rows.value(SetupOFirstName1), rows.value(SetupOLastName1));
        line += u"|P"_qs + FieldRules::raw(rows.value(SetupPropID));
        line += sep + FieldRules::text(rows.value(SetupPropName));
        line += sep + contact;
        line += sep
            + FieldRules::pairUnlessSecondEmpty(
                rows.value(SetupPropAddress1), rows.value(SetupPropAddress2), u" "_qs);
        line += sep + city + sep + st + sep + zip;
        line += u"|U"_qs + FieldRules::raw(rows.value(SetupUTenantID));
        line += sep + FieldRules::text(rows.value(SetupUAddress));
        line += sep + city + sep + st + sep + zip;
        out.writeLine(line);
    }
    out.commit();
}
