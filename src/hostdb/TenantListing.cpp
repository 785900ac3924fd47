#include "hostdb/TenantListing.h"

#include "hostdb/HostDb.h"

#include <QHash>

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <vector>

namespace TenantListing {

namespace {

enum Table { OwnersTable, PropertiesTable, TenantsTable, UnitsTable, TableCount };

const char *const kTableNames[TableCount] = { "Owners", "Properties", "Tenants", "Units" };

struct SortColumn
{
    Table table;
    const char *field;
};

// The columns of each sort, as EnrolmentQueries orders them (the unit's row
// comes last in both).
std::optional<QList<SortColumn>> sortColumns(const QString &sortText)
{
    if (sortText == u"Owner Name"_qs)
        return QList<SortColumn> { { OwnersTable, "OLastName1" }, { OwnersTable, "OFirstName1" },
            { PropertiesTable, "PropName" }, { UnitsTable, "UAddress" } };
    if (sortText == u"Property/Building Name"_qs)
        return QList<SortColumn> { { PropertiesTable, "PropName" }, { UnitsTable, "UAddress" } };
    if (sortText == u"Rental Unit Address"_qs)
        return QList<SortColumn> { { UnitsTable, "UAddress" }, { UnitsTable, "UNumber" } };
    if (sortText == u"Tenant Name"_qs)
        return QList<SortColumn> { { TenantsTable, "TLastName1" },
            { TenantsTable, "TFirstName1" } };
    if (sortText == u"Remitra"_qs)
        return QList<SortColumn> { { TenantsTable, "TACH" }, { TenantsTable, "TLastName1" },
            { TenantsTable, "TFirstName1" } };
    return std::nullopt;
}

// A text value held in a table's arena; length -1 is Null.
struct Text
{
    qint32 offset = 0;
    qint32 length = -1;
};

// SQLite's BINARY order: the bytes, then the length. Its NOCASE order is
// the same over the texts with the ASCII capitals made small (and nothing
// else), which is how the texts of a NOCASE column are kept here; a text
// holding a zero byte, where NOCASE stops comparing, is left to the engine.
int compareBytes(const char *a, int na, const char *b, int nb)
{
    const int r = std::memcmp(a, b, std::size_t(std::min(na, nb)));
    return r != 0 ? r : na - nb;
}

// The rows of one table: a join id (and the id it joins on), the sorted
// and filtered texts, chained by id.
struct TableRows
{
    std::vector<qint64> ids; // the id other tables join to (unused for units)
    std::vector<bool> idNull; // a Null id: nothing joins to the row
    std::vector<qint64> links; // the id this table joins on
    std::vector<bool> linked; // false where the link is Null: it joins nothing
    std::vector<qint64> rowids; // units only
    QList<std::vector<Text>> texts; // per read text column
    QList<bool> nocase; // per read text column
    QByteArray arena;
    QHash<qint64, int> head; // id -> first row with it
    std::vector<int> next; // row -> next row with the same id, -1 at the end

    int size() const { return int(links.size()); }
    const char *at(const Text &t) const { return arena.constData() + t.offset; }
    int compare(int column, int a, int b) const
    {
        const Text &x = texts[column][std::size_t(a)];
        const Text &y = texts[column][std::size_t(b)];
        if (x.length < 0 || y.length < 0)
            return (x.length < 0 ? 0 : 1) - (y.length < 0 ? 0 : 1); // Null first
        return compareBytes(at(x), x.length, at(y), y.length);
    }
    void chain()
    {
        next.assign(ids.size(), -1);
        // Ids are most often numbered from 1 with few gaps: then a row's
        // chain is found by its id at once, else through a hash.
        qint64 highest = -1;
        bool dense = true;
        for (std::size_t i = 0; i < ids.size() && dense; ++i) {
            if (idNull[i])
                continue;
            dense = ids[i] >= 0 && ids[i] <= 4 * qint64(ids.size()) + 1024;
            highest = std::max(highest, ids[i]);
        }
        if (dense)
            byId.assign(std::size_t(highest + 1), -1);
        else
            head.reserve(qsizetype(ids.size()));
        // Walked backwards, each row goes in front of its id's chain.
        for (int i = int(ids.size()) - 1; i >= 0; --i) {
            if (idNull[std::size_t(i)])
                continue;
            const qint64 id = ids[std::size_t(i)];
            int *first = nullptr;
            if (dense) {
                first = &byId[std::size_t(id)];
            } else {
                auto it = head.find(id);
                if (it == head.end())
                    it = head.insert(id, -1);
                first = &it.value();
            }
            next[std::size_t(i)] = *first;
            *first = i;
        }
        m_dense = dense;
    }
    int first(qint64 id) const
    {
        if (m_dense)
            return id >= 0 && id < qint64(byId.size()) ? byId[std::size_t(id)] : -1;
        return head.value(id, -1);
    }
    std::vector<int> byId; // id -> first row with it, where the ids are dense
    bool m_dense = false;
};

class Reader
{
public:
    explicit Reader(sqlite3 *handle)
        : m_handle(handle)
    {
    }

