#pragma once

#include <QString>

class HostDb;

// The portfolio every job of a bench run works on: a demo site of the given
// size, the entered checks of a distribution run and a downloaded rent
// payment file. Written once into a master folder; each job gets a fresh
// copy of it (jobs change the database).
namespace BenchSite {

struct Sizes
{
    int tenants = 100000;
    int payments = 10000;
    int checks = 5000;
};

struct Written
{
    int owners = 0;
    int properties = 0;
    int tenants = 0;
    int checks = 0; // entered checks in all (the demo's own included)
    int payments = 0;
    qint64 databaseBytes = 0;
    // The statement of the sqlite3 shell baseline (setupExportSql).
    QString exportSql;
};

// Where the payment file waits in the master folder; copied under the
// download's own name for the jobs that read it.
inline const QString PaymentFileCopy = QStringLiteral("bench-payments.txt");
// The credentials file of the start-up job.
inline const QString SettingsName = QStringLiteral("bench-settings.ini");

// Writes the master folder: host database, IDFILE.DAT, payment file.
Written write(const QString &folder, const Sizes &sizes);

// Copies what a job needs from the master folder into an empty folder.
void copyForJob(const QString &master, const QString &folder, bool withPaymentFile);

// The statement the sqlite3 shell runs as the baseline of the setup file:
// the same join, the same columns and order, the fields joined as the file
// joins them.
QString setupExportSql(const HostDb &db);

} // namespace BenchSite
