#pragma once

#include <QString>

#include <functional>

class LoginScreen;
class ProgramState;

// The start-up of the main menu: sets the flags, opens the host database (and
// makes sure it is a database with tables), reads (and if needed asks for) the
// processor credentials, builds the transfer file names and looks for waiting
// rent payments. Every error on the way is reported to the user here; the
// result says whether the main menu is shown or the program ends.
class Startup
{
public:
    enum class Outcome { ShowMainMenu, EndProgram };

    // The check for waiting rent payments run when the credentials are
    // complete (checkForPaymentFile; tests may hand in their own).
    using PaymentCheck = std::function<void(ProgramState &)>;

    static Outcome run(ProgramState &state, LoginScreen &login);
    static Outcome run(ProgramState &state, LoginScreen &login, const PaymentCheck &paymentCheck);

    // The program's version as major.minor.revision ("1.0.12").
    static QString versionText();

    static QString dataFileNotFoundText();
    static QString fieldNotFoundText();
    static QString errorMessageTitle();
};