    // The declared collation of a text column; false when it is neither
    // BINARY nor NOCASE.
    bool collation(Table table, const char *field, bool &nocase) const
    {
        const char *type = nullptr;
        const char *collation = nullptr;
        if (sqlite3_table_column_metadata(m_handle, "main", kTableNames[table], field, &type,
                &collation, nullptr, nullptr, nullptr)
            != SQLITE_OK)
            return false;
        nocase = sqlite3_stricmp(collation, "NOCASE") == 0;
        return nocase || sqlite3_stricmp(collation, "BINARY") == 0;
    }

    // Reads `sql` (rowid, id, link, then the text columns, as `layout` says)
    // into rows. False on anything the listing cannot take as the join and
    // the sort would.
    bool read(const QByteArray &sql, bool withRowid, bool withId, bool withLink, int textColumns,
        TableRows &rows) const
    {
        sqlite3_stmt *statement = nullptr;
        if (sqlite3_prepare_v2(m_handle, sql.constData(), int(sql.size()), &statement, nullptr)
            != SQLITE_OK)
            return false;
        for (int c = 0; c < textColumns; ++c)
            rows.texts.append(std::vector<Text>());
        bool ok = true;
        int rc = SQLITE_OK;
        while (ok && (rc = sqlite3_step(statement)) == SQLITE_ROW) {
            int column = 0;
            if (withRowid)
                rows.rowids.push_back(sqlite3_column_int64(statement, column++));
            if (withId) {
                qint64 id = 0;
                rows.idNull.push_back(sqlite3_column_type(statement, column) == SQLITE_NULL);
                ok = integer(statement, column++, id);
                rows.ids.push_back(id);
            }
            bool linked = true;
            qint64 link = 0;
            if (withLink) {
                const int type = sqlite3_column_type(statement, column);
                linked = type != SQLITE_NULL;
                ok = ok && integer(statement, column++, link);
            }
            rows.links.push_back(link);
            rows.linked.push_back(linked);
            for (int c = 0; ok && c < textColumns; ++c, ++column) {
                Text text;
                const int type = sqlite3_column_type(statement, column);
                if (type == SQLITE_TEXT) {
                    const auto *bytes
                        = reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
                    text.length = sqlite3_column_bytes(statement, column);
                    text.offset = qint32(rows.arena.size());
                    rows.arena.append(bytes, text.length);
                    ok = rows.arena.size() < (qint64(1) << 31)
                        && !std::memchr(bytes, 0, std::size_t(text.length));
                    if (rows.nocase[c]) {
                        char *folded = rows.arena.data() + text.offset;
                        for (int i = 0; i < text.length; ++i) {
                            if (folded[i] >= 'A' && folded[i] <= 'Z')
                                folded[i] = char(folded[i] + 32);
                        }
                    }
                } else if (type != SQLITE_NULL) {
                    ok = false; // numbers sort before texts: left to the engine
                }
                rows.texts[c].push_back(text);
            }
        }
        const bool done = ok && rc == SQLITE_DONE;
        sqlite3_finalize(statement);
        return done;
    }

private:
    // A whole-number id; a Null gives 0 and true (it joins nothing), any
    // other kind of value false.
    static bool integer(sqlite3_stmt *statement, int column, qint64 &value)
    {
        switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER:
            value = sqlite3_column_int64(statement, column);
            return true;
        case SQLITE_NULL:
            value = 0;
            return true;
        default:
            return false;
        }
    }

