#include "TestSupport.h"
#include "UploadsFixture.h"

#include "app/Credentials.h"
#include "app/LoginDialog.h"
#include "app/MainMenuWindow.h"
#include "app/Startup.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>
#include <QTimer>

namespace {

const QStringList kGatedByLogin
    = { u"cmdUploadAll"_qs, u"cmdDownloadPayment"_qs, u"cmdTenantUpdate"_qs };
const QStringList kGatedByDisbursement
    = { u"cmdOwnerUpdate"_qs, u"cmdVendorUpdate"_qs, u"cmdMakePayments"_qs };

// Acts on the login screen once it is shown modally: types the entries
// (null: leave the box alone) and presses the button.
void onLoginScreen(const QString &user, const QString &password, const QString &url,
    const char *buttonName, bool *openedEmpty = nullptr)
{
    QTimer::singleShot(0, [=] {
        auto *screen = qobject_cast<LoginDialog *>(QApplication::activeModalWidget());
        if (!screen) {
            onLoginScreen(user, password, url, buttonName, openedEmpty);
            return;
        }
        const std::pair<const char *, QString> boxes[]
            = { { "txtUserName", user }, { "txtPassword", password }, { "txtURL", url } };
        bool empty = true;
        for (const auto &[name, text] : boxes) {
            auto *box = screen->findChild<QLineEdit *>(QString::fromLatin1(name));
            empty = empty && box->text().isEmpty();
            if (!text.isNull())
                QTest::keyClicks(box, text);
        }
        if (openedEmpty)
            *openedEmpty = empty;
        QTest::mouseClick(
            screen->findChild<QPushButton *>(QString::fromLatin1(buttonName)), Qt::LeftButton);
    });
}

// Closes the next modal screen once it is shown and records its class.
void closeNextModal(QString *screenName)
{
    QTimer::singleShot(10, [=] {
        QWidget *screen = QApplication::activeModalWidget();
        if (!screen) {
            closeNextModal(screenName);
            return;
        }
        *screenName = screen->objectName();
        screen->close();
    });
}

struct MenuSite
{
    MenuSite()
    {
        site.state->settingsFile = site.path(u"remitra.ini"_qs);
        menu = std::make_unique<MainMenuWindow>(*site.state);
    }
    void click(const QString &name) { ::click(*menu, qPrintable(name)); }
    QVariant stored(const char *key) const
    {
        return QSettings(site.state->settingsFile, QSettings::IniFormat)
            .value(u"Parameters/"_qs + QString::fromLatin1(key));
    }
    TestSite site;
    std::unique_ptr<MainMenuWindow> menu;
};

} // namespace

