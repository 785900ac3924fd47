#pragma once

#include <QStyledItemDelegate>

// Paints the rows of the payment list whose check is listed more than once
// (PaymentListModel::TwiceRole) in the tint the review screen gives payments
// already posted.
class PaymentListDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};
