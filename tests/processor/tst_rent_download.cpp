// The rent payment download at start-up and from the menu, with a scripted
// processor client.

#include "ScriptedProcessorClient.h"
#include "TestSupport.h"

#include "core/RuntimeError.h"
#include "processor/RentDownload.h"

#include <QDir>
#include <QTest>

namespace {

const QString kPaymentFile = u"DX_Quenta_PaymentFile.txt"_qs;
const QString kLogin = u"You must have a valid LOGIN entry in the User Name, Password, and URL. Please correct that and try again."_qs;
const QString kWaitingAtStart = u"You already have Remitra Tenant transactions waiting to be processed - no more Tenant transactions can be downloaded until you have taken care of the existing ones. To post these deposits to the Dwellix, click on the 'Download and Post Rent Payments' button."_qs;
const QString kWaitingFromMenu = u"You already have Remitra Tenant transactions waiting to be processed from a previous download - no more Tenant transactions can be downloaded until you have taken care of the existing ones. Please either post these payments to the Dwellix ledgers or delete them from the next screen."_qs;

struct Site : TestSite
{
    std::shared_ptr<ScriptedProcessorClient::Script> script = std::make_shared<ScriptedProcessorClient::Script>();
    Site()
    {
        state->ClientFactory = ScriptedProcessorClient::factory(script);
        writeIdFile({u"RENT"_qs, u"Rent income"_qs, u"MGMT"_qs, u"Fee"_qs, u"LATE"_qs, u"Late fee"_qs});
    }
    QStringList archive() const
    {
        return QDir(path(u"archive"_qs)).entryList(QDir::Files, QDir::Name);
    }
};

} // namespace

class TestRentDownload : public QObject
{
    Q_OBJECT

private slots:
    void noLoginOrAWaitingFileAsksTheProcessorNothing()
    {
        Site site;
        site.state->LoginMissing = true;
        CheckForPaymentFile(*site.state);
        DownloadPaymentFile(*site.state);
        QCOMPARE(site.prompter.texts(), (QStringList{kLogin, kLogin}));
        QCOMPARE(site.prompter.titles(), (QStringList{u"Login Message"_qs, u"Login Message"_qs}));

        site.state->LoginMissing = false;
        site.prompter.clear();
        const QByteArray waiting("P1,U2,T3,10,1/1/2026,1,1/1/2026,ACH,Rent\r\n\r\n");
        site.writeFile(kPaymentFile, waiting);
        CheckForPaymentFile(*site.state);
        DownloadPaymentFile(*site.state);
        QCOMPARE(site.prompter.texts(), (QStringList{kWaitingAtStart, kWaitingFromMenu}));
        QCOMPARE(site.prompter.titles(), (QStringList{u"Remitra Notice"_qs, u"Remitra Notice"_qs}));
        QVERIFY(site.script->calls.isEmpty());
        QCOMPARE(site.fileBytes(kPaymentFile), waiting);
    }

    void theArchiveIsWrittenBeforeThePaymentFile()
    {
        // The payment file cannot be written (its name is taken by a folder):
        // the download is already in the archive when the error comes.
        Site site;
        QVERIFY(QDir(site.folder()).mkdir(kPaymentFile));
        site.script->replies = {{true, 200, u"P1"_qs}};
        QVERIFY_THROWS_EXCEPTION(RuntimeError, DownloadPaymentFile(*site.state));
        QCOMPARE(site.archive().size(), 1);

        // And the other way round: an archive that cannot be written does not
        // cost the payment file.
        Site blocked;
        blocked.writeFile(u"archive"_qs, "not a folder");
        blocked.script->replies = {{true, 200, u"P2"_qs}};
        QVERIFY_THROWS_EXCEPTION(RuntimeError, DownloadPaymentFile(*blocked.state));
        QCOMPARE(blocked.fileBytes(kPaymentFile), QByteArray("P2\r\n"));
    }
};

QTEST_MAIN(TestRentDownload)
#include "tst_rent_download.moc"
