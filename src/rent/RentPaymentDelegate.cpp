#include "rent/RentPaymentDelegate.h"

#include "rent/PaymentTableModel.h"

void RentPaymentDelegate::initStyleOption(
    QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.data(PaymentTableModel::PostedRole).toBool()) {
        // A light amber that keeps dark text readable.
        option->backgroundBrush = QBrush(QColor(255, 236, 179));
        option->palette.setColor(QPalette::Text, QColor(Qt::black));
    }
}