class TestScreens : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void commandsRefuseWithoutLoginOrSwitch_data()
    {
        QTest::addColumn<bool>("loginMissing");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<bool>("namesBuilt");
        QTest::newRow("login missing") << true << true << true;
        // The switch is checked before the login.
        QTest::newRow("both missing") << true << false << true;
        QTest::newRow("switch off") << false << false << true;
        // Logged in after start-up: the transfer files have no names, and a
        // download could not store what the processor hands over.
        QTest::newRow("logged in after start-up") << false << true << false;
    }

    void commandsRefuseWithoutLoginOrSwitch()
    {
        QFETCH(bool, loginMissing);
        QFETCH(bool, enabled);
        QFETCH(bool, namesBuilt);
        MenuSite s;
        s.site.state->login.missing = loginMissing;
        s.site.state->disbursementEnabled = enabled;
        auto script = s.site.scriptProcessor();
        if (!namesBuilt) {
            for (QString *name :
                { &s.site.state->files.setupUpload, &s.site.state->files.tenantUpload,
                    &s.site.state->files.paymentDownload, &s.site.state->files.ownerUpload,
                    &s.site.state->files.vendorUpload, &s.site.state->files.disbursementUpload })
                name->clear();
        }
        for (const QString &name : kGatedByLogin + kGatedByDisbursement) {
            const bool switched = kGatedByDisbursement.contains(name);
            if (!switched && !loginMissing && namesBuilt)
                continue; // would open its screen
            s.site.prompter.clear();
            s.click(name);
            // Each refusal is told by its own notice.
            const QString title = !namesBuilt ? u"Remitra"_qs
                : switched && !enabled        ? u"Dwellix Remitra"_qs
                                              : u"Login Message"_qs;
            QCOMPARE(s.site.prompter.titles(), QStringList { title });
            QVERIFY(namesBuilt
                || s.site.prompter.texts().first().startsWith(
                    u"Remitra must be restarted before it can exchange files"_qs));
        }
        QVERIFY(script->calls.isEmpty());
        if ((loginMissing || !namesBuilt) && enabled) {
            s.site.prompter.clear();
            s.click(u"cmdViewFiles"_qs);
            QVERIFY(s.site.prompter.shown().isEmpty());
            QVERIFY(!s.site.state->endRequested);
        }
    }

    void completeLoginOpensEachCommandsScreen()
    {
        MenuSite s;
        auto script = s.site.scriptProcessor();
        const std::pair<QString, const char *> modal[] = {
            { u"cmdTenantUpdate"_qs, "frmTenantUpdate" },
            { u"cmdOwnerUpdate"_qs, "frmOwnerUpdate" },
            { u"cmdVendorUpdate"_qs, "frmVendorUpdate" },
            { u"cmdDownloadPayment"_qs, "frmDownload" },
        };
        for (const auto &[button, screen] : modal) {
            QString opened;
            closeNextModal(&opened);
            s.click(button);
            QCOMPARE(opened, QString::fromLatin1(screen));
        }
        // The download ran before its review screen opened; nothing came back.
        QCOMPARE(script->calls.size(), 1);
        QCOMPARE(s.site.prompter.texts(),
            (QStringList { ProductTexts::success, ProductTexts::noneFound }));

        // The modeless screens open once and are shown again on a later click.
        for (const char *button : { "cmdMakePayments", "cmdViewFiles", "cmdHistory" }) {
            s.click(QString::fromLatin1(button));
            s.click(QString::fromLatin1(button));
            int shown = 0;
            for (QWidget *w : QApplication::topLevelWidgets())
                shown += w->isVisible() && w != s.menu.get() ? 1 : 0;
            QCOMPARE(shown, 1);
            for (QWidget *w : QApplication::topLevelWidgets()) {
                if (w != s.menu.get())
                    w->close();
            }
        }
    }

    // What Upload All sends: tests/uploads and tests/e2e.
    void uploadAllSendsOnceAndFocusesExit()
    {
        MenuSite s;
        auto script = s.site.scriptProcessor();
        UploadsFixture::addAll(s.site);
        s.menu->show();
        s.click(u"cmdUploadAll"_qs);
        QCOMPARE(script->calls.size(), 1);
        QCOMPARE(s.site.prompter.texts(), QStringList { ProductTexts::success });
        QCOMPARE(s.menu->focusWidget(), child<QPushButton>(*s.menu, "cmdExit"));
    }

    void resetLogInSavesOnlyCompleteEntries()
    {
        MenuSite s;
        ProgramState &state = *s.site.state;

        // Entries are trimmed; the current values are never shown.
        bool openedEmpty = false;
        onLoginScreen(u"  acme  "_qs, u" pass"_qs, u"https://pay.example/qps/upload.php "_qs,
            "cmdSave", &openedEmpty);
        s.click(u"cmdLogin"_qs);
        QVERIFY(openedEmpty);
        QVERIFY(!state.login.missing);
        QVERIFY(s.site.prompter.shown().isEmpty());
        QCOMPARE(s.stored("username").toString(), u"dfph"_qs);
        QCOMPARE(s.stored("password").toString(), u"sdvv"_qs);
        QCOMPARE(
            s.stored("url").toString(), encodeSetting(u"https://pay.example/qps/upload.php"_qs));
        // The names built at start-up are left as they are.
        QCOMPARE(state.files.setupUpload, u"DX_Quenta_Setup_DXRM.txt"_qs);

        // Cancel while complete: nothing changes, and the same values are
        // saved again.
        QSettings(state.settingsFile, QSettings::IniFormat).remove(u"Parameters"_qs);
        onLoginScreen(u"zzz"_qs, {}, {}, "cmdCancel");
        s.click(u"cmdLogin"_qs);
        QVERIFY(!state.login.missing);
        QCOMPARE(s.stored("password").toString(), u"sdvv"_qs);
        QVERIFY(s.site.prompter.shown().isEmpty());

        // An incomplete entry (blanks only count as empty): the notice, and
        // the store is left alone.
        onLoginScreen(u"newuser"_qs, u"newpass"_qs, u"  "_qs, "cmdSave");
        s.click(u"cmdLogin"_qs);
        QVERIFY(state.login.missing);
        QCOMPARE(s.site.prompter.titles(), QStringList { u"Login Message"_qs });
        QCOMPARE(s.stored("username").toString(), u"dfph"_qs);
    }

    void firstStartAsksForLogin()
    {
        MenuSite s;
        ProgramState state(s.site.prompter, s.site.folder());
        state.settingsFile = s.site.path(u"first-run.ini"_qs);
        // A payment file is already waiting, so the payment check at the end
        // of start-up stops at its notice instead of calling the processor.
        s.site.writeIdFile({ u"Rent Income;4000;B"_qs, u"Rent"_qs, u"Management Fee;5200;U"_qs,
            u"Fee"_qs, u"Late Fee;4100;T"_qs, u"Late"_qs });
        s.site.writeFile(u"DX_Quenta_PaymentFile.txt"_qs, "waiting\r\n");
        MainMenuWindow menu(state);

        onLoginScreen(u"acme"_qs, u"pass"_qs, u"http://127.0.0.1:9/qps/upload.php"_qs, "cmdSave");
        QVERIFY(menu.load());
        QCOMPARE(child<QLabel>(menu, "labVersion")->text(), Startup::versionText());
        // The payment check ran and found the waiting file.
        QCOMPARE(s.site.prompter.titles(), QStringList { u"Remitra Notice"_qs });
        QVERIFY(!state.login.missing);
        QVERIFY(QSettings(state.settingsFile, QSettings::IniFormat)
                    .contains(u"Parameters/password"_qs));
    }
};

QTEST_MAIN(TestScreens)
#include "tst_screens.moc"
