#pragma once

#include "rent/RentPayment.h"

#include <QAbstractTableModel>

// The review grid over the payment rows: the twelve columns of the payment
// file's rows, one record selector (row header) per row. Rows that look
// already posted answer PostedRole with true and carry their note as tooltip.
class PaymentTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        OID,
        PID,
        UID,
        TID,
        Address,
        TenantName,
        Amount,
        Date,
        CheckNumber,
        DepositDate,
        Method,
        TransType,
        ColumnCount
    };
    static constexpr int PostedRole = Qt::UserRole + 1;

    explicit PaymentTableModel(QObject *parent = nullptr);

    void setRows(RentPayments rows);
    const RentPayments &rows() const { return m_rows; }
    RentPayments &rows() { return m_rows; }
    void clear();
    // Refreshes the cells after rows() was changed in place.
    void refresh();

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    bool removeRows(int row, int count, const QModelIndex &parent = {}) override;

    // The cell text as the grid shows it (the amount in currency form).
    static QString cellText(const RentPayment &row, int column);
    static QString caption(int column);

private:
    RentPayments m_rows;
};
