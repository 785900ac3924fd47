#pragma once

#include "hostdb/EnrolmentQueries.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QList>
#include <QStringList>

class HostDb;

// The rows of an enrolment screen. The listing's row keys are read at once
// (a number per row); the values of a row are read when the view first asks
// for it, a block of rows at a time, so a list of any length opens quickly
// and only what is looked at is held. The flag column is editable: a new
// flag is written straight to the host table and the row shows it at once.
class EnrolmentModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    using Roster = EnrolmentQueries::Roster;

    EnrolmentModel(HostDb &db, Roster roster, QObject *parent = nullptr);

    // Reads the listing again from the database (the rows shown, their
    // order and count). Throws RuntimeError on a database failure.
    void reload(const EnrolmentQueries::Listing &listing);
    const EnrolmentQueries::Listing &listing() const { return m_listing; }

    Roster roster() const { return m_roster; }
    int flagColumn() const { return EnrolmentQueries::flagColumn(m_roster); }

    // Column captions; names() are the fixed column names ("OID", "PID",
    // "TID" for the key columns).
    void setCaption(int column, const QString &caption);
    QStringList captions() const { return m_captions; }
    QStringList names() const { return m_names; }

    // The stored value of a cell (Null as a null QVariant).
    QVariant value(int row, int column) const;
    // Writes the flag of the row's tenant, owner or vendor. Throws
    // RuntimeError on a database failure.
    void setFlag(int row, const QString &flag);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    // Rows read per block.
    static constexpr int BlockRows = 128;
    // Blocks kept; reading past this drops the others.
    static constexpr int KeptBlocks = 64;

private:
    const QList<QVariant> *rowValues(int row) const;

    HostDb &m_db;
    Roster m_roster;
    EnrolmentQueries::Listing m_listing;
    QList<qint64> m_keys;
    QStringList m_names;
    QStringList m_captions;
    mutable QHash<int, QList<QList<QVariant>>> m_blocks;
};
