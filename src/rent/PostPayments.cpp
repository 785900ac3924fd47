#include "rent/PostPayments.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "hostdb/RentLedger.h"

#include <algorithm>

namespace {

const QString kTitle = u"Remitra"_qs;
const QString kNoRentCategory
    = u"You do not have a valid Account Category set up for 'Rent Income'. Nothing was posted to "
      "the Dwellix Ledgers. Please check your Account Category and Account Default settings under "
      "'Preferences' from the Dwellix Main Menu."_qs;
const QString kNoLateCategory
    = u"You do not have a valid Account Category set up for 'Late Fee Received'. Nothing was "
      "posted to the Dwellix Ledgers. Please check your Account Category and Account Default "
      "settings under 'Preferences' from the Dwellix Main Menu."_qs;
const QString kNoFeeCategory
    = u"You do not have a valid Account Category set up for 'Management Fee'. The management fee "
      "was not posted. Please check your Account Category and Account Default settings under "
      "'Preferences' from the Dwellix Main Menu."_qs;
const QString kTenantMissing
    = u"The above Remitra deposit does not have a Tenant set up for Remitra, this must be "
      "corrected before you can update any ledgers."_qs;

// Positions of the account settings in account.idItems.
enum Item { RentCategory = 0, RentDefault = 1, FeeCategory = 2, LateCategory = 4, LateDefault = 5 };

} // namespace

PostPayments::PostPayments(ProgramState &state, RentLedger &ledger, const RentPayments &rows,
    const PostingChoices &choices)
    : m_state(state)
    , m_ledger(ledger)
    , m_rows(rows)
    , m_choices(choices)
{
}

AccountSetting PostPayments::rentIncome(const AccountSettings &account)
{
    return AccountSetting::fromItem(account.idItems[RentCategory]);
}

AccountSetting PostPayments::lateFee(const AccountSettings &account)
{
    return AccountSetting::fromItem(account.idItems[LateCategory]);
}

AccountSetting PostPayments::managementFee(const AccountSettings &account)
{
    return AccountSetting::fromItem(account.idItems[FeeCategory]);
}

QString PostPayments::rentDefaultRemark(const AccountSettings &account)
{
    return AccountSetting::defaultText(account.idItems[RentDefault]);
}

QString PostPayments::lateDefaultRemark(const AccountSettings &account)
{
    return AccountSetting::defaultText(account.idItems[LateDefault]);
}

std::optional<Currency> PostPayments::managementFeeFor(
    const QString &ownerSetting, Currency payment)
{
    const qsizetype percent = ownerSetting.indexOf(u'%');
    if (percent < 0) {
        const auto flat = Currency::parse(ownerSetting);
        if (!flat)
            return std::nullopt;
        return -flat->abs();
    }
    const auto fee = payment.abs().percentOf(ownerSetting.left(percent));
    if (!fee)
        return std::nullopt;
    return -fee->abs();
}

QList<qint64> PostPayments::feeOwnerIds(std::span<const RentPayment> rows)
{
    QList<qint64> owners;
    for (const RentPayment &row : rows) {
        const QVariant owner = RentPayment::key(row.ownerId());
        if (row.isRent() && owner.typeId() == QMetaType::LongLong)
            owners.append(owner.toLongLong());
    }
    return owners;
}

bool PostPayments::stop(const QString &message)
{
    m_stopMessage = message;
    m_failed = true;
    return false;
}

void PostPayments::reportStop()
{
    if (!m_stopMessage.isEmpty())
        m_state.prompter().notice(m_stopMessage, kTitle);
}

bool PostPayments::run()
{
    BusyCursor busy(m_state.prompter());
    m_rent = rentIncome(m_state.account);
    if (!m_rent.valid)
        return stop(kNoRentCategory);
    m_late = lateFee(m_state.account);
    if (!m_late.valid)
        return stop(kNoLateCategory);
    // The records the payments look up are read a chunk of payments at a
    // time and let go before the next chunk, so memory stays flat however
    // long the file. A record needed again is read again, with what this
    // transaction wrote to it.
    const std::size_t chunk = std::max<std::size_t>(readAheadChunk, 1);
    for (std::size_t first = 0; first < m_rows.size(); first += chunk) {
        const std::span<const RentPayment> part(
            m_rows.data() + first, std::min(chunk, m_rows.size() - first));
        QList<qint64> tenants;
        for (const RentPayment &row : part) {
            const QVariant tenant = RentPayment::key(row.tenantId());
            if (tenant.typeId() == QMetaType::LongLong)
                tenants.append(tenant.toLongLong());
        }
        m_ledger.dropReadAhead();
        m_ledger.readAhead(tenants, m_choices.postMgmtFees ? feeOwnerIds(part) : QList<qint64>());
        for (const RentPayment &row : part) {
            if (!postRow(row))
                return false;
        }
    }
    return true;
}

