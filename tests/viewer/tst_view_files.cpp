// The transfer file viewer, driven through its widgets.

#include "TestSupport.h"

#include "hostdb/DistributionRecord.h"
#include "viewer/TransferFileViewer.h"

#include <QListWidget>
#include <QTest>

namespace {

const QString kMissing = u"The file you chose does not exist in the Dwellix folder"_qs;

struct Viewer
{
    TestSite site;
    TransferFileViewer form { *site.state, nullptr };

    Viewer() { form.show(); }
    void choose(int index) { click(form, qPrintable(u"optFiles_%1"_qs.arg(index))); }
    QStringList lines() const
    {
        QStringList out;
        auto *list = child<QListWidget>(form, "lstFileContents");
        for (int i = 0; i < list->count(); ++i)
            out << list->item(i)->text();
        return out;
    }
    void clickDelete() { click(form, "cmdDelete"); }
};

} // namespace

class TestViewFiles : public QObject
{
    Q_OBJECT

private slots:
    void eachChoiceOpensItsFile_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("lines");
        // Split at LF: each CR stays at the end of its line, and the final
        // LF gives a last, empty entry.
        const QStringList ab = { u"A\r"_qs, u"B\r"_qs, QString() };
        const std::pair<int, const char *> plain[] = { { 0, "DX_Quenta_Setup_DXRM.txt" },
            { 4, "DX_Quenta_PaymentFile.txt" }, { 5, "DX_Quenta_PaymentFile_LastDownload.txt" },
            { 6, "DX_Quenta_DisbursementPayment.txt" },
            { 7, "DX_Quenta_Distribution_LastUpload.txt" },
            { 8, "DX_Quenta_Distribution_Response.txt" } };
        for (const auto &[index, name] : plain)
            QTest::newRow(name) << index << QString::fromLatin1(name) << QByteArray("A\r\nB\r\n")
                                << ab;
        QTest::newRow("no line feed, ANSI")
            << 2 << u"DX_Quenta_Owner_DXRM.txt"_qs << QByteArray("one\rline|\xe9")
            << QStringList { u"one\rline|é"_qs };
        QTest::newRow("empty") << 3 << u"DX_Quenta_Vendor_DXRM.txt"_qs << QByteArray("")
                               << QStringList();
    }
    void eachChoiceOpensItsFile()
    {
        QFETCH(int, index);
        QFETCH(QString, file);
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, lines);
        Viewer v;
        v.site.writeFile(file, bytes);
        v.choose(index);
        QCOMPARE(v.lines(), lines);
        if (bytes.isEmpty()) {
            QCOMPARE(v.site.prompter.texts(), QStringList { u"There is no data in this file."_qs });
            QCOMPARE(v.site.prompter.titles(), QStringList { u"Dwellix Remitra"_qs });
        } else {
            QVERIFY(v.site.prompter.shown().isEmpty());
        }
    }

    void deleteAsksFirst()
    {
        Viewer v;
        const QString name = u"DX_Quenta_Distribution_Response.txt"_qs;
        v.site.writeFile(name, "O7,B1,0,\r\n");
        v.choose(8);

        v.site.prompter.queueAnswer(Prompter::Answer::No);
        v.clickDelete();
        QCOMPARE(v.site.prompter.texts(),
            QStringList {
                u"Are you SURE you want to delete the file: DX_Quenta_Distribution_Response.txt?"_qs });
        QCOMPARE(v.site.prompter.shown()[0].kind, ScriptedPrompter::Shown::Question);
        QCOMPARE(v.site.prompter.titles(), QStringList { u"Delete File"_qs });
        QCOMPARE(v.site.state->msgAnswer, u"7"_qs);
        QVERIFY(!v.site.fileBytes(name).isNull());

        v.site.prompter.clear();
        v.site.prompter.queueAnswer(Prompter::Answer::Yes);
        v.clickDelete();
        QCOMPARE(v.site.state->msgAnswer, u"6"_qs);
        QCOMPARE(v.site.prompter.texts().last(), u"File Deleted!"_qs);
        QCOMPARE(v.site.prompter.titles().last(), u"Delete File"_qs);
        QVERIFY(v.site.fileBytes(name).isNull());
        // The list keeps the lines until another choice is made.
        QCOMPARE(v.lines(), (QStringList { u"O7,B1,0,\r"_qs, QString() }));

        // Nothing left to delete; choosing it again says it is gone, and
        // delete then asks nothing.
        v.site.prompter.clear();
        v.clickDelete();
        QVERIFY(v.site.prompter.shown().isEmpty());
        v.choose(8);
        QVERIFY(v.lines().isEmpty());
        v.clickDelete();
        QCOMPARE(v.site.prompter.texts(), QStringList { kMissing });
        QCOMPARE(v.site.prompter.titles(), QStringList { u"Remitra Notice"_qs });
    }

    // The files that payments depend on get a warning first; No keeps them.
    void moneyFilesWarnBeforeTheQuestion()
    {
        Viewer v;
        v.site.writeFile(
            v.site.state->files.paymentDownload, "P1,U1,T1,5,1/1/2026,1,1/1/2026,ACH,Rent\r\n");
        v.site.writeFile(v.site.state->files.disbursementUpload, "B1|O7||5\r\n");
        // A distribution sent without a recorded answer.
        PaymentRow sent;
        sent.CkID = 1;
        sent.IDField = -7;
        DistributionRecord(v.site.state->store()).begin({ sent }, u"B1|O7||5\r\n"_qs);
        for (const int index : { 4, 6 }) {
            v.choose(index);
            v.site.prompter.clear();
            v.site.prompter.queueAnswer(Prompter::Answer::No);
            v.clickDelete();
            QCOMPARE(v.site.prompter.shown().size(), 1);
            QCOMPARE(v.site.prompter.titles(), QStringList { u"Delete File"_qs });
            QVERIFY(
                v.site.prompter.texts().first().endsWith(u"Do you still want to delete it?"_qs));
            QCOMPARE(v.site.state->msgAnswer, u"7"_qs);
        }
        QVERIFY(!v.site.fileBytes(v.site.state->files.paymentDownload).isNull());
        v.site.prompter.clear();
        v.site.prompter.queueAnswers({ Prompter::Answer::Yes, Prompter::Answer::Yes });
        v.clickDelete();
        QCOMPARE(v.site.prompter.texts().last(), u"File Deleted!"_qs);
        QVERIFY(v.site.fileBytes(v.site.state->files.disbursementUpload).isNull());
    }

    void aFileThatVanishesEndsTheProgram()
    {
        Viewer v;
        bool ended = false;
        v.site.state->endProgram = [&] { ended = true; };
        v.site.writeFile(u"DX_Quenta_Setup_DXRM.txt"_qs, "S\r\n");
        v.choose(0);
        QFile::remove(v.site.path(u"DX_Quenta_Setup_DXRM.txt"_qs));
        v.form.chooseFile(-1); // no choice: shown again without a check
        QVERIFY(v.site.prompter.texts().last().startsWith(u"Run-time error '53':"_qs));
        QVERIFY(ended || v.site.state->endRequested);
    }
};

QTEST_MAIN(TestViewFiles)
#include "tst_view_files.moc"
