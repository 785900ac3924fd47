#include "history/HistoryMarkDelegate.h"

#include "history/HistoryTableModel.h"

void HistoryMarkDelegate::initStyleOption(
    QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.data(HistoryTableModel::MarkedRole).toBool()) {
        option->backgroundBrush = QBrush(QColor(255, 236, 179));
        option->palette.setColor(QPalette::Text, QColor(Qt::black));
    }
}
