#include "history/HistoryTableModel.h"

void HistoryTableModel::setTable(TextTable table)
{
    beginResetModel();
    m_table = std::move(table);
    endResetModel();
}

int HistoryTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_table.rows.size());
}

int HistoryTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_table.columns.size());
}

QVariant HistoryTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_table.rows.size())
        return {};
    const QStringList &row = m_table.rows[index.row()];
    const QString note = m_table.notes.value(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return row.value(index.column());
    case Qt::ToolTipRole:
        return note.isEmpty() ? QVariant() : QVariant(note);
    case MarkedRole:
        return !note.isEmpty();
    default:
        return {};
    }
}

QVariant HistoryTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return m_table.columns.value(section);
    return QAbstractTableModel::headerData(section, orientation, role);
}