    sqlite3 *m_handle;
};

// One read snapshot over the four scans, unless the connection is inside a
// transaction already (which then is the snapshot).
class Snapshot
{
public:
    explicit Snapshot(sqlite3 *handle)
        : m_handle(handle)
        , m_own(sqlite3_get_autocommit(handle) != 0)
    {
        if (m_own)
            m_ok = sqlite3_exec(handle, "BEGIN DEFERRED", nullptr, nullptr, nullptr) == SQLITE_OK;
    }
    ~Snapshot()
    {
        if (m_own && m_ok)
            sqlite3_exec(m_handle, "COMMIT", nullptr, nullptr, nullptr);
    }
    bool ok() const { return m_ok; }
    Snapshot(const Snapshot &) = delete;
    Snapshot &operator=(const Snapshot &) = delete;

private:
    sqlite3 *m_handle;
    bool m_own;
    bool m_ok = true;
};

bool isUtf8(sqlite3 *handle)
{
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v2(handle, "PRAGMA encoding", -1, &statement, nullptr) != SQLITE_OK)
        return false;
    bool utf8 = false;
    if (sqlite3_step(statement) == SQLITE_ROW)
        utf8 = sqlite3_stricmp(
                   reinterpret_cast<const char *>(sqlite3_column_text(statement, 0)), "UTF-8")
            == 0;
    sqlite3_finalize(statement);
    return utf8;
}

// A joined row: the unit's rowid and the row of each table.
struct Joined
{
    int first; // rank of the first sort column (0 when it is the unit's)
    int row[TableCount];
    qint64 unitRowid;
};

} // namespace

