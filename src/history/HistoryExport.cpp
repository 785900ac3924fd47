#include "history/HistoryExport.h"

#include "core/RuntimeError.h"
#include "history/RunText.h"
#include "hostdb/Journal.h"

#include <QSaveFile>

namespace HistoryExport {

namespace {

class CsvFile
{
public:
    explicit CsvFile(const QString &path)
        : m_file(path)
    {
        if (!m_file.open(QIODevice::WriteOnly))
            throw RuntimeError::permissionDenied();
    }
    void line(const QStringList &fields)
    {
        if (m_file.write((csvLine(fields) + u"\r\n"_qs).toUtf8()) < 0)
            throw RuntimeError::deviceIo();
    }
    void table(const TextTable &table)
    {
        line(table.columns);
        for (const QStringList &row : table.rows)
            line(row);
    }
    void commit()
    {
        if (!m_file.commit())
            throw RuntimeError::deviceIo();
    }

private:
    QSaveFile m_file;
};

} // namespace

QString csvLine(const QStringList &fields)
{
    QStringList quoted;
    for (QString field : fields) {
        if (field.contains(u',') || field.contains(u'"') || field.contains(u'\n')
            || field.contains(u'\r')) {
            field.replace(u"\""_qs, u"\"\""_qs);
            field = u'"' + field + u'"';
        }
        quoted << field;
    }
    return quoted.join(u',');
}

void writeTable(const QString &path, const TextTable &table)
{
    CsvFile csv(path);
    csv.table(table);
    csv.commit();
}

void writeRun(const QString &path, Journal &journal, qint64 runId)
{
    const std::optional<Journal::Run> run = journal.run(runId);
    if (!run)
        throw RuntimeError::noCurrentRecord();
    CsvFile csv(path);
    csv.line({ RunText::heading(*run) });
    csv.line({});
    csv.line({ u"Lines"_qs });
    csv.table(RunText::lines(journal.lines(runId)));
    csv.line({});
    csv.line({ u"Rows posted"_qs });
    csv.line(RunText::rows({}).columns);
    journal.forEachRow(runId, [&](const Journal::Row &row) {
        csv.line(RunText::rowCells(row));
        return true;
    });
    csv.line({});
    csv.line({ u"Messages"_qs });
    csv.table(RunText::messages(journal.messages(runId)));
    csv.line({});
    csv.line({ u"Files"_qs });
    csv.table(RunText::files(journal.files(runId)));
    csv.commit();
}

} // namespace HistoryExport
