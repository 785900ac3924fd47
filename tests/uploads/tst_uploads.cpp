#include "TestSupport.h"
#include "UploadsFixture.h"

#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "core/VbText.h"
#include "uploads/OwnerFile.h"
#include "uploads/SetupFile.h"
#include "uploads/TenantUpload.h"
#include "uploads/UploadAll.h"
#include "uploads/VendorFile.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

namespace {

// The expected bytes of a file under tests/data/uploads; "{YYYY-MM-DD}"
// stands for that date in the system's short date form.
QByteArray expected(const QString &name)
{
    QFile file(testData(u"uploads/"_qs + name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing expected file %s", qPrintable(name));
    QString text = TransferFile::fromAnsi(file.readAll());
    static const QRegularExpression date(u"\\{(\\d{4}-\\d{2}-\\d{2})\\}"_qs);
    QRegularExpressionMatch m;
    while ((m = date.match(text)).hasMatch())
        text.replace(m.capturedStart(), m.capturedLength(),
            VbText::shortDate(QDate::fromString(m.captured(1), Qt::ISODate)));
    return TransferFile::toAnsi(text);
}

// Compares line by line first, so a failure names the line.
void compareBytes(const QByteArray &actual, const QByteArray &wanted)
{
    const QList<QByteArray> a = actual.split('\n');
    const QList<QByteArray> b = wanted.split('\n');
    for (qsizetype i = 0; i < qMin(a.size(), b.size()); ++i)
        QCOMPARE(TransferFile::fromAnsi(a[i]), TransferFile::fromAnsi(b[i]));
    QCOMPARE(a.size(), b.size());
    QCOMPARE(actual, wanted);
}

// Each file's builder and the name it writes.
struct Built
{
    const char *which;
    void (*build)(ProgramState &);
    QString TransferFileNames::*name;
};
const Built kFiles[] = { { "setup", buildSetupFile, &TransferFileNames::setupUpload },
    { "tenant", buildTenantUpload, &TransferFileNames::tenantUpload },
    { "owner", buildOwnerFile, &TransferFileNames::ownerUpload },
    { "vendor", buildVendorFile, &TransferFileNames::vendorUpload } };

} // namespace

class TestUploads : public QObject
{
    Q_OBJECT

private slots:
    void filesMatchTheirLayouts_data()
    {
        QTest::addColumn<int>("file");
        for (int i = 0; i < 4; ++i)
            QTest::newRow(kFiles[i].which) << i;
    }
    // Field order, separators, trimming, Null handling, the action rules,
    // second owners, joiners, the company fields, ANSI bytes and CR LF, and
    // the row order of each file, against bytes written out by hand. An
    // older, longer file is replaced, not appended to.
    void filesMatchTheirLayouts()
    {
        QFETCH(int, file);
        const Built &f = kFiles[file];
        TestSite site;
        UploadsFixture::addAll(site);
        site.writeFile(site.state->files.*f.name, QByteArray(5000, 'x'));
        f.build(*site.state);
        compareBytes(site.fileBytes(site.state->files.*f.name),
            expected(QString::fromLatin1(f.which) + u".txt"_qs));
        QVERIFY(site.prompter.shown().isEmpty());
        QCOMPARE(site.prompter.busyDepth(), 0);
    }

    void setupNeedsACompanyRowAndKeepsAnEmptyJoin()
    {
        TestSite site;
        UploadsFixture::addPortfolio(site);
        site.writeFile(site.state->files.setupUpload, "old");
        QCOMPARE(raisedError([&] { buildSetupFile(*site.state); }), 3021);
        QCOMPARE(site.fileBytes(site.state->files.setupUpload), QByteArray("old"));

        TestSite empty;
        UploadsFixture::addCompany(empty);
        buildSetupFile(*empty.state);
        QCOMPARE(empty.fileBytes(empty.state->files.setupUpload), QByteArray(""));
    }

    // Without tenants no tenant file is left; sending it tells the user,
    // and Upload All raises file-not-found; nothing is sent.
    void withoutTenants()
    {
        TestSite site;
        UploadsFixture::addCompany(site);
        UploadsFixture::addVendors(site);
        auto script = site.scriptProcessor();
        site.writeFile(site.state->files.tenantUpload, "old");
        buildTenantUpload(*site.state);
        QVERIFY(site.fileBytes(site.state->files.tenantUpload).isNull());
        sendTenantUpload(*site.state);
        QCOMPARE(site.prompter.titles(), QStringList { u"Tenant Remitra"_qs });
        QVERIFY(
            site.prompter.texts().first().startsWith(u"The Tenant Remitra file was not found."_qs));
        QCOMPARE(raisedError([&] { uploadAll(*site.state); }), 53);
        QVERIFY(script->calls.isEmpty());
        QCOMPARE(site.fileBytes(site.state->files.setupUpload), QByteArray(""));
    }

    void tenantUploadNeedsTheLogin()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        site.state->login.missing = true;
        site.writeFile(site.state->files.tenantUpload, "old");
        buildTenantUpload(*site.state);
        QVERIFY(!uploadAll(*site.state));
        QCOMPARE(site.fileBytes(site.state->files.tenantUpload), QByteArray("old"));
        QVERIFY(site.fileBytes(site.state->files.setupUpload).isNull());
        QCOMPARE(
            site.prompter.titles(), (QStringList { u"Login Message"_qs, u"Login Message"_qs }));
    }

    // The files themselves are checked above and through the enrolment
    // screens; empty tables are still sent.
    void emptyPayeeTablesAreStillSent()
    {
        TestSite site;
        auto script = site.scriptProcessor();
        uploadOwnerFile(*site.state);
        uploadVendorFile(*site.state);
        QCOMPARE(script->calls.size(), 2);
        for (const auto &call : script->calls) {
            QCOMPARE(call.url, u"http://127.0.0.1:9/qps/evendorpay.php"_qs);
            QCOMPARE(call.texts, (QStringList { u""_qs, u""_qs, u""_qs }));
        }
        QCOMPARE(site.fileBytes(site.state->files.ownerUpload), QByteArray(""));
        QCOMPARE(site.fileBytes(site.state->files.vendorUpload), QByteArray(""));
        QCOMPARE(
            site.prompter.texts(), (QStringList { ProductTexts::success, ProductTexts::success }));
    }

    // What a successful Upload All sends is checked over HTTP.
    void uploadAllReportsAFailedCall()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        auto script = site.scriptProcessor();
        script->replies.append({ false, 501, {} });
        QVERIFY(uploadAll(*site.state));
        QCOMPARE(script->calls.size(), 1);
        QCOMPARE(site.state->lastResult.text, u"False"_qs);
        QCOMPARE(site.prompter.titles(), QStringList { u"Remitra error"_qs });
        QCOMPARE(site.prompter.busyDepth(), 0);
        // The files stay for inspection.
        QVERIFY(!site.fileBytes(site.state->files.setupUpload).isNull());
        QVERIFY(!site.fileBytes(site.state->files.tenantUpload).isNull());
    }
};

QTEST_GUILESS_MAIN(TestUploads)
#include "tst_uploads.moc"
