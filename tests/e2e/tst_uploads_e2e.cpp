// The transfer files and the enrolment screens against a quenta-sandbox:
// what the processor receives is the file, byte for byte.

#include "SandboxProcess.h"
#include "TestSupport.h"
#include "UploadsFixture.h"

#include "enrolment/frmOwnerUpdate.h"
#include "enrolment/frmTenantUpdate.h"
#include "uploads/UploadAll.h"
#include "uploads/VendorFile.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

namespace {

const QString Success = u"Successful connection to Quenta Payment Services!"_qs;

void typeFlag(
    QDialog &screen, const QString &key, int keyColumn, int flagColumn, const QString &flag)
{
    auto *grid = screen.findChild<QTableView *>(u"gridACH"_qs);
    for (int r = 0; r < grid->model()->rowCount(); ++r) {
        if (grid->model()->index(r, keyColumn).data().toString() != key)
            continue;
        const QModelIndex cell = grid->model()->index(r, flagColumn);
        grid->setCurrentIndex(cell);
        grid->edit(cell);
        auto *editor = grid->findChild<QLineEdit *>(u"flagEditor"_qs);
        QVERIFY(editor);
        editor->selectAll();
        QTest::keyClicks(editor, flag);
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::processEvents(); // the editor commits after the key
        return;
    }
    QFAIL("row not listed");
}

} // namespace

class TestUploadsE2e : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SandboxProcess> sandbox;

    std::unique_ptr<TestSite> site()
    {
        auto s = std::make_unique<TestSite>();
        UploadsFixture::addAll(*s);
        sandbox->useFor(*s->state, 10);
        return s;
    }

private slots:
    void initTestCase()
    {
        sandbox = std::make_unique<SandboxProcess>();
        QVERIFY(sandbox->isRunning());
    }
    void init() { sandbox->clearReceived(); }
    void cleanupTestCase() { sandbox.reset(); }

    void uploadAllSendsTheTwoFiles()
    {
        auto s = site();
        QVERIFY(UploadAll(*s->state));
        QCOMPARE(s->prompter.texts(), QStringList { Success });
        const auto got = sandbox->received();
        QCOMPARE(got.size(), 1);
        QCOMPARE(got[0].path, u"/qps/upload.php"_qs);
        QVERIFY(got[0].authorized);
        QCOMPARE(got[0].parts[u"setup"_qs], s->fileBytes(s->state->SetupUploadName));
        QCOMPARE(got[0].parts[u"tenant"_qs], s->fileBytes(s->state->TenantUploadName));
        QVERIFY(got[0].parts[u"setup"_qs].contains("|Caf\xe9 Town|"));
    }

    void tenantScreenSendsTheTenantUploadOnClosing()
    {
        auto s = site();
        frmTenantUpdate screen(*s->state);
        screen.show();
        typeFlag(screen, u"T107"_qs, 2, 10, u"y"_qs);
        QTest::mouseClick(screen.findChild<QPushButton *>(u"cmdExit"_qs), Qt::LeftButton);
        const auto got = sandbox->received();
        QCOMPARE(got.size(), 1);
        QCOMPARE(got[0].path, u"/qps/upload.php"_qs);
        QCOMPARE(got[0].parts[u"setup"_qs], QByteArray(""));
        const QByteArray file = s->fileBytes(s->state->TenantUploadName);
        QCOMPARE(got[0].parts[u"tenant"_qs], file);
        QVERIFY(file.contains("|T107|Ed|Eve|7|Springfield|IL|62701|activate|\r\n"));
        QCOMPARE(s->prompter.texts(), QStringList { Success });
    }

    void ownerScreenSendsThePayeeFileOnClosing()
    {
        auto s = site();
        frmOwnerUpdate screen(*s->state);
        screen.show();
        typeFlag(screen, u"13"_qs, 0, 5, u"n"_qs);
        screen.close();
        const auto got = sandbox->received();
        QCOMPARE(got.size(), 1);
        QCOMPARE(got[0].path, u"/qps/evendorpay.php"_qs);
        const QByteArray file = s->fileBytes(s->state->OwnerUploadName);
        QCOMPARE(got[0].parts[u"payee"_qs], file);
        QCOMPARE(got[0].parts[u"payment"_qs], QByteArray(""));
        QCOMPARE(got[0].parts[u"extra"_qs], QByteArray(""));
        QVERIFY(file.contains("O13|Owner|Quin Q|13 A|X|Y|Z|||||||deactivate\r\n"));
    }

    void vendorFileAndARefusal()
    {
        auto s = site();
        UploadVendorFile(*s->state);
        auto got = sandbox->received();
        QCOMPARE(got.size(), 1);
        QCOMPARE(got[0].parts[u"payee"_qs], s->fileBytes(s->state->VendorUploadName));
        QVERIFY(got[0].parts[u"payee"_qs].contains("V6|Vendor|\x80uro Parts|"));
        QCOMPARE(s->prompter.texts(), QStringList { Success });

        // Wrong credentials: the processor refuses, the file stays.
        sandbox->clearReceived();
        s->prompter.clear();
        s->state->ProcessorPassword = u"wrong"_qs;
        UploadVendorFile(*s->state);
        QCOMPARE(s->state->ResultCode, qint16(401));
        QCOMPARE(s->prompter.titles(), QStringList { u"Remitra error"_qs });
        QVERIFY(!s->fileBytes(s->state->VendorUploadName).isEmpty());
    }
};

QTEST_MAIN(TestUploadsE2e)
#include "tst_uploads_e2e.moc"
