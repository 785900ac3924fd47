#pragma once

#include "hostdb/EnrolmentQueries.h"

#include <QString>
#include <QWidget>

class EnrolmentFlagDelegate;
class EnrolmentModel;
class ProgramState;
class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QTableView;
class QTimer;

// What differs between the tenant, owner and vendor screens.
struct EnrolmentTexts
{
    QString displayEnrolled; // optDisplay entry 0
    QString displayAll; // optDisplay entry 1
    QString askTitle; // select-all confirmation title
    QString askActivate; // ... when checked
    QString askRemove; // ... when unchecked
    QString editNotice; // refused flag (title "Remitra Rent")
    QString gridName; // accessible name of the grid
    QString countLabel; // row count, %1 = rows
};

// The shared body of the enrolment screens: the option lists optDisplay and
// optSortBy, the search box txtSearch, the grid gridACH over the roster with
// its editable flag column, the row count labCount and chkSelectAll.
// Database failures are reported and end the program, as everywhere.
class EnrolmentListWidget : public QWidget
{
    Q_OBJECT

public:
    using Roster = EnrolmentQueries::Roster;

    EnrolmentListWidget(
        ProgramState &state, Roster roster, EnrolmentTexts texts, QWidget *parent = nullptr);

    // Sets the option lists to their opening entries; the change caused by
    // the first of them is ignored (the loading flag), the second lists.
    void load();
    // True once a flag was typed into a cell and taken.
    bool changed() const { return m_changed; }
    // Takes a flag still being typed.
    void commitPendingEdit();
    EnrolmentModel *model() const { return m_model; }

public slots:
    void gridSql();
    void chooseDisplay();
    void sortList();
    void selectAllRows();
    void search();

private:
    void checkTypedFlag(int row, const QString &typed);
    void saveFlag();
    EnrolmentQueries::Listing currentListing() const;
    void arrangeColumns();

    ProgramState &m_state;
    Roster m_roster;
    EnrolmentTexts m_texts;
    EnrolmentModel *m_model;
    EnrolmentFlagDelegate *m_delegate;
    QListWidget *m_optDisplay;
    QListWidget *m_optSortBy;
    QLineEdit *m_txtSearch;
    QTableView *m_gridACH;
    QLabel *m_labCount;
    QCheckBox *m_chkSelectAll;
    QTimer *m_searchDelay;
    bool m_loading = false;
    bool m_changed = false;
    bool m_columnsSized = false;
};
