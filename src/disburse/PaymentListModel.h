#pragma once

#include "hostdb/PaymentRow.h"

#include <QAbstractTableModel>
#include <QList>

// The rows of the payment screen's grid: payee, date, remark, invoice,
// amount and the payee id (IDField). A check whose payee matches two payees
// (two owners, or an owner and a vendor) is listed once for each; such rows
// answer TwiceRole with true and say in their tooltip whom else the check is
// listed for, so that nobody pays the same check twice by accident.
class PaymentListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Payee, Date, Remark, Invoice, Amount, IDField, ColumnCount };
    static constexpr int TwiceRole = Qt::UserRole + 1;

    using QAbstractTableModel::QAbstractTableModel;

    void setRows(QList<PaymentRow> rows);
    const QList<PaymentRow> &rows() const { return m_rows; }
    const PaymentRow &row(int r) const { return m_rows[r]; }
    // Row number of a check and payee, or -1.
    int find(const PaymentRow::Key &key) const { return m_index.value(key, -1); }
    // The payees the row's check is listed for besides the row's own
    // ("Owner 7: Ann Avery"); empty for a check listed once.
    QStringList alsoListedFor(int row) const;
    static QString payeeText(const PaymentRow &row);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QList<PaymentRow> m_rows;
    QHash<PaymentRow::Key, int> m_index;
    QHash<qint64, QList<int>> m_byCheck; // rows of each check, for checks listed twice
};
