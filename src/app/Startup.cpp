#include "app/Startup.h"

#include "app/Credentials.h"
#include "app/LoginScreen.h"
#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/VbText.h"
#include "hostdb/HostDb.h"
#include "hostdb/JournalRecovery.h"
#include "processor/RentDownload.h"
#include "uploads/EnrolmentUpload.h"

#include <QFileInfo>

namespace {

// The credentials at start-up: the stored values, or, when one of them is
// missing, what the user enters on the login screen. Returns false when the
// entry stays incomplete (the login notice has been shown then).
bool readCredentials(ProgramState &state, LoginScreen &login)
{
    Credentials::Stored stored = Credentials::read(state.settingsFile);
    if (stored.username.isEmpty() || stored.password.isEmpty() || stored.url.isEmpty()) {
        login.showLogin(state);
        if (state.login.missing) {
            Credentials::showLoginNotice(state);
            return false;
        }
        // A cancelled screen left the state values empty: empty values are
        // saved then, and the entry counts as missing below.
        stored = { encodeSetting(state.login.user), encodeSetting(state.login.password),
            encodeSetting(state.login.url) };
        Credentials::save(state.settingsFile, stored);
    }
    state.login.user = decodeSetting(stored.username);
    state.login.password = decodeSetting(stored.password);
    state.login.url = decodeSetting(stored.url);
    state.login.missing
        = state.login.user.isEmpty() || state.login.password.isEmpty() || state.login.url.isEmpty();
    return true;
}

void buildFileNames(ProgramState &state)
{
    state.siteCode = u"DXRM"_qs;
    const QString site = VbText::trim(state.siteCode);
    state.files.setupUpload = u"DX_Quenta_Setup_"_qs + site + u".txt"_qs;
    state.files.tenantUpload = u"DX_Quenta_Tenant_"_qs + site + u".txt"_qs;
    state.files.paymentDownload = u"DX_Quenta_PaymentFile.txt"_qs;
    state.files.ownerUpload = u"DX_Quenta_Owner_"_qs + site + u".txt"_qs;
    state.files.vendorUpload = u"DX_Quenta_Vendor_"_qs + site + u".txt"_qs;
    state.files.disbursementUpload = u"DX_Quenta_DisbursementPayment.txt"_qs;
}

// Enrolment changes saved in Dwellix that an earlier run could not send go
// out now. One that fails again stays owed for the next close or start.
void sendOwedUploads(ProgramState &state)
{
    try {
        EnrolmentUpload::sendOwed(state);
    } catch (const RuntimeError &error) {
        state.prompter().resetBusy();
        qWarning("enrolment changes are still to be sent: %s", qPrintable(error.description()));
    }
}

// Postings that a program ended between their two commits (Access host)
// are settled before anything reads what was posted. A host held locked
// leaves them for the next start; the posting itself settles them too.
void settleJournal(ProgramState &state)
{
    try {
        JournalRecovery::settle(state.db(), state.store());
    } catch (const RuntimeError &error) {
        qWarning("the journal could not be settled yet: %s", qPrintable(error.description()));
    }
}

} // namespace

Startup::Outcome Startup::run(ProgramState &state, LoginScreen &login)
{
    return run(state, login, checkForPaymentFile);
}

Startup::Outcome Startup::run(
    ProgramState &state, LoginScreen &login, const PaymentCheck &paymentCheck)
{
    try {
        state.login.missing = false;
        state.disbursementEnabled = true;
        const QString sqlite = state.pathOf(QString::fromLatin1(HostDb::SqliteFileName));
        state.databasePath = QFileInfo(sqlite).isFile()
            ? sqlite
            : state.pathOf(QString::fromLatin1(HostDb::AccessFileName));

        // Only that the file is a database with tables is checked here; each
        // part of the program checks the fields it needs when it starts.
        auto db = HostDb::openFolder(state.folder());
        db->checkHoldsTables();
        state.databasePath = db->path();
        state.setHostDb(std::move(db));
        settleJournal(state);

        if (!readCredentials(state, login))
            return Outcome::ShowMainMenu;

        if (!state.login.missing) {
            buildFileNames(state);
            paymentCheck(state);
            sendOwedUploads(state);
        } else {
            Credentials::showLoginNotice(state);
        }
        return Outcome::ShowMainMenu;
    } catch (const RuntimeError &error) {
        state.prompter().resetBusy();
        switch (error.number()) {
        case 3024:
            // An Access file that is there but cannot be opened (no driver
            // on this computer) is not a missing file: its reason is shown.
            if (QFileInfo(state.databasePath).isFile())
                state.prompter().notice(error.description(), u"Remitra"_qs);
            else
                state.prompter().notice(dataFileNotFoundText(), u"Remitra"_qs);
            break;
        case 3265:
            state.prompter().notice(fieldNotFoundText(), u"Remitra"_qs);
            break;
        case 3343:
            // A data file that is empty or not a database: what is wrong
            // with which file.
            state.prompter().notice(error.description(), u"Remitra"_qs);
            break;
        default:
            // Any other failure during start-up: the error's number and
            // description, and the program ends (the main menu would be of
            // no use after a start-up that broke off half-way).
            state.prompter().notice(
                QString::number(error.number()) + u"\n\n"_qs + error.description(),
                errorMessageTitle(), Prompter::Icon::Critical);
            break;
        }
        return Outcome::EndProgram;
    }
}

QString Startup::versionText()
{
    return QString::number(REMITRA_VERSION_MAJOR) + u'.' + QString::number(REMITRA_VERSION_MINOR)
        + u'.' + QString::number(REMITRA_VERSION_PATCH);
}

QString Startup::dataFileNotFoundText()
{
    return u"Dwellix data file not found - be sure that the Remitra Program is copied into the "
           u"same "
           "directory or folder as the main Dwellix Program."_qs;
}

QString Startup::fieldNotFoundText()
{
    return u"Company Remitra field not found"_qs;
}

QString Startup::errorMessageTitle()
{
    return u"Remitra Error Message"_qs;
}
