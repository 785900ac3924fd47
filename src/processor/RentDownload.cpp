#include "processor/RentDownload.h"

#include "app/IdFile.h"
#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "processor/ProcessorCall.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <optional>

namespace {

const QString kLoginText = u"You must have a valid LOGIN entry in the User Name, Password, and URL. Please "
                           "correct that and try again."_qs;
const QString kLoginTitle = u"Login Message"_qs;
const QString kWaitingAtStart =
    u"You already have Remitra Tenant transactions waiting to be processed - no more Tenant transactions "
    "can be downloaded until you have taken care of the existing ones. To post these deposits to the "
    "Dwellix, click on the 'Download and Post Rent Payments' button."_qs;
const QString kWaitingFromMenu =
    u"You already have Remitra Tenant transactions waiting to be processed from a previous download - no "
    "more Tenant transactions can be downloaded until you have taken care of the existing ones. Please "
    "either post these payments to the Dwellix ledgers or delete them from the next screen."_qs;
const QString kNoticeTitle = u"Remitra Notice"_qs;
const QString kNoneFound = u"There were no Remita Tenant transactions found"_qs;
const QString kNoneFoundTitle = u"Dwellix Remitra"_qs;

bool paymentFileWaits(const ProgramState &state)
{
    return TransferFile::exists(state.pathOf(state.PaymentDownloadName));
}

// Keeps a copy of a downloaded payment file in the archive folder of the
// program's folder under a name of its own, so that payments the processor
// has handed over survive a later delete of the payment file or a crash
// while posting. An existing archive file is never replaced.
void archiveDownload(const ProgramState &state, const QString &content)
{
    const QString folder = state.pathOf(u"archive"_qs);
    if (!QDir().mkpath(folder))
        throw RuntimeError::pathNotFound();
    const QString stamp = QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss-zzz"_qs);
    QString name = u"DX_Quenta_PaymentFile_"_qs + stamp + u".txt"_qs;
    for (int n = 2; QFileInfo::exists(TransferFile::path(folder, name)); ++n)
        name = u"DX_Quenta_PaymentFile_"_qs + stamp + u'-' + QString::number(n) + u".txt"_qs;
    TransferFile::writeAtomic(TransferFile::path(folder, name), content);
}

} // namespace

void CheckForPaymentFile(ProgramState &state)
{
    if (state.LoginMissing) {
        state.prompter().notice(kLoginText, kLoginTitle);
        return;
    }
    LoadIDFile(state);
    if (paymentFileWaits(state)) {
        state.prompter().notice(kWaitingAtStart, kNoticeTitle);
        return;
    }
    DownloadPaymentFile(state);
}

void DownloadPaymentFile(ProgramState &state)
{
    if (state.LoginMissing) {
        state.prompter().notice(kLoginText, kLoginTitle);
        return;
    }
    if (paymentFileWaits(state)) {
        state.prompter().notice(kWaitingFromMenu, kNoticeTitle);
        return;
    }
    // The response is used whatever the result: a failed call that still
    // brought a body writes it, and one without gives the "none found" notice.
    const ProcessorCall::Outcome outcome = ProcessorCall::transmit(state, QString(), QString());
    if (outcome.response.isEmpty()) {
        state.prompter().notice(kNoneFound, kNoneFoundTitle);
        return;
    }
    const QString content = outcome.response + u"\r\n"_qs;
    // The archive copy comes first. If it cannot be written, the payment
    // file is still written before the error is raised, so the payments are
    // waiting for review either way.
    std::optional<RuntimeError> archiveError;
    try {
        archiveDownload(state, content);
    } catch (const RuntimeError &error) {
        archiveError = error;
    }
    TransferFile::writeAtomic(state.pathOf(state.PaymentDownloadName), content);
    if (archiveError)
        throw *archiveError;
}
