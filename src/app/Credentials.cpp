#include "app/Credentials.h"

#include "app/LoginScreen.h"
#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <memory>

namespace {

constexpr auto kOrganisation = "Dwellix";
constexpr auto kApplication = "Dwellix";
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

std::unique_ptr<QSettings> openStore(const ProgramState &state)
{
    std::unique_ptr<QSettings> settings;
    if (state.SettingsFile.isEmpty()) {
        settings = std::make_unique<QSettings>(QSettings::UserScope,
            QString::fromLatin1(kOrganisation), QString::fromLatin1(kApplication));
    } else {
        settings = std::make_unique<QSettings>(state.SettingsFile, QSettings::IniFormat);
    }
    settings->beginGroup(QString::fromLatin1(kGroup));
    return settings;
}

QString readKey(QSettings &settings, const char *key)
{
    return settings.value(QString::fromLatin1(key), QString()).toString();
}

} // namespace

QString EncodeSetting(const QString &text)
{
    return shifted(text, 3);
}

QString DecodeSetting(const QString &text)
{
    return shifted(text, -3);
}

Credentials::Stored Credentials::read(const ProgramState &state)
{
    auto settings = openStore(state);
    return { readKey(*settings, UserKey), readKey(*settings, PasswordKey),
        readKey(*settings, UrlKey) };
}

void Credentials::save(const ProgramState &state, const Stored &stored)
{
    if (!state.SettingsFile.isEmpty())
        prepareIniFile(state.SettingsFile);
    {
        auto settings = openStore(state);
        settings->setValue(QString::fromLatin1(UserKey), stored.username);
        settings->setValue(QString::fromLatin1(PasswordKey), stored.password);
        settings->setValue(QString::fromLatin1(UrlKey), stored.url);
        settings->sync();
        if (settings->status() != QSettings::NoError)
            throw RuntimeError::permissionDenied();
    }
    if (!state.SettingsFile.isEmpty())
        QFile::setPermissions(state.SettingsFile, kOwnerOnly);
}

void Credentials::saveFromState(const ProgramState &state)
{
    save(state,
        { EncodeSetting(state.ProcessorUser), EncodeSetting(state.ProcessorPassword),
            EncodeSetting(state.ProcessorUrl) });
}

void Credentials::resetLogIn(ProgramState &state, LoginScreen &login)
{
    login.showLogin(state);
    if (!state.LoginMissing)
        saveFromState(state);
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
