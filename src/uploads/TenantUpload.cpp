#include "uploads/TenantUpload.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/TransferFile.h"
#include "core/VbText.h"
#include "hostdb/BatchRead.h"
#include "hostdb/PortfolioQueries.h"
#include "processor/ExchangeJournal.h"
#include "processor/ProcessorCall.h"
#include "uploads/FieldRules.h"
#include "uploads/UploadTexts.h"

#include <QHash>

using namespace PortfolioQueries;

namespace {

// A vacant unit's placeholder tenant is always removed from the processor,
// whatever its flag; the name test is case-exact.
QString tenantAction(const QVariant &firstName, const QVariant &flag)
{
    const QString first = FieldRules::text(firstName);
    if (!first.isNull() && first.startsWith(u"VACANT"_qs))
        return u"delete"_qs;
    return FieldRules::flagAction(flag);
}

// Start dates in the short date form, remembered for the build: formatting
// through the system locale is the costliest step of a line, and a site has
// far fewer distinct start dates than tenants.
class StartDates
{
public:
    const QString &text(const QVariant &stored)
    {
        const QString key = VbText::text(stored);
        auto it = m_known.constFind(key);
        if (it == m_known.cend()) {
            if (m_known.size() >= 8192)
                m_known.clear();
            it = m_known.insert(key, FieldRules::shortDate(stored));
        }
        return it.value();
    }

private:
    QHash<QString, QString> m_known;
};

} // namespace

void buildTenantUpload(ProgramState &state)
{
    if (state.login.missing) {
        state.prompter().notice(UploadTexts::loginNotice(), UploadTexts::loginTitle());
        return;
    }
    BusyCursor busy(state.prompter());
    const QString path = state.pathOf(state.files.tenantUpload);
    const QString site = VbText::trim(state.siteCode);
    StartDates startDates;
    const QString sql = tenantUploadSql(state.db());
    TransferFile::LineWriter out(path);
    QString line;
    line.reserve(512);
    // Each field is appended to the line itself: a line of fields joined
    // through temporaries costs an allocation per field.
    BatchRead::forEachRow(state.db(), sql, "reading the portfolio for the tenant upload",
        [&](const BatchRead::Row &row) {
            const QString tenantId = FieldRules::raw(row.value(TenantTenantID));
            const QVariant firstName = row.value(TenantTFirstName1);
            line.truncate(0);
            line += site;
            line += u"|O"_qs;
            line += FieldRules::raw(row.value(TenantOwnerID));
            line += u"|P"_qs;
            line += FieldRules::raw(row.value(TenantPropID));
            line += u"|U"_qs;
            line += FieldRules::raw(row.value(TenantUTenantID));
            line += u"|T"_qs;
            line += tenantId;
            line += u'|';
            line += FieldRules::plainCurrency(row.value(TenantTCurrBal));
            line += u'|';
            line += startDates.text(row.value(TenantTStartDate));
            line += u"|Rent|T"_qs;
            line += tenantId;
            line += u'|';
            line += FieldRules::text(firstName);
            line += u'|';
            line += FieldRules::text(row.value(TenantTLastName1));
            line += u'|';
            line += FieldRules::text(row.value(TenantUAddress));
            line += u'|';
            line += FieldRules::text(row.value(TenantPropCity));
            line += u'|';
            line += FieldRules::text(row.value(TenantPropState));
            line += u'|';
            line += FieldRules::text(row.value(TenantPropZip));
            line += u'|';
            line += tenantAction(firstName, row.value(TenantTACH));
            line += u'|';
            out.writeLine(line);
        });
    if (out.lineCount() > 0) {
        out.commit();
    } else {
        // An empty site leaves no tenant upload behind, not even an old one.
        TransferFile::remove(path);
    }
}

void sendTenantUpload(ProgramState &state)
{
    const QString path = state.pathOf(state.files.tenantUpload);
    if (!TransferFile::exists(path)) {
        state.prompter().notice(
            u"The Tenant Remitra file was not found. Please make sure that you have set up the "
            "Tenants that are participating in the Remitra system."_qs,
            u"Tenant Remitra"_qs);
        return;
    }
    ExchangeJournal exchange(
        state, Journal::Kind::TenantUpload, { { state.files.tenantUpload }, {}, {}, {} });
    ProcessorCall::transmit(
        state, CallText(QStringLiteral("")), CallText::file(path), exchange.keep());
}
