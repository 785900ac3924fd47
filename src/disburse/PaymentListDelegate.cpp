#include "disburse/PaymentListDelegate.h"

#include "disburse/PaymentListModel.h"

void PaymentListDelegate::initStyleOption(
    QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.data(PaymentListModel::TwiceRole).toBool()) {
        option->backgroundBrush = QBrush(QColor(255, 236, 179));
        option->palette.setColor(QPalette::Text, QColor(Qt::black));
    }
}
