#include "app/Credentials.h"

#include "app/LoginScreen.h"
#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <memory>

namespace {

constexpr auto kGroup = "Parameters";

// Shifts every character's ANSI code by delta; a code that leaves 0..255 is
// the runtime's invalid argument.
QString shifted(const QString &text, int delta)
{
    const QByteArray ansi = TransferFile::toAnsi(text);
    QByteArray out(ansi.size(), Qt::Uninitialized);
    for (qsizetype i = 0; i < ansi.size(); ++i) {
        const int code = static_cast<unsigned char>(ansi[i]) + delta;
        if (code < 0 || code > 255)
            throw RuntimeError::invalidArgument();
        out[i] = static_cast<char>(code);
    }
    return TransferFile::fromAnsi(out);
}

const QFileDevice::Permissions kOwnerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

// An INI file of ours holds the credentials (encoded, not encrypted), so it
// is created readable by its owner only, before QSettings writes into it.
void prepareIniFile(const QString &path)
{
    if (QFileInfo::exists(path))
        return;
    QFile file(path);
    if (file.open(QIODevice::WriteOnly, kOwnerOnly))
        file.close();
}

// The user's own store. On Windows it is the registry key that the host
// platform's per-user settings API writes for application "Dwellix", so
// credentials saved by an earlier installation are found there; elsewhere
// it is the user's settings file for "Dwellix".
std::unique_ptr<QSettings> openUserStore()
{
#ifdef Q_OS_WIN
    // Values are plain REG_SZ strings there. (QSettings writes a value that
    // begins with "@" with a second "@" in front; an encoded value begins
    // with "@" only when the plain one begins with "=".)
    return std::make_unique<QSettings>(
        u"HKEY_CURRENT_USER\\Software\\VB and VBA Program Settings\\Dwellix"_qs,
        QSettings::NativeFormat);
#else
    return std::make_unique<QSettings>(QSettings::UserScope, u"Dwellix"_qs, u"Dwellix"_qs);
#endif
}

std::unique_ptr<QSettings> openStore(const QString &settingsFile)
{
    std::unique_ptr<QSettings> settings = settingsFile.isEmpty()
        ? openUserStore()
        : std::make_unique<QSettings>(settingsFile, QSettings::IniFormat);
    settings->beginGroup(QString::fromLatin1(kGroup));
    return settings;
}

// The file behind a store, or "" when the store is not a file (the Windows
// registry, whose key path QSettings also reports as its "file name").
QString storeFile(const QString &settingsFile)
{
    if (!settingsFile.isEmpty())
        return settingsFile;
#ifdef Q_OS_WIN
    return {};
#else
    return openUserStore()->fileName();
#endif
}

QString readKey(QSettings &settings, const char *key)
{
    return settings.value(QString::fromLatin1(key), QString()).toString();
}

} // namespace

QString encodeSetting(const QString &text)
{
    return shifted(text, 3);
}

QString decodeSetting(const QString &text)
{
    return shifted(text, -3);
}

Credentials::Stored Credentials::read(const QString &settingsFile)
{
    auto settings = openStore(settingsFile);
    return { readKey(*settings, UserKey), readKey(*settings, PasswordKey),
        readKey(*settings, UrlKey) };
}

void Credentials::save(const QString &settingsFile, const Stored &stored)
{
    // A store that is a file (ours, or the user's own outside Windows) is
    // made its owner's alone before anything is written into it.
    const QString file = storeFile(settingsFile);
    if (!file.isEmpty() && QFileInfo(file).isAbsolute()) {
        QDir().mkpath(QFileInfo(file).path());
        prepareIniFile(file);
    }
    {
        auto settings = openStore(settingsFile);
        settings->setValue(QString::fromLatin1(UserKey), stored.username);
        settings->setValue(QString::fromLatin1(PasswordKey), stored.password);
        settings->setValue(QString::fromLatin1(UrlKey), stored.url);
        settings->sync();
        if (settings->status() != QSettings::NoError)
            throw RuntimeError::permissionDenied();
    }
    if (!file.isEmpty() && QFileInfo(file).isFile())
        QFile::setPermissions(file, kOwnerOnly);
}

void Credentials::saveLogin(const QString &settingsFile, const ProcessorLogin &login)
{
    save(settingsFile,
        { encodeSetting(login.user), encodeSetting(login.password), encodeSetting(login.url) });
}

void Credentials::resetLogIn(ProgramState &state, LoginScreen &login)
{
    login.showLogin(state);
    if (!state.login.missing)
        saveLogin(state.settingsFile, state.login);
    else
        showLoginNotice(state);
}

QString Credentials::loginNoticeText()
{
    return u"You must have a valid LOGIN entry in the User Name, Password, and URL. Please correct "
           "that and try again."_qs;
}

QString Credentials::loginNoticeTitle()
{
    return u"Login Message"_qs;
}

void Credentials::showLoginNotice(ProgramState &state)
{
    state.prompter().notice(loginNoticeText(), loginNoticeTitle());
}
