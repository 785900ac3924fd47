#pragma once

#include "core/RunSettings.h"

#include <QString>

class LoginScreen;
class ProgramState;

// The stored form of a credential: every character replaced by the one whose
// ANSI code is 3 higher. A character of code 253 or more raises
// RuntimeError::invalidArgument().
QString encodeSetting(const QString &text);
// The plain form: every character replaced by the one whose ANSI code is 3
// lower. A character below code 3 raises RuntimeError::invalidArgument().
QString decodeSetting(const QString &text);

// The processor credentials kept between runs: application "Dwellix", group
// "Parameters", keys "username", "password", "url", values encoded. On
// Windows they live in the registry under HKEY_CURRENT_USER\Software\VB and
// VBA Program Settings\Dwellix\Parameters, where the host platform's own
// per-user settings API keeps them; elsewhere in the user's settings file for
// organisation and application "Dwellix". A settings file names an INI
// file to use instead of the user's own store (empty: the user's own).
class Credentials
{
public:
    static constexpr auto UserKey = "username";
    static constexpr auto PasswordKey = "password";
    static constexpr auto UrlKey = "url";

    // The stored (encoded) values; a missing key reads as "".
    struct Stored
    {
        QString username;
        QString password;
        QString url;
    };
    static Stored read(const QString &settingsFile);
    // Writes the three already-encoded values, in the order username,
    // password, url.
    static void save(const QString &settingsFile, const Stored &stored);
    // Encodes the login's user, password and URL and saves them.
    static void saveLogin(const QString &settingsFile, const ProcessorLogin &login);

    // "Reset Log in" of the main menu: shows the login screen; a complete
    // entry is saved, otherwise the login notice is shown.
    static void resetLogIn(ProgramState &state, LoginScreen &login);

    // The notice shown wherever the processor is needed and the credentials
    // are incomplete.
    static void showLoginNotice(ProgramState &state);
    static QString loginNoticeText();
    static QString loginNoticeTitle();
};
