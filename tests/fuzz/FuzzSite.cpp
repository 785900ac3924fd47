#include "FuzzSite.h"

#include "hostdb/HostDb.h"

#include <QApplication>
#include <QCoreApplication>
#include <QFile>

#include <cstdlib>

namespace {

int g_argc = 1;
char g_name[] = "remitra-fuzz";
char *g_argv[] = { g_name, nullptr };

} // namespace

FuzzSite &FuzzSite::get(bool widgets)
{
    static FuzzSite *site = new FuzzSite(widgets); // lives as long as the process
    return *site;
}

FuzzSite::FuzzSite(bool widgets)
{
    if (widgets) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        new QApplication(g_argc, g_argv);
    } else {
        new QCoreApplication(g_argc, g_argv);
    }
    if (!m_dir.isValid())
        std::abort();
    m_state = std::make_unique<ProgramState>(m_prompter, m_dir.path());
    m_state->DatabasePath = m_dir.path() + u"/dxdatafl.db"_qs;
    auto db = HostDb::openSqlite(m_state->DatabasePath, true);
    db->createSchema();
    db->execText(u"INSERT INTO Owners (OwnerID, OFirstName1, OLastName1, OMgmtFee, OACH) VALUES "
                 "(1, 'Ann', 'Lee', '8%', 'Y'), (2, 'Carl', 'Diaz', '25', 'Y'), "
                 "(3, NULL, 'Solo', ' ', 'Y')"_qs,
        "fuzz");
    db->execText(u"INSERT INTO Properties (PropID, POwnerID) VALUES (10, 1), (20, 2), (30, 3)"_qs,
        "fuzz");
    db->execText(u"INSERT INTO Tenants (TenantID, TPropID, TFirstName1, TLastName1, TCurrBal) "
                 "VALUES (100, 10, 'Ann', 'Avery', 0), (101, 10, '', 'Baker', 0), "
                 "(200, 20, 'Carl', 'Cole', 0), (300, 30, NULL, 'Dunn', 0)"_qs,
        "fuzz");
    db->execText(u"INSERT INTO Units (UTenantID, UAddress, UCurrBal) VALUES "
                 "(100, 'Unit 100', 0), (101, 'Unit 101', 0), (200, 'Unit 200', 0), "
                 "(300, 'Unit 300', 0)"_qs,
        "fuzz");
    db->execText(u"INSERT INTO CheckEntered (CkID, CkPayee, CkDate, CkAmount, CkRemark, "
                 "CkVendorID, CkType) VALUES (1, 'Ann Lee', '2024-05-01', 1500, 'Draw', 0, 'C'), "
                 "(2, 'Carl Diaz', '2024-05-01', 250.5, 'Draw', 0, 'C'), "
                 "(3, 'Solo', '2024-05-01', 82.4, 'Draw', 0, 'C')"_qs,
        "fuzz");
    m_state->setHostDb(std::move(db));
    m_state->SiteCode = u"DXRM"_qs;
    m_state->SetupUploadName = u"DX_Quenta_Setup_DXRM.txt"_qs;
    m_state->TenantUploadName = u"DX_Quenta_Tenant_DXRM.txt"_qs;
    m_state->PaymentDownloadName = u"DX_Quenta_PaymentFile.txt"_qs;
    m_state->OwnerUploadName = u"DX_Quenta_Owner_DXRM.txt"_qs;
    m_state->VendorUploadName = u"DX_Quenta_Vendor_DXRM.txt"_qs;
    m_state->DisbursementUploadName = u"DX_Quenta_DisbursementPayment.txt"_qs;
    m_state->IdItems = { u"Rent Income;4000;B"_qs, u"Rent received;1"_qs,
        u"Management Fee;6100;U"_qs, u"Mgmt"_qs, u"Late Fee Received;4100;T"_qs,
        u"Late fee;2"_qs };
    // An untrapped error ends the program; here it only ends one input.
    m_state->EndProgram = [] {};
}

void FuzzSite::writeFile(const QString &name, const uint8_t *data, size_t size)
{
    QFile file(m_state->pathOf(name));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        std::abort();
    file.write(reinterpret_cast<const char *>(data), qint64(size));
}
