// A whole owner and vendor payment cycle over HTTP against a quenta-sandbox:
// the payees are registered, then four checks are paid from the payment
// screen: two accepted, one to a payee that is not set up (code 4) and one
// above the sandbox's payment limit (code 7).

#include "DisburseFixture.h"
#include "SandboxProcess.h"
#include "TestSupport.h"

#include "core/TransferFile.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/PaymentListModel.h"
#include "disburse/PaymentSelectionWindow.h"
#include "disburse/ResponseMatcher.h"
#include "processor/ProcessorCall.h"

#include <QLineEdit>
#include <QTableView>
#include <QTest>

class TestDisburseE2e : public QObject
{
    Q_OBJECT

private slots:
    void paymentCycle()
    {
        SandboxProcess sandbox(
            u"sandbox-user"_qs, u"sandbox-pass"_qs, { u"--payment-limit"_qs, u"1000"_qs });
        QVERIFY(sandbox.isRunning());
        TestSite site;
        sandbox.useFor(*site.state, 10);
        DisburseFixture::populate(site);
        DisburseFixture::addSplit(site, 3, u"O"_qs, 1, 82.4);

        // Owner 1, owner 6's second pair and vendor 8 are set up; owner 4 is not.
        ProcessorCall::transmitPayees(*site.state,
            u"O1|Owner|Ann Lee|||||||||||activate\r\n"
            "O%6|Owner|Hal Solo|||||||||||activate\r\n"
            "V8|Vendor|Acme Repairs|||||||||||activate\r\n"_qs,
            QStringLiteral(""));
        QCOMPARE(site.state->lastResult.code, 200);
        site.prompter.clear();
        sandbox.clearReceived();

        PaymentSelectionWindow form(*site.state);
        form.show();
        auto *grid = child<QTableView>(form, "gridMakePayments");
        auto *model = qobject_cast<PaymentListModel *>(grid->model());
        for (const PaymentRow::Key &key :
            { PaymentRow::Key { 1, -1 }, { 8, -4 }, { 3, 8 }, { 11, -6 } })
            QTest::mouseClick(grid->viewport(), Qt::LeftButton, Qt::ControlModifier,
                grid->visualRect(model->index(model->find(key), 0)).center());
        site.prompter.queueAnswers({ Prompter::Answer::Yes, Prompter::Answer::Yes });
        click(form, "cmdMakePaymentsNow");

        const QByteArray sent = "B1|O1|March owner draw|1500\r\nB8|O%4||40\r\n"
                                "B3|V8|Repairs unit 4|82.4\r\nB11|O%6|Refund |x|12.5\r\n";
        const QList<SandboxProcess::Request> requests = sandbox.received();
        QCOMPARE(requests.size(), 1);
        QCOMPARE(requests[0].path, u"/qps/evendorpay.php"_qs);
        QVERIFY(requests[0].authorized);
        QCOMPARE(requests[0].parts.value(u"payment"_qs), sent);
        QCOMPARE(site.fileBytes(DistributionFile::LastUploadName), sent);
        QCOMPARE(site.fileBytes(DistributionFile::ResponseName),
            QByteArray("O1,B1,7,Amount exceeds the payment limit\r\n"
                       "O%4,B8,4,Payee is not set up for electronic payment\r\n"
                       "V8,B3,0,Accepted\r\nO%6,B11,0,Accepted\r\n\r\n"));

        // Accepted checks are posted and leave the list; rejected ones stay.
        QCOMPARE(DisburseFixture::dump(site,
                     u"SELECT group_concat(CkPayee, '/') FROM CheckDepPrinted UNION ALL SELECT "
                     "group_concat(CkID) FROM CheckEntered WHERE CkID IN (1, 3, 8, 11) UNION ALL "
                     "SELECT OCurrBal FROM Owners WHERE OwnerID = 1"_qs),
            u"Acme Repairs/Hal Solo;1,8;-82.4"_qs);
        QCOMPARE(model->find({ 3, 8 }), -1);
        QVERIFY(model->find({ 1, -1 }) >= 0);

        // The processor's reasons reach the user, one question per rejection.
        QCOMPARE(site.prompter.shown().size(), 4);
        QVERIFY(site.prompter.texts()[1].contains(
            u"\r\rReason for Rejection: (Error 7) Amount exceeds the payment limit\r\r"_qs));
        QVERIFY(site.prompter.texts()[2].contains(
            u"(Error 4) "_qs + ResponseMatcher::notSetUpReason()));
        QCOMPARE(site.prompter.texts().last(), DistributionRun::completeText());
        QCOMPARE(child<QLineEdit>(form, "txtTotalSelected")->text(), u"0"_qs);
    }
};

QTEST_MAIN(TestDisburseE2e)
#include "tst_disburse_e2e.moc"
