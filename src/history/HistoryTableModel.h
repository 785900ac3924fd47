#pragma once

#include "history/TextTable.h"

#include <QAbstractTableModel>

// A grid of the History screen over a TextTable. A row with a note answers
// MarkedRole with true and shows the note as its tooltip; other cells show
// their text as the tooltip, so a cut text can be read whole.
class HistoryTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int MarkedRole = Qt::UserRole + 1;

    using QAbstractTableModel::QAbstractTableModel;

    void setTable(TextTable table);
    const TextTable &table() const { return m_table; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    TextTable m_table;
};
