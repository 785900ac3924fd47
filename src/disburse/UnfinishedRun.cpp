#include "disburse/UnfinishedRun.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/TransferFile.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/ResponseMatcher.h"
#include "hostdb/DisburseLookup.h"
#include "processor/ProcessorCall.h"

#include <QFileInfo>

namespace UnfinishedRun {

namespace {

const QString kTitle = u"Make Payments"_qs;

} // namespace

bool present(const ProgramState &state)
{
    if (state.DisbursementUploadName.isEmpty())
        return false;
    const QFileInfo distribution(state.pathOf(state.DisbursementUploadName));
    const QFileInfo response(state.pathOf(DistributionFile::ResponseName));
    return distribution.isFile() && response.isFile()
        && response.lastModified() >= distribution.lastModified();
}

Outcome settle(ProgramState &state, bool &stopRejections)
{
    if (!present(state))
        return Outcome::Clear;
    const QString distributionPath = state.pathOf(state.DisbursementUploadName);
    const ResponseMatcher response(ReadWholeFile(state.pathOf(DistributionFile::ResponseName)));

    // The accepted checks of that run that are still waiting to be posted.
    QList<PaymentRow> waiting;
    Currency total;
    {
        DisburseLookup lookup(state.db());
        for (const DistributionFile::SentLine &sent :
            DistributionFile::parse(ReadWholeFile(distributionPath))) {
            const qint64 payeeId = sent.IDField < 0 ? -sent.IDField : sent.IDField;
            if (!response.verdict(payeeId, sent.CkID).accepted)
                continue;
            std::optional<PaymentRow> check = lookup.enteredCheck(sent.CkID);
            if (!check)
                continue;
            check->IDField = sent.IDField;
            total += check->CkAmount;
            waiting.append(*check);
        }
    }

    if (waiting.isEmpty()) {
        // Everything it paid is posted: only the file was left behind.
        TransferFile::renameReplacing(
            distributionPath, state.pathOf(DistributionFile::LastUploadName));
        return Outcome::Clear;
    }

    const QString question
        = u"The last payment distribution was not finished. Quenta Payment Services accepted "_qs
        + QString::number(waiting.size()) + u" payment(s) totalling "_qs + total.toDollarsParen()
        + u" that are still in your 'Entered Check File'. They have been paid and must not be "
          "sent again.\r\rPost them now?"_qs;
    if (state.prompter().ask(question, kTitle) == Prompter::Answer::No) {
        state.prompter().notice(
            u"The accepted payments were not posted and no new payments can be sent until they "
            "are. You will be asked again the next time you make payments."_qs,
            kTitle);
        return Outcome::Declined;
    }
    DistributionRun::finish(state, waiting, response, stopRejections, {});
    return Outcome::Posted;
}

} // namespace UnfinishedRun
