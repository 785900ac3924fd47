#include "TestSupport.h"

#include "app/IdFile.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"

#include <QFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTest>

TestSite::TestSite()
{
    m_folder = m_dir.path();
    HostDb::openSqlite(path(u"dxdatafl.db"_qs), true)->createSchema();
    state = openFolder(prompter, m_folder);
    state->login.url = u"http://127.0.0.1:9/qps/upload.php"_qs;
    state->login.user = u"user"_qs;
    state->login.password = u"secret"_qs;
    state->login.missing = false;
}

std::unique_ptr<ProgramState> openFolder(
    Prompter &prompter, const QString &folder, RemitraStore::Connection store)
{
    auto state = std::make_unique<ProgramState>(prompter, folder);
    state->databasePath = folder + u"/dxdatafl.db"_qs;
    state->setHostDb(HostDb::openSqlite(state->databasePath), store);
    state->siteCode = u"DXRM"_qs;
    state->files.setupUpload = u"DX_Quenta_Setup_DXRM.txt"_qs;
    state->files.tenantUpload = u"DX_Quenta_Tenant_DXRM.txt"_qs;
    state->files.paymentDownload = u"DX_Quenta_PaymentFile.txt"_qs;
    state->files.ownerUpload = u"DX_Quenta_Owner_DXRM.txt"_qs;
    state->files.vendorUpload = u"DX_Quenta_Vendor_DXRM.txt"_qs;
    state->files.disbursementUpload = u"DX_Quenta_DisbursementPayment.txt"_qs;
    if (QFile::exists(state->pathOf(u"IDFILE.DAT"_qs)))
        loadIdFile(state->folder(), state->account);
    return state;
}

TestSite::~TestSite()
{
    state.reset();
}

namespace {

QSqlQuery run(HostDb &db, const QString &sql, const QVariantMap &binds)
{
    QSqlQuery q(db.database());
    if (!q.prepare(sql))
        qFatal("prepare %s: %s", qPrintable(sql), qPrintable(q.lastError().text()));
    for (auto it = binds.cbegin(); it != binds.cend(); ++it)
        q.bindValue(it.key(), it.value());
    if (!q.exec())
        qFatal("%s: %s", qPrintable(sql), qPrintable(q.lastError().text()));
    return q;
}

} // namespace

qint64 TestSite::insert(const QString &table, const QVariantMap &values)
{
    QStringList names;
    QVariantMap binds;
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        names << it.key();
        binds.insert(u":"_qs + it.key(), it.value());
    }
    return run(db(),
        u"INSERT INTO "_qs + table + u" ("_qs + names.join(u", "_qs) + u") VALUES ("_qs
            + binds.keys().join(u", "_qs) + u")"_qs,
        binds)
        .lastInsertId()
        .toLongLong();
}

QVariant TestSite::scalar(const QString &sql, const QVariantMap &binds)
{
    QSqlQuery q = run(db(), sql, binds);
    return q.next() ? q.value(0) : QVariant();
}

QList<QVariantMap> TestSite::rows(const QString &sql, const QVariantMap &binds)
{
    QSqlQuery q = run(db(), sql, binds);
    QList<QVariantMap> out;
    while (q.next()) {
        QVariantMap row;
        const QSqlRecord rec = q.record();
        for (int i = 0; i < rec.count(); ++i)
            row.insert(rec.fieldName(i), q.value(i));
        out << row;
    }
    return out;
}

void TestSite::writeIdFile(const QStringList &six)
{
    Q_ASSERT(six.size() == 6);
    QStringList items;
    for (int i = 0; i < 20; ++i)
        items << u"\"item%1\""_qs.arg(i);
    items[9] = u'"' + six[0] + u'"';
    items[10] = u'"' + six[1] + u'"';
    for (int k = 0; k < 4; ++k)
        items[15 + k] = u'"' + six[2 + k] + u'"';
    QString text;
    for (int i = 0; i < items.size(); ++i)
        text += items[i] + ((i % 4 == 3) ? u"\r\n"_qs : u","_qs);
    TransferFile::writeAtomic(path(u"IDFILE.DAT"_qs), text + u"\r\n"_qs);
    for (int i = 0; i < 6; ++i)
        state->account.idItems[i] = six[i];
}

std::shared_ptr<ScriptedProcessorClient::Script> TestSite::scriptProcessor(
    QList<ScriptedProcessorClient::Reply> replies)
{
    auto script = std::make_shared<ScriptedProcessorClient::Script>();
    script->replies = std::move(replies);
    state->clientFactory = ScriptedProcessorClient::factory(script);
    return script;
}

QByteArray TestSite::fileBytes(const QString &name) const
{
    QFile f(m_folder + u'/' + name);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    QByteArray bytes = f.readAll();
    if (bytes.isNull())
        bytes = QByteArray("");
    return bytes;
}

void TestSite::writeFile(const QString &name, const QByteArray &bytes)
{
    TransferFile::writeAtomicBytes(path(name), bytes);
}

QString ledgerSummary(HostDb &db)
{
    QSqlQuery q = run(db,
        u"SELECT (SELECT count(*) FROM Transactions), (SELECT total(TCurrBal) FROM Tenants), "
        "(SELECT total(UCurrBal) FROM Units), (SELECT count(*) FROM CheckEntered), "
        "(SELECT count(*) FROM SplitChecks), (SELECT count(*) FROM CheckDepPrinted), "
        "(SELECT count(*) FROM SplitPrintedChecks), (SELECT total(OCurrBal) FROM Owners)"_qs,
        {});
    q.next(); // one row
    QStringList cells;
    for (int i = 0; i < 8; ++i)
        cells << q.value(i).toString();
    return cells.join(u'|');
}

int raisedError(const std::function<void()> &body, QString *description)
{
    try {
        body();
    } catch (const RuntimeError &e) {
        if (description)
            *description = e.description();
        return e.number();
    }
    return 0;
}

void click(const QWidget &screen, const char *name)
{
    QTest::mouseClick(child(screen, name), Qt::LeftButton);
}

QString testData(const QString &relative)
{
    return QStringLiteral(REMITRA_TEST_DATA) + u'/' + relative;
}
