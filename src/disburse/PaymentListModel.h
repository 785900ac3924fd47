#pragma once

#include "disburse/PaymentRow.h"

#include <QAbstractTableModel>
#include <QList>

// The rows of the payment screen's grid: payee, date, remark, invoice,
// amount and the payee id (IDField).
class PaymentListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Payee, Date, Remark, Invoice, Amount, IDField, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    void setRows(QList<PaymentRow> rows);
    const QList<PaymentRow> &rows() const { return m_rows; }
    const PaymentRow &row(int r) const { return m_rows[r]; }
    // Row number of a check and payee, or -1.
    int find(const PaymentRow::Key &key) const { return m_index.value(key, -1); }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QList<PaymentRow> m_rows;
    QHash<PaymentRow::Key, int> m_index;
};