bool PostPayments::postRow(const RentPayment &row)
{
    m_ledger.atLine(row.line);
    const Missing resume = m_resume.value(row.line, Missing::Nothing);
    const bool fresh = !m_resume.contains(row.line);
    const bool late = row.isLateFee();
    const AccountSetting &setting = late ? m_late : m_rent;
    const double tenantId = row.tenantId();
    const QVariant tenantKey = RentPayment::key(tenantId);
    const Currency amount = row.amount.value_or(Currency()).abs();
    const QVariant remark = m_choices.remarkFor(
        row.method, late ? lateDefaultRemark(m_state.account) : rentDefaultRemark(m_state.account));

    RentLedger::Line line;
    line.accountId = RentPayment::longValue(setting.accountId);
    line.postToId = RentPayment::longValue(tenantId);
    line.amount = amount;
    line.date = m_isoDates.of(row);
    line.checkNumber = row.checkValue();
    line.remark = remark;
    line.type = u"I"_qs;
    line.status = setting.postingCode;
    line.tax = u"N"_qs;
    line.ownerId = RentPayment::longValue(row.ownerId());
    line.propertyId = RentPayment::longValue(row.propertyId());
    line.unitId = RentPayment::longValue(row.unitId());
    line.tenantId = RentPayment::longValue(tenantId);

    // A payment raises both balances its posting code names; "U" raises none.
    const QString &code = setting.postingCode;
    if (fresh)
        m_ledger.addTransaction(line);
    bool unitRaised = true;
    if ((fresh || resume == Missing::UnitAndTenantBalance) && code == u"B"_qs)
        unitRaised = m_ledger.addToUnitBalance(tenantKey, amount);
    if (fresh || resume == Missing::UnitAndTenantBalance || resume == Missing::TenantBalance) {
        if ((code == u"T"_qs || code == u"B"_qs)
            && !m_ledger.addToTenantBalance(tenantKey, amount)) {
            // Taken up again later: the unit too, when it was not there.
            m_written.append(
                { row.line, unitRaised ? Missing::TenantBalance : Missing::UnitAndTenantBalance });
            return stop(u"Not found: Tenant ID #"_qs + RentPayment::idText(tenantId)
                + u"\nAmount: "_qs + row.amountText + u"\nDate: "_qs + row.date
                + u"\nCheck Number: "_qs + row.checkNumber + u"\nRemark: "_qs + remark.toString()
                + u'\n' + kTenantMissing);
        }
    }
    if (!postFee(row, line)) {
        m_written.append({ row.line, Missing::ManagementFee });
        return false;
    }
    m_written.append({ row.line, Missing::Nothing });
    return true;
}

bool PostPayments::postFee(const RentPayment &row, const RentLedger::Line &line)
{
    if (!m_choices.postMgmtFees || !row.isRent())
        return true;
    const AccountSetting feeSetting = managementFee(m_state.account);
    if (!feeSetting.valid)
        return stop(kNoFeeCategory);
    Currency fee;
    const auto ownerSetting = m_ledger.ownerMgmtFee(RentPayment::key(row.ownerId()));
    if (ownerSetting && !VbText::trim(*ownerSetting).isEmpty())
        fee = managementFeeFor(*ownerSetting, line.amount).value_or(Currency());
    if (fee.isZero())
        return true;

    RentLedger::Line feeLine = line;
    feeLine.accountId = RentPayment::longValue(feeSetting.accountId);
    feeLine.amount = fee;
    feeLine.checkNumber = QVariant();
    feeLine.remark = feeSetting.text;
    feeLine.type = u"E"_qs;
    feeLine.status = u"U"_qs;
    m_ledger.addTransaction(feeLine);
    // The fee lowers the unit's balance only.
    m_ledger.addToUnitBalance(RentPayment::key(row.tenantId()), -fee.abs());
    return true;
}
