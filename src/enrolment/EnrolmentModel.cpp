#include "enrolment/EnrolmentModel.h"

#include "core/RuntimeError.h"

using namespace EnrolmentQueries;

namespace {

QStringList columnNames(Roster roster)
{
    switch (roster) {
    case Roster::Tenants:
        return { u"OID"_qs, u"PID"_qs, u"TID"_qs, u"OLastName1"_qs, u"OFirstName1"_qs,
            u"PropName"_qs, u"UAddress"_qs, u"TLastName1"_qs, u"TFirstName1"_qs, u"UNumber"_qs,
            u"TACH"_qs };
    case Roster::Owners:
        return { u"OID"_qs, u"OLastName1"_qs, u"OFirstName1"_qs, u"OCity"_qs, u"OPhone1"_qs,
            u"OACH"_qs };
    case Roster::Vendors:
        break;
    }
    return { u"VenID"_qs, u"VenName"_qs, u"VenContact"_qs, u"VenCity"_qs, u"VenPhone1"_qs,
        u"VACH"_qs };
}

QStringList initialCaptions(Roster roster)
{
    switch (roster) {
    case Roster::Tenants:
        return { u"OID"_qs, u"PID"_qs, u"TID"_qs, u"OLastName1"_qs, u"OFirstName1"_qs,
            u"PropName"_qs, u"UAddress"_qs, u"TLastName1"_qs, u"TFirstName1"_qs, u"Unit No."_qs,
            u"Remitra"_qs };
    case Roster::Owners:
        return { u"OID"_qs, u"Owner Last"_qs, u"Owner First"_qs, u"City"_qs, u"Phone"_qs,
            u"Remitra"_qs };
    case Roster::Vendors:
        break;
    }
    return { u"VID"_qs, u"Vendor Name"_qs, u"Contact"_qs, u"City"_qs, u"Phone"_qs, u"Remitra"_qs };
}

} // namespace

EnrolmentModel::EnrolmentModel(HostDb &db, Roster roster, QObject *parent)
    : QAbstractTableModel(parent)
    , m_db(db)
    , m_roster(roster)
    , m_names(columnNames(roster))
    , m_captions(initialCaptions(roster))
{
}

void EnrolmentModel::reload(const Listing &listing)
{
    QList<qint64> keys = listedKeys(m_db, m_roster, listing);
    beginResetModel();
    m_listing = listing;
    m_keys = std::move(keys);
    m_blocks.clear();
    endResetModel();
}

void EnrolmentModel::setCaption(int column, const QString &caption)
{
    if (column < 0 || column >= m_captions.size() || m_captions[column] == caption)
        return;
    m_captions[column] = caption;
    emit headerDataChanged(Qt::Horizontal, column, column);
}

const QList<QVariant> *EnrolmentModel::rowValues(int row) const
{
    if (row < 0 || row >= m_keys.size())
        return nullptr;
    const int block = row / BlockRows;
    auto it = m_blocks.find(block);
    if (it == m_blocks.end()) {
        if (m_blocks.size() >= KeptBlocks)
            m_blocks.clear();
        const int first = block * BlockRows;
        const QList<qint64> keys = m_keys.mid(first, BlockRows);
        QHash<qint64, QList<QVariant>> found;
        try {
            found = rowsFor(m_db, m_roster, keys);
        } catch (const RuntimeError &error) {
            // Painting cannot stop for this; the block is read again on
            // the next look, and the cells stay blank meanwhile.
            qWarning("enrolment rows could not be read: %s", qPrintable(error.description()));
            return nullptr;
        }
        QList<QList<QVariant>> values;
        values.reserve(keys.size());
        for (qint64 key : keys)
            values.append(
                found.value(key, QList<QVariant>(EnrolmentQueries::columnCount(m_roster))));
        it = m_blocks.insert(block, std::move(values));
    }
    return &it.value()[row % BlockRows];
}

QVariant EnrolmentModel::value(int row, int column) const
{
    const QList<QVariant> *values = rowValues(row);
    if (!values || column < 0 || column >= values->size())
        return {};
    return values->at(column);
}

void EnrolmentModel::setFlag(int row, const QString &flag)
{
    const QVariant id = value(row, idColumn(m_roster));
    if (id.isNull())
        throw RuntimeError::noCurrentRecord();
    EnrolmentQueries::setFlag(m_db, m_roster, id, flag);
    // The same tenant may be listed once per unit.
    const int idCol = idColumn(m_roster);
    const int flagCol = flagColumn();
    for (auto it = m_blocks.begin(); it != m_blocks.end(); ++it) {
        for (int i = 0; i < it.value().size(); ++i) {
            QList<QVariant> &values = it.value()[i];
            if (values[idCol] == id) {
                values[flagCol] = flag;
                const QModelIndex cell = index(it.key() * BlockRows + i, flagCol);
                emit dataChanged(cell, cell);
            }
        }
    }
}

int EnrolmentModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_keys.size());
}

int EnrolmentModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : EnrolmentQueries::columnCount(m_roster);
}

QVariant EnrolmentModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole))
        return {};
    const QVariant v = value(index.row(), index.column());
    if (role == Qt::DisplayRole && m_roster == Roster::Tenants
        && index.column() == idColumn(m_roster) && !v.isNull())
        return QVariant(u"T"_qs + v.toString()); // the tenant's login, as the tenant knows it
    return v;
}

QVariant EnrolmentModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0
        && section < m_captions.size())
        return m_captions[section];
    return QAbstractTableModel::headerData(section, orientation, role);
}

Qt::ItemFlags EnrolmentModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags f = QAbstractTableModel::flags(index);
    if (index.isValid() && index.column() == flagColumn())
        f |= Qt::ItemIsEditable;
    return f;
}
