#include "enrolment/EnrolmentDialog.h"

#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/QtGridFit.h"
#include "app/TopLevel.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "uploads/EnrolmentUpload.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

EnrolmentDialog::EnrolmentDialog(ProgramState &state, EnrolmentListWidget::Roster roster,
    const EnrolmentTexts &texts, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_roster(roster)
{
    setModal(true);
    m_list = new EnrolmentListWidget(state, roster, texts, this);

    m_cmdExit = new QPushButton(u"E&xit"_qs, this);
    m_cmdExit->setObjectName(u"cmdExit"_qs);
    m_cmdExit->setAutoDefault(false);
    // Leaving sends the changed flags, however the screen is closed.
    m_cmdExit->setToolTip(u"Closes the screen. If a Remitra flag was changed, the %1 are sent "
                          "to the processor as it closes, also when it is closed with Esc or "
                          "from its title bar."_qs.arg(texts.gridName.toLower()));
    m_buttons = new QHBoxLayout;
    m_buttons->addStretch(1);
    m_buttons->addWidget(m_cmdExit);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addLayout(m_buttons);
    connect(m_cmdExit, &QPushButton::clicked, this, &EnrolmentDialog::exitScreen);

    m_list->load();
}

QPushButton *EnrolmentDialog::addButton(const QString &caption, const QString &name)
{
    auto *button = new QPushButton(caption, this);
    button->setObjectName(name);
    button->setAutoDefault(false);
    m_buttons->insertWidget(m_buttons->count() - 2, button);
    // Keyboard order as the row reads: the added buttons, then Exit.
    setTabOrder(button, m_cmdExit);
    return button;
}

void EnrolmentDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!m_centred) {
        m_centred = true;
        // Here rather than in the constructor: the screens add their buttons
        // after it.
        QtGridFit::keepControlsWhole(*this);
        centreOnScreen(*this);
    }
}

void EnrolmentDialog::exitScreen()
{
    close();
}

void EnrolmentDialog::done(int result)
{
    unload();
    QDialog::done(result);
}

void EnrolmentDialog::unload()
{
    if (m_unloaded)
        return;
    m_unloaded = true;
    m_list->commitPendingEdit();
    TopLevel::run(m_state, [&] {
        if (!m_list->changed() && !EnrolmentUpload::owed(m_state, m_roster))
            return;
        try {
            EnrolmentUpload::send(m_state, m_roster);
        } catch (const RuntimeError &error) {
            // The flags are saved in Dwellix; their upload is kept owed and
            // goes out at the next close of this screen or the next start.
            if (!keptForLater(error))
                throw;
            m_state.prompter().resetBusy();
            m_state.prompter().notice(u"Your changes are saved in Dwellix, but they could not "
                                      "be sent to Quenta Payment Services now:\r\r"_qs
                    + error.description()
                    + u"\r\rRemitra will send them the next time you close this screen or "
                      "start Remitra."_qs,
                u"Remitra"_qs);
        }
    });
}

bool EnrolmentDialog::keptForLater(const RuntimeError &error)
{
    // A busy database or a file that cannot be written now.
    const int n = error.number();
    return n == RuntimeError::databaseBusy().number()
        || n == RuntimeError::permissionDenied().number()
        || n == RuntimeError::pathNotFound().number() || n == RuntimeError::deviceIo().number();
}