std::optional<QList<qint64>> keys(const HostDb &db, const EnrolmentQueries::Listing &listing)
{
    sqlite3 *handle = db.sqliteHandle();
    if (!handle || !listing.search.trimmed().isEmpty())
        return std::nullopt;
    const std::optional<QList<SortColumn>> sort = sortColumns(listing.sortText);
    if (!sort)
        return std::nullopt;
    db.require(HostFeature::TenantEnrolment);
    if (!isUtf8(handle))
        return std::nullopt;

    // The text columns each table is read with: its sort columns, and the
    // tenant's flag when only the enrolled are listed.
    QList<QByteArray> fields[TableCount];
    QList<QPair<Table, int>> order; // sort column -> table and column read
    const Reader reader(handle);
    for (const SortColumn &column : *sort) {
        order.append({ column.table, int(fields[column.table].size()) });
        fields[column.table].append(column.field);
    }
    int flagColumn = -1;
    if (listing.enrolledOnly) {
        flagColumn = int(fields[TenantsTable].size());
        fields[TenantsTable].append("TACH");
    }
    TableRows rows[TableCount];
    for (int t = 0; t < TableCount; ++t) {
        for (const QByteArray &field : fields[t]) {
            bool nocase = false;
            if (!reader.collation(Table(t), field.constData(), nocase))
                return std::nullopt;
            rows[t].nocase.append(nocase);
        }
    }
    auto select = [&](Table t, const char *keyColumns) {
        QByteArray sql = QByteArray("SELECT ") + keyColumns;
        for (const QByteArray &field : fields[t])
            sql += ", " + field;
        return sql + " FROM " + kTableNames[t];
    };

    {
        const Snapshot snapshot(handle);
        if (!snapshot.ok()
            || !reader.read(select(OwnersTable, "OwnerID"), false, true, false,
                int(fields[OwnersTable].size()), rows[OwnersTable])
            || !reader.read(select(PropertiesTable, "PropID, POwnerID"), false, true, true,
                int(fields[PropertiesTable].size()), rows[PropertiesTable])
            || !reader.read(select(TenantsTable, "TenantID, TPropID"), false, true, true,
                int(fields[TenantsTable].size()), rows[TenantsTable])
            || !reader.read(select(UnitsTable, "rowid, UTenantID"), true, false, true,
                int(fields[UnitsTable].size()), rows[UnitsTable]))
            return std::nullopt;
    }
    for (Table t : { OwnersTable, PropertiesTable, TenantsTable })
        rows[t].chain();

    // Each sorted column of the smaller tables becomes a rank (equal texts,
    // equal ranks), so that the sort of the joined rows compares numbers.
    QList<std::vector<int>> ranks;
    for (const auto &sorted : std::as_const(order)) {
        const int column = sorted.second;
        std::vector<int> rank;
        if (sorted.first != UnitsTable) {
            const TableRows &source = rows[sorted.first];
            std::vector<int> byValue(std::size_t(source.size()));
            std::iota(byValue.begin(), byValue.end(), 0);
            std::sort(byValue.begin(), byValue.end(),
                [&](int a, int b) { return source.compare(column, a, b) < 0; });
            rank.resize(byValue.size());
            int current = 0;
            for (std::size_t i = 0; i < byValue.size(); ++i) {
                if (i > 0 && source.compare(column, byValue[i - 1], byValue[i]) != 0)
                    ++current;
                rank[std::size_t(byValue[i])] = current;
            }
        }
        ranks.append(std::move(rank));
    }
    // The join, as Owners ⋈ Properties ⋈ Tenants ⋈ Units on their ids (a
    // Null on either side joins nothing).
    const TableRows &units = rows[UnitsTable];
    const TableRows &tenants = rows[TenantsTable];
    const TableRows &properties = rows[PropertiesTable];
    const TableRows &owners = rows[OwnersTable];
    auto enrolled = [&](int tenant) {
        // TACH LIKE 'Y%': the first character is a Y of either case.
        const Text &flag = tenants.texts[flagColumn][std::size_t(tenant)];
        return flag.length > 0 && (*tenants.at(flag) | 0x20) == 'y';
    };
    const Table firstTable = order.first().first;
    std::vector<Joined> joined;
    joined.reserve(std::size_t(units.size()));
    for (int u = 0; u < units.size(); ++u) {
        if (!units.linked[std::size_t(u)])
            continue;
        for (int t = tenants.first(units.links[std::size_t(u)]); t >= 0;
             t = tenants.next[std::size_t(t)]) {
            if (!tenants.linked[std::size_t(t)] || (flagColumn >= 0 && !enrolled(t)))
                continue;
            for (int p = properties.first(tenants.links[std::size_t(t)]); p >= 0;
                 p = properties.next[std::size_t(p)]) {
                if (!properties.linked[std::size_t(p)])
                    continue;
                for (int o = owners.first(properties.links[std::size_t(p)]); o >= 0;
                     o = owners.next[std::size_t(o)]) {
                    Joined row { 0, { o, p, t, u }, units.rowids[std::size_t(u)] };
                    if (firstTable != UnitsTable)
                        row.first = ranks[0][std::size_t(row.row[firstTable])];
                    joined.push_back(row);
                }
            }
        }
    }

    std::sort(joined.begin(), joined.end(), [&](const Joined &a, const Joined &b) {
        if (a.first != b.first)
            return a.first < b.first;
        for (qsizetype i = 0; i < order.size(); ++i) {
            const auto &[table, column] = order[i];
            const int ra = a.row[table];
            const int rb = b.row[table];
            const int c = table == UnitsTable
                ? units.compare(column, ra, rb)
                : ranks[i][std::size_t(ra)] - ranks[i][std::size_t(rb)];
            if (c != 0)
                return c < 0;
        }
        return a.unitRowid < b.unitRowid;
    });

    QList<qint64> keys;
    keys.reserve(qsizetype(joined.size()));
    for (const Joined &row : joined)
        keys.append(row.unitRowid);
    return keys;
}

} // namespace TenantListing
