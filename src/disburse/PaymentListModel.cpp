#include "disburse/PaymentListModel.h"

#include "core/VbText.h"

void PaymentListModel::setRows(QList<PaymentRow> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    m_index.clear();
    m_index.reserve(m_rows.size());
    m_byCheck.clear();
    for (int r = 0; r < m_rows.size(); ++r) {
        m_index.insert(m_rows[r].key(), r);
        m_byCheck[m_rows[r].CkID].append(r);
    }
    endResetModel();
}

QString PaymentListModel::payeeText(const PaymentRow &row)
{
    return row.isOwner() ? u"Owner %1: %2 %3"_qs.arg(row.payeeId()).arg(row.NameB, row.NameA)
                         : u"Vendor %1: %2"_qs.arg(row.payeeId()).arg(row.NameA);
}

QStringList PaymentListModel::alsoListedFor(int row) const
{
    QStringList others;
    const QList<int> rows = m_byCheck.value(m_rows[row].CkID);
    if (rows.size() < 2)
        return others;
    for (int r : rows) {
        if (r != row)
            others << payeeText(m_rows[r]).simplified();
    }
    return others;
}

int PaymentListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int PaymentListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PaymentListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const PaymentRow &row = m_rows[index.row()];
    if (role == Qt::TextAlignmentRole) {
        if (index.column() == Amount || index.column() == IDField)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    }
    if (role == Qt::ToolTipRole) {
        // Tells apart the rows of a check payable to two payees of one name.
        QString tip = payeeText(row);
        const QStringList others = alsoListedFor(index.row());
        if (!others.isEmpty())
            tip += u"\nAlso listed for "_qs + others.join(u"; "_qs)
                + u": pay this check once only."_qs;
        return tip;
    }
    if (role == TwiceRole)
        return !alsoListedFor(index.row()).isEmpty();
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)
        return {};
    switch (index.column()) {
    case Payee:
        return row.CkPayee;
    case Date: {
        const QDate date = VbText::parseDate(VbText::text(row.CkDate));
        return date.isValid() ? VbText::shortDate(date) : VbText::text(row.CkDate);
    }
    case Remark:
        return row.CkRemark;
    case Invoice:
        return row.CkInvoice;
    case Amount:
        return row.CkAmount.toDollarsParen();
    case IDField:
        return row.IDField;
    default:
        return {};
    }
}

QVariant PaymentListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case Payee:
        return u"Payee Name"_qs;
    case Date:
        return u"Date"_qs;
    case Remark:
        return u"Remark"_qs;
    case Invoice:
        return u"Invoice"_qs;
    case Amount:
        return u"Amount"_qs;
    case IDField:
        return u"IDField"_qs;
    default:
        return {};
    }
}
