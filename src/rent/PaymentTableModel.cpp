#include "rent/PaymentTableModel.h"

namespace {
const char *const kCaptions[PaymentTableModel::ColumnCount]
    = { "OID", "PID", "UID", "TID", "Rental Unit Address", "Tenant Name", "Amount", "Date",
          "Check #", "Deposit Date", "Method", "Trans Type" };
} // namespace

PaymentTableModel::PaymentTableModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

void PaymentTableModel::setRows(RentPayments rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

void PaymentTableModel::clear()
{
    setRows({});
}

void PaymentTableModel::refresh()
{
    if (!m_rows.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

int PaymentTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int PaymentTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString PaymentTableModel::caption(int column)
{
    if (column < 0 || column >= ColumnCount)
        return {};
    return QString::fromLatin1(kCaptions[column]);
}

QString PaymentTableModel::cellText(const RentPayment &row, int column)
{
    switch (column) {
    case OID:
        return row.owner;
    case PID:
        return row.property;
    case UID:
        return row.unit;
    case TID:
        return row.tenant;
    case Address:
        return row.address;
    case TenantName:
        return row.tenantName;
    // The grid's "Currency" format: "$1,250.00", negatives "($125.00)";
    // a text that is no amount is shown as it stands.
    case Amount:
        return row.amount ? row.amount->toDollarsParen() : row.amountText;
    case Date:
        return row.date;
    case CheckNumber:
        return row.checkNumber;
    case DepositDate:
        return row.depositDate;
    case Method:
        return row.method;
    case TransType:
        return row.transType;
    default:
        return {};
    }
}

QVariant PaymentTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const RentPayment &row = m_rows[std::size_t(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return cellText(row, index.column());
    case Qt::ToolTipRole:
        return row.postedNote.isEmpty() ? QVariant() : QVariant(row.postedNote);
    case Qt::TextAlignmentRole:
        if (index.column() == Amount)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case PostedRole:
        return !row.postedNote.isEmpty();
    default:
        return {};
    }
}

QVariant PaymentTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    if (orientation == Qt::Horizontal)
        return caption(section);
    return QString::number(section + 1);
}

bool PaymentTableModel::removeRows(int row, int count, const QModelIndex &parent)
{
    if (parent.isValid() || row < 0 || count <= 0 || row + count > rowCount())
        return false;
    beginRemoveRows(parent, row, row + count - 1);
    m_rows.erase(m_rows.begin() + row, m_rows.begin() + row + count);
    endRemoveRows();
    return true;
}
