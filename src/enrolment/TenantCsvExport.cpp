#include "enrolment/TenantCsvExport.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/TransferFile.h"
#include "hostdb/PortfolioQueries.h"
#include "uploads/FieldRules.h"
#include "uploads/UploadTexts.h"

#include <QDir>

using namespace PortfolioQueries;

void exportTenantsCsv(ProgramState &state)
{
    Prompter &prompter = state.prompter();
    if (state.login.missing) {
        prompter.notice(UploadTexts::loginNotice(), UploadTexts::loginTitle());
        return;
    }
    BusyCursor busy(prompter);
    const QString path = state.pathOf(TenantCsvExport::fileName());
    const QString title = u"Dwellix Remitra Export"_qs;

    QSqlQuery rows = exportRows(state.db());
    TransferFile::LineWriter out(path);
    out.writeLine(u"Tenant ID,Tenant First Name,Tenant LastName,Property/Building Name,Rental Unit "
                  "Address,Tenant Mailing Address,Tenant Mailing City,Tenant Mailing State,Tenant "
                  "Mailing Zip,Tenant Email Address 1,Tenant Email Address 2"_qs);
    bool written = false;
    while (rows.next()) {
        // The database lets "y" through; the file takes only "Y". Only the
        // bare placeholder name is left out, and a Null name fails the test.
        const QString first = FieldRules::text(rows.value(ExportTFirstName1));
        if (FieldRules::text(rows.value(ExportTACH)) != u"Y"_qs || first.isNull()
            || first == u"VACANT"_qs)
            continue;
        written = true;
        QStringList values { u"T"_qs + FieldRules::raw(rows.value(ExportTenantID)), first };
        for (int column : { ExportTLastName1, ExportPropName, ExportUAddress, ExportTAddress,
                 ExportTCity, ExportTState, ExportTZip, ExportTEmail1, ExportTEmail2 })
            values << FieldRules::text(rows.value(column));
        out.writeLine(values.join(u','));
    }

    if (written) {
        out.commit();
        busy.release();
        prompter.notice(u"Export File Created\r\rFile Name: "_qs + TenantCsvExport::fileName()
                + u"\r\rFile Path: "_qs + QDir::toNativeSeparators(path),
            title);
    } else {
        TransferFile::remove(path);
        busy.release();
        prompter.notice(
            u"There are no Remita tenants selected. No export file was created"_qs, title);
    }
}
