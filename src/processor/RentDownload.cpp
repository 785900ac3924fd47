#include "processor/RentDownload.h"

#include "app/IdFile.h"
#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "processor/ExchangeJournal.h"
#include "processor/ProcessorCall.h"
#include "rent/PaymentFile.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <optional>

namespace {

const QString kLoginText
    = u"You must have a valid LOGIN entry in the User Name, Password, and URL. Please "
      "correct that and try again."_qs;
const QString kLoginTitle = u"Login Message"_qs;
const QString kWaitingAtStart
    = u"You already have Remitra Tenant transactions waiting to be processed - no more Tenant "
      u"transactions "
      "can be downloaded until you have taken care of the existing ones. To post these deposits to "
      "the "
      "Dwellix, click on the 'Download and Post Rent Payments' button."_qs;
const QString kWaitingFromMenu
    = u"You already have Remitra Tenant transactions waiting to be processed from a previous "
      u"download - no "
      "more Tenant transactions can be downloaded until you have taken care of the existing ones. "
      "Please "
      "either post these payments to the Dwellix ledgers or delete them from the next screen."_qs;
const QString kNoticeTitle = u"Remitra Notice"_qs;
const QString kNoneFound = u"There were no Remita Tenant transactions found"_qs;
const QString kNoneFoundTitle = u"Dwellix Remitra"_qs;

bool paymentFileWaits(ProgramState &state)
{
    // A file whose payments were all posted by a run that ended before
    // moving it aside is moved now: it is not waiting any more.
    PaymentFile::settlePosted(state);
    return TransferFile::exists(state.pathOf(state.files.paymentDownload));
}

// Keeps a copy of a downloaded payment file in the archive folder of the
// program's folder under a name of its own, so that payments the processor
// has handed over survive a later delete of the payment file or a crash
// while posting. An existing archive file is never replaced. Returns its
// name relative to the program's folder.
QString archiveDownload(const ProgramState &state, const QString &content)
{
    const QString folder = state.pathOf(u"archive"_qs);
    if (!QDir().mkpath(folder))
        throw RuntimeError::pathNotFound();
    const QString stamp = QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss-zzz"_qs);
    QString name = u"DX_Quenta_PaymentFile_"_qs + stamp + u".txt"_qs;
    for (int n = 2; QFileInfo::exists(TransferFile::path(folder, name)); ++n)
        name = u"DX_Quenta_PaymentFile_"_qs + stamp + u'-' + QString::number(n) + u".txt"_qs;
    TransferFile::writeAtomic(TransferFile::path(folder, name), content);
    return u"archive/"_qs + name;
}

// The payments of a downloaded text and their total (absolute amounts, as
// they are posted), for the journal.
std::pair<qint64, Currency> paymentsIn(const QString &content)
{
    qint64 count = 0;
    Currency total;
    for (const QString &line : content.split(u'\n')) {
        if (!line.startsWith(u'P'))
            continue;
        ++count;
        total += Currency::parse(line.section(u',', 3, 3)).value_or(Currency()).abs();
    }
    return { count, total };
}

} // namespace

void checkForPaymentFile(ProgramState &state)
{
    if (state.login.missing) {
        state.prompter().notice(kLoginText, kLoginTitle);
        return;
    }
    loadIdFile(state.folder(), state.account);
    if (paymentFileWaits(state)) {
        state.prompter().notice(kWaitingAtStart, kNoticeTitle);
        return;
    }
    downloadPaymentFile(state);
}

void downloadPaymentFile(ProgramState &state)
{
    if (state.login.missing) {
        state.prompter().notice(kLoginText, kLoginTitle);
        return;
    }
    // Without the file names the payments the processor hands over could
    // not be stored: nothing is asked for.
    if (!ProcessorCall::checkFileNames(state))
        return;
    if (paymentFileWaits(state)) {
        state.prompter().notice(kWaitingFromMenu, kNoticeTitle);
        return;
    }
    // The processor marks the payments delivered when it hands them over,
    // so they are on disk before the result is reported: a program ended
    // while the report waits has them waiting for review at the next start.
    // The response is used whatever the result: a failed call that still
    // brought a body writes it, and one without gives the "none found" notice.
    std::optional<RuntimeError> archiveError;
    // Nothing received until the answer says otherwise.
    ExchangeJournal exchange(state, Journal::Kind::RentDownload, { {}, {}, 0, Currency() });
    const ProcessorCall::Outcome outcome = ProcessorCall::transmit(
        state, QString(), QString(), exchange.keep([&](const ProcessorCall::Outcome &answer) {
            if (answer.response.isEmpty())
                return;
            const QString content = answer.response + u"\r\n"_qs;
            // The archive copy comes first. If it cannot be written, the
            // payment file is still written before the error is raised, so
            // the payments are waiting for review either way.
            QString archive;
            try {
                archive = archiveDownload(state, content);
            } catch (const RuntimeError &error) {
                archiveError = error;
            }
            TransferFile::writeAtomic(state.pathOf(state.files.paymentDownload), content);
            const auto [count, total] = paymentsIn(content);
            exchange.receives(state.files.paymentDownload, archive, count, total);
        }));
    if (archiveError)
        throw *archiveError;
    if (outcome.response.isEmpty())
        state.prompter().notice(kNoneFound, kNoneFoundTitle);
}
