#include "BenchJobs.h"

#include "BenchSite.h"
#include "ChildRun.h"
#include "ScriptedProcessorClient.h"

#include "app/IdFile.h"
#include "app/MainMenuWindow.h"
#include "app/ProgramState.h"
#include "core/RuntimeError.h"
#include "core/ScriptedPrompter.h"
#include "disburse/DistributionRun.h"
#include "enrolment/TenantEnrolmentDialog.h"
#include "hostdb/DisburseList.h"
#include "hostdb/HostDb.h"
#include "hostdb/RentLedger.h"
#include "processor/HttpProcessorClient.h"
#include "rent/PaymentTableModel.h"
#include "rent/PostPayments.h"
#include "rent/RentReviewDialog.h"
#include "rent/UpdateLedgers.h"
#include "uploads/OwnerFile.h"
#include "uploads/SetupFile.h"
#include "uploads/TenantUpload.h"
#include "uploads/UploadAll.h"
#include "uploads/VendorFile.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>

#include <cstdio>
#include <ctime>
#include <functional>
#include <map>
#include <stdexcept>

namespace BenchJobs {

qint64 monotonicNs()
{
    timespec ts {};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return qint64(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

const QList<Job> &all()
{
    static const QList<Job> jobs = {
        { u"startup"_qs, u"Start-up to the main menu"_qs, Baseline::None, 0, 0, false, true },
        { u"setup-file"_qs, u"BuildSetupFile"_qs, Baseline::SqliteExport, 1.5, 0, false, false },
        { u"tenant-upload"_qs, u"BuildTenantUpload"_qs, Baseline::SqliteExport, 1.5, 0, false,
            false },
        { u"owner-file"_qs, u"BuildOwnerFile"_qs, Baseline::SqliteExport, 1.5, 0, false, false },
        { u"vendor-file"_qs, u"BuildVendorFile"_qs, Baseline::SqliteExport, 1.5, 0, false, false },
        { u"upload-all"_qs, u"Upload All (sandbox, loopback)"_qs, Baseline::None, 0, 0, false,
            true },
        { u"review-load"_qs, u"Review screen load"_qs, Baseline::None, 0, 1.0, true, false },
        { u"posting"_qs, u"Posting (fees, deposit)"_qs, Baseline::WriteLoop, 2.0, 0, true, false },
        { u"enrolment-open"_qs, u"Tenant enrolment screen open"_qs, Baseline::None, 0, 1.0, false,
            false },
        { u"distribution"_qs, u"Distribution run"_qs, Baseline::None, 0, 2.0, false, false },
    };
    return jobs;
}

const Job &writeLoop()
{
    static const Job job { u"write-loop"_qs, u"plain write loop"_qs, Baseline::None, 0, 0, true,
        false };
    return job;
}

namespace {

struct Options
{
    QString job;
    QString folder;
    QString result;
    QString url;
    QString user;
    QString password;
};

// The measured stretch of a job and what the job noted about its outcome.
struct Measured
{
    qint64 start = 0;
    qint64 end = 0;
    QStringList notes;
};

class Child
{
public:
    explicit Child(const Options &options)
        : m_options(options)
        , m_state(m_prompter, QDir(options.folder).absolutePath())
    {
        QDir::setCurrent(m_state.folder());
    }

    // Opens the host database and sets the state as start-up leaves it.
    void open()
    {
        m_state.setHostDb(HostDb::openFolder(m_state.folder()));
        m_state.databasePath = m_state.db().path();
        m_state.siteCode = u"DXRM"_qs;
        m_state.files.setupUpload = u"DX_Quenta_Setup_DXRM.txt"_qs;
        m_state.files.tenantUpload = u"DX_Quenta_Tenant_DXRM.txt"_qs;
        m_state.files.paymentDownload = u"DX_Quenta_PaymentFile.txt"_qs;
        m_state.files.ownerUpload = u"DX_Quenta_Owner_DXRM.txt"_qs;
        m_state.files.vendorUpload = u"DX_Quenta_Vendor_DXRM.txt"_qs;
        m_state.files.disbursementUpload = u"DX_Quenta_DisbursementPayment.txt"_qs;
        m_state.login.url = m_options.url;
        m_state.login.user = m_options.user;
        m_state.login.password = m_options.password;
        m_state.login.missing = false;
        m_state.clientFactory = [] { return std::make_unique<HttpProcessorClient>(120); };
        loadIdFile(m_state.folder(), m_state.account);
    }

    Measured run()
    {
        static const std::map<QString, void (Child::*)()> jobs = {
            { u"startup"_qs, &Child::startup },
            { u"setup-file"_qs, &Child::setupFile },
            { u"tenant-upload"_qs, &Child::tenantUpload },
            { u"owner-file"_qs, &Child::ownerFile },
            { u"vendor-file"_qs, &Child::vendorFile },
            { u"upload-all"_qs, &Child::uploadAll },
            { u"review-load"_qs, &Child::reviewLoad },
            { u"posting"_qs, &Child::posting },
            { u"enrolment-open"_qs, &Child::enrolmentOpen },
            { u"distribution"_qs, &Child::distribution },
            { u"write-loop"_qs, &Child::writeLoop },
        };
        const auto it = jobs.find(m_options.job);
        if (it == jobs.end())
            throw std::invalid_argument("unknown job");
        if (m_options.job != u"startup"_qs)
            open();
        (this->*(it->second))();
        for (const ScriptedPrompter::Shown &s : m_prompter.shown())
            m_measured.notes << u"message: "_qs + s.title + u": "_qs + s.text.left(120);
        return m_measured;
    }

private:
    void begin() { m_measured.start = monotonicNs(); }
    void end() { m_measured.end = monotonicNs(); }
    void note(const QString &text) { m_measured.notes << text; }
    void require(bool condition, const char *what)
    {
        if (!condition)
            throw std::runtime_error(what);
    }
    qint64 fileSize(const QString &name) const { return QFileInfo(m_state.pathOf(name)).size(); }
    static void settle()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    // From the process's spawn to the main menu on screen, the processor
    // asked for waiting payments on the way.
    void startup()
    {
        m_state.settingsFile = m_state.pathOf(BenchSite::SettingsName);
        m_state.clientFactory = [] { return std::make_unique<HttpProcessorClient>(120); };
        m_state.endProgram = [this] { m_state.endRequested = true; };
        MainMenuWindow menu(m_state);
        const bool shown = menu.load();
        menu.show();
        settle();
        end();
        require(shown && !m_state.endRequested && !m_state.login.missing, "start-up ended");
        note(u"result code %1"_qs.arg(m_state.lastResult.code));
    }

    void setupFile()
    {
        begin();
        buildSetupFile(m_state);
        end();
        require(fileSize(m_state.files.setupUpload) > 0, "no setup file");
        note(u"setup file %1 bytes"_qs.arg(fileSize(m_state.files.setupUpload)));
    }

    void tenantUpload()
    {
        begin();
        buildTenantUpload(m_state);
        end();
        require(fileSize(m_state.files.tenantUpload) > 0, "no tenant upload");
        note(u"tenant upload %1 bytes"_qs.arg(fileSize(m_state.files.tenantUpload)));
    }

    void ownerFile()
    {
        begin();
        buildOwnerFile(m_state);
        end();
        require(fileSize(m_state.files.ownerUpload) > 0, "no owner file");
        note(u"owner file %1 bytes"_qs.arg(fileSize(m_state.files.ownerUpload)));
    }

    void vendorFile()
    {
        begin();
        buildVendorFile(m_state);
        end();
        require(fileSize(m_state.files.vendorUpload) > 0, "no vendor file");
        note(u"vendor file %1 bytes"_qs.arg(fileSize(m_state.files.vendorUpload)));
    }

    void uploadAll()
    {
        begin();
        const bool ran = ::uploadAll(m_state);
        end();
        require(ran && m_state.lastResult.code == 200, "upload all failed");
        note(u"result code %1"_qs.arg(m_state.lastResult.code));
    }

    void reviewLoad()
    {
        begin();
        RentReviewDialog screen(m_state, nullptr);
        screen.show();
        settle();
        end();
        require(screen.rowCount() > 0, "no payments on the review screen");
        note(u"%1 payments"_qs.arg(screen.rowCount()));
    }

    PostingChoices postingChoices() const
    {
        PostingChoices choices;
        choices.postMgmtFees = true;
        choices.createDeposit = true;
        choices.depositNumber = u"9001"_qs;
        return choices;
    }

    void posting()
    {
        RentReviewDialog screen(m_state, nullptr);
        const RentPayments rows = screen.model().rows();
        require(!rows.empty(), "no payments");
        begin();
        const bool posted = UpdateLedgers::run(m_state, rows, postingChoices());
        end();
        require(posted, "posting stopped");
        note(u"%1 payments posted"_qs.arg(rows.size()));
    }

    // The posting's writes without anything else: every value worked out
    // beforehand, then the same rows inserted and the same balances changed,
    // each by a prepared statement, in one transaction.
    void writeLoop()
    {
        RentReviewDialog screen(m_state, nullptr);
        const RentPayments rows = screen.model().rows();
        require(!rows.empty(), "no payments");
        const AccountSetting rent = PostPayments::rentIncome(m_state.account);
        const AccountSetting late = PostPayments::lateFee(m_state.account);
        const AccountSetting feeSetting = PostPayments::managementFee(m_state.account);

        struct Write
        {
            QVariant account, tenant, owner, property, unit, check;
            QString date, status;
            double amount = 0;
            double fee = 0; // 0: no fee line
            bool unitToo = false;
        };
        std::vector<Write> writes;
        writes.reserve(rows.size());
        double total = 0;
        {
            RentLedger ledger(m_state.db());
            for (const RentPayment &row : rows) {
                const AccountSetting &setting = row.isLateFee() ? late : rent;
                Write w;
                w.account = RentPayment::longValue(setting.accountId);
                w.tenant = RentPayment::longValue(row.tenantId());
                w.owner = RentPayment::longValue(row.ownerId());
                w.property = RentPayment::longValue(row.propertyId());
                w.unit = RentPayment::longValue(row.unitId());
                w.check = row.checkValue();
                w.date = row.isoDate();
                w.status = setting.postingCode;
                w.amount = row.amount.value_or(Currency()).abs().toDatabaseValue();
                w.unitToo = setting.postingCode == u"B"_qs;
                if (row.isRent()) {
                    const auto owner = ledger.ownerMgmtFee(RentPayment::key(row.ownerId()));
                    if (owner && !owner->trimmed().isEmpty()) {
                        const auto fee = PostPayments::managementFeeFor(
                            *owner, row.amount.value_or(Currency()));
                        if (fee)
                            w.fee = fee->toDatabaseValue();
                    }
                }
                total += w.amount;
                writes.push_back(w);
            }
        }
        const QVariant null;
        const QString today = QDate::currentDate().toString(Qt::ISODate);
        HostDb &db = m_state.db();

        begin();
        HostDb::Transaction tx(db);
        QSqlQuery transaction = db.prepare(
            u"INSERT INTO Transactions (TransAccountID, TransPostToID, TransAmount, TransDate,"
            " TransCheckNumber, TransRemark, TransType, TransStatus, TransTax, TransOID, TransPID,"
            " TransUID, TransTID) VALUES (?, ?, ?, ?, ?, ?, ?, ?, 'N', ?, ?, ?, ?)"_qs);
        QSqlQuery unit
            = db.prepare(u"UPDATE Units SET UCurrBal = UCurrBal + ? WHERE UTenantID = ?"_qs);
        QSqlQuery tenant
            = db.prepare(u"UPDATE Tenants SET TCurrBal = TCurrBal + ? WHERE TenantID = ?"_qs);
        QSqlQuery deposit = db.prepare(
            u"INSERT INTO CheckDepPrinted (CkPayee, CkAccountID, CkAmount, CkDate, CkInvoice,"
            " CkRemark, CkStatus, CkVendorID, CkPostTo, CkNumber, CkType, CkSplit, CkPostToText)"
            " VALUES ('DEPOSIT', 0, ?, ?, '', 'REMITRA DEPOSIT', 'P', -1, NULL, 9001, 'D', 'Y',"
            " 'Y')"_qs);
        QSqlQuery split = db.prepare(
            u"INSERT INTO SplitPrintedChecks (CkNumber, CkCheckNumber, CkAmount, CkAccountID,"
            " CkPostToID, CkRemark, CkStatus, CkType, CkPostTo)"
            " VALUES (?, ?, ?, ?, ?, NULL, 'P', 'D', ?)"_qs);
        auto addTransaction
            = [&](const Write &w, const QVariant &account, double amount, const QVariant &check,
                  const QString &type, const QString &status) {
                  transaction.bindValue(0, account);
                  transaction.bindValue(1, w.tenant);
                  transaction.bindValue(2, amount);
                  transaction.bindValue(3, w.date);
                  transaction.bindValue(4, check);
                  transaction.bindValue(5, null);
                  transaction.bindValue(6, type);
                  transaction.bindValue(7, status);
                  transaction.bindValue(8, w.owner);
                  transaction.bindValue(9, w.property);
                  transaction.bindValue(10, w.unit);
                  transaction.bindValue(11, w.tenant);
                  HostDb::exec(transaction, "write loop");
              };
        auto addToBalance = [](QSqlQuery &q, double amount, const QVariant &id) {
            q.bindValue(0, amount);
            q.bindValue(1, id);
            HostDb::exec(q, "write loop");
        };
        const QVariant feeAccount = RentPayment::longValue(feeSetting.accountId);
        for (const Write &w : writes) {
            addTransaction(w, w.account, w.amount, w.check, u"I"_qs, w.status);
            if (w.unitToo)
                addToBalance(unit, w.amount, w.tenant);
            addToBalance(tenant, w.amount, w.tenant);
            if (w.fee != 0) {
                addTransaction(w, feeAccount, w.fee, null, u"E"_qs, u"U"_qs);
                addToBalance(unit, w.fee, w.tenant);
            }
        }
        deposit.bindValue(0, total);
        deposit.bindValue(1, today);
        HostDb::exec(deposit, "write loop");
        const qint64 depositId = deposit.lastInsertId().toLongLong();
        const QVariant rentAccount = RentPayment::longValue(rent.accountId);
        for (std::size_t i = 0; i < writes.size(); ++i) {
            split.bindValue(0, depositId);
            split.bindValue(1, writes[i].check);
            split.bindValue(2, writes[i].amount);
            split.bindValue(3, rentAccount);
            split.bindValue(4, writes[i].tenant);
            split.bindValue(5, rows[i].isLateFee() ? late.postingCode : rent.postingCode);
            HostDb::exec(split, "write loop");
        }
        tx.commit();
        end();
        note(u"%1 payments written"_qs.arg(writes.size()));
    }

    void enrolmentOpen()
    {
        begin();
        TenantEnrolmentDialog screen(m_state, nullptr);
        screen.show();
        settle();
        end();
        screen.hide();
    }

    // File, call, response file, matching, posting and clean-up of every
    // listed check, against a processor that accepts them all.
    void distribution()
    {
        const QList<PaymentRow> rows = DisburseList::load(m_state.db(), u"Entry Order"_qs);
        require(!rows.isEmpty(), "no entered checks listed");
        QString response;
        for (const PaymentRow &r : rows)
            response += (r.isOwner() ? u"O%1,B%2,0,\n"_qs : u"V%1,B%2,0,\n"_qs)
                            .arg(r.payeeId())
                            .arg(r.CkID);
        auto script = std::make_shared<ScriptedProcessorClient::Script>();
        script->replies.append({ true, 200, response + u"\r\n"_qs });
        m_state.clientFactory = ScriptedProcessorClient::factory(script);
        bool stopRejections = false;
        begin();
        const bool done = DistributionRun(m_state, stopRejections).makePaymentsNow(rows, {});
        end();
        QSqlQuery left = m_state.db().prepare(u"SELECT count(*) FROM CheckEntered"_qs);
        HostDb::exec(left, "counting entered checks");
        left.next();
        require(done, "distribution run did not finish");
        note(u"%1 checks paid, %2 entered checks left"_qs.arg(rows.size())
                 .arg(left.value(0).toInt()));
    }

    Options m_options;
    ScriptedPrompter m_prompter;
    ProgramState m_state;
    Measured m_measured;
};

} // namespace

int runChild(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    Options options;
    const QStringList args = QCoreApplication::arguments();
    for (int i = 1; i + 1 < args.size(); i += 2) {
        const QString &key = args[i];
        const QString &value = args[i + 1];
        if (key == u"--job"_qs)
            options.job = value;
        else if (key == u"--folder"_qs)
            options.folder = value;
        else if (key == u"--result"_qs)
            options.result = value;
        else if (key == u"--url"_qs)
            options.url = value;
        else if (key == u"--user"_qs)
            options.user = value;
        else if (key == u"--password"_qs)
            options.password = value;
    }
    Measured measured;
    int code = 0;
    try {
        Child child(options);
        measured = child.run();
    } catch (const RuntimeError &error) {
        measured.notes
            << u"failed: run-time error %1: %2"_qs.arg(error.number()).arg(error.description());
        code = 1;
    } catch (const std::exception &error) {
        measured.notes << u"failed: "_qs + QString::fromLocal8Bit(error.what());
        code = 1;
    }
    QFile out(options.result);
    if (out.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        // The child's own high-water mark: it starts afresh at exec, while
        // the kernel's ru_maxrss of a spawned child also counts the memory
        // the bench itself held when it spawned it.
        out.write(QByteArray::number(measured.start) + ' ' + QByteArray::number(measured.end) + ' '
            + QByteArray::number(ChildRun::ownPeakKb()) + '\n');
        for (const QString &n : std::as_const(measured.notes))
            out.write(n.toUtf8() + '\n');
    }
    return code;
}

} // namespace BenchJobs
