#pragma once

#include "enrolment/EnrolmentListWidget.h"

#include <QDialog>

class ProgramState;
class QHBoxLayout;
class QPushButton;

// What the three enrolment screens share: the list of one roster with its
// Remitra flags, an Exit button (and any buttons the screen adds to its
// left), centring on first show, and, when the screen closes after a flag
// was typed (or with a change that an earlier close could not send), the
// roster's upload (EnrolmentUpload). Modal.
class EnrolmentDialog : public QDialog
{
    Q_OBJECT

public:
    EnrolmentDialog(ProgramState &state, EnrolmentListWidget::Roster roster,
        const EnrolmentTexts &texts, QWidget *parent);

public slots:
    void exitScreen();
    void done(int result) override;

protected:
    // Adds a button to the left of the row at the bottom.
    QPushButton *addButton(const QString &caption, const QString &name);
    void showEvent(QShowEvent *event) override;

    ProgramState &m_state;
    EnrolmentListWidget *m_list;

private:
    void unload();
    static bool keptForLater(const class RuntimeError &error);

    EnrolmentListWidget::Roster m_roster;
    QHBoxLayout *m_buttons;
    QPushButton *m_cmdExit;
    bool m_unloaded = false;
    bool m_centred = false;
};
