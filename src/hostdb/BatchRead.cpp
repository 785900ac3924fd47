#include "hostdb/BatchRead.h"

#include "hostdb/HostDb.h"

#include <algorithm>

namespace BatchRead {

void run(const HostDb &db, const QString &sqlPrefix, QList<qint64> keys, const char *operation,
    const std::function<void(const QSqlQuery &)> &row, const QVariantList &leading)
{
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    if (keys.isEmpty())
        return;
    QString marks;
    for (int i = 0; i < BatchKeys; ++i)
        marks += i ? u",?"_qs : u"?"_qs;
    QSqlQuery batch = db.prepare(sqlPrefix + marks + u')');
    for (qsizetype first = 0; first < keys.size(); first += BatchKeys) {
        // The last batch repeats its last key to fill the statement.
        const int lead = int(leading.size());
        for (int i = 0; i < lead; ++i)
            batch.bindValue(i, leading.at(i));
        for (int i = 0; i < BatchKeys; ++i)
            batch.bindValue(lead + i, keys.at(std::min(first + i, keys.size() - 1)));
        HostDb::exec(batch, operation);
        while (batch.next())
            row(batch);
        batch.finish();
    }
}

} // namespace BatchRead
