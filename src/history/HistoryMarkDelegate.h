#pragma once

#include <QStyledItemDelegate>

// Paints the History grids' marked rows (HistoryTableModel::MarkedRole: a
// reversed posting, a payment left out) in the tint the review screen gives
// payments already posted.
class HistoryMarkDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};
