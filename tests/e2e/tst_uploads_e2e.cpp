// The transfer files and the enrolment screens against a quenta-sandbox:
// what the processor receives is the file, byte for byte.

#include "SandboxProcess.h"
#include "TestSupport.h"
#include "UploadsFixture.h"

#include "enrolment/OwnerEnrolmentDialog.h"
#include "uploads/UploadAll.h"

#include <QLineEdit>
#include <QTableView>
#include <QTest>

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
        QVERIFY(uploadAll(*s->state));
        QCOMPARE(s->prompter.texts(), QStringList { ProductTexts::success });
        const auto got = sandbox->received();
        QCOMPARE(got.size(), 1);
        QCOMPARE(got[0].path, u"/qps/upload.php"_qs);
        QVERIFY(got[0].authorized);
        QCOMPARE(got[0].parts[u"setup"_qs], s->fileBytes(s->state->files.setupUpload));
        QCOMPARE(got[0].parts[u"tenant"_qs], s->fileBytes(s->state->files.tenantUpload));
        QVERIFY(got[0].parts[u"setup"_qs].contains("|Caf\xe9 Town|"));
    }

    void ownerScreenSendsThePayeeFileOnClosing()
    {
        auto s = site();
        OwnerEnrolmentDialog screen(*s->state);
        screen.show();
        // Owner 13's flag typed as the user does.
        auto *grid = child<QTableView>(screen, "gridACH");
        int row = 0;
        while (grid->model()->index(row, 0).data().toString() != u"13"_qs)
            QVERIFY(++row < grid->model()->rowCount());
        grid->setCurrentIndex(grid->model()->index(row, 5));
        QTest::keyClicks(grid, u"n"_qs);
        QTest::keyClick(child<QLineEdit>(*grid, "flagEditor"), Qt::Key_Return);
        QCoreApplication::processEvents(); // the editor commits after the key
        screen.close();
        const auto got = sandbox->received();
        QCOMPARE(got.size(), 1);
        QCOMPARE(got[0].path, u"/qps/evendorpay.php"_qs);
        const QByteArray file = s->fileBytes(s->state->files.ownerUpload);
        QCOMPARE(got[0].parts[u"payee"_qs], file);
        QCOMPARE(got[0].parts[u"payment"_qs], QByteArray(""));
        QCOMPARE(got[0].parts[u"extra"_qs], QByteArray(""));
        QVERIFY(file.contains("O13|Owner|Quin Q|13 A|X|Y|Z|||||||deactivate\r\n"));
    }
};

QTEST_MAIN(TestUploadsE2e)
#include "tst_uploads_e2e.moc"
