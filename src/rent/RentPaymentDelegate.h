#pragma once

#include <QStyledItemDelegate>

// Paints the rows of the review grid that look already posted on a tinted
// background (PaymentTableModel::PostedRole), so they stand out before the
// user posts them a second time.
class RentPaymentDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};
