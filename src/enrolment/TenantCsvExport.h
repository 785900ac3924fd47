#pragma once

#include <QString>

class ProgramState;

// The mail-merge file of enrolled tenants.
namespace TenantCsvExport {
inline QString fileName()
{
    return u"RemitraExport.csv"_qs;
}
} // namespace TenantCsvExport

// Writes "RemitraExport.csv" in the program's folder: a header line and one
// unquoted line per enrolled tenant (a bare "VACANT" placeholder is left
// out), and tells the user where it is; with no tenant to write the file is
// removed and the user told so. Refuses with the login notice while
// credentials are missing.
void exportTenantsCsv(ProgramState &state);
