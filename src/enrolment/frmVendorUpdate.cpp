#include "enrolment/frmVendorUpdate.h"

#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/TopLevel.h"
#include "enrolment/EnrolmentListWidget.h"
#include "uploads/VendorFile.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

frmVendorUpdate::frmVendorUpdate(ProgramState &state, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
{
    setObjectName(u"frmVendorUpdate"_qs);
    setWindowTitle(u"Remitra Vendor Update"_qs);
    setModal(true);
    resize(800, 600);

    EnrolmentTexts texts;
    texts.displayEnrolled = u"Remitra Vendors Only"_qs;
    texts.displayAll = u"All Vendors"_qs;
    texts.askTitle = u"Vendor Update"_qs;
    texts.askActivate = u"Are you SURE you want to change ALL Vendors to ACTIVATE REMITRA?"_qs;
    texts.askRemove = u"Are you SURE you want to REMOVE ALL Vendors from REMITRA?"_qs;
    texts.editNotice
        = u"Please enter 'Y' if this Vendor uses the Remitra Rent or 'N' if not. If you want "
          "to permanently DELETE this Vendor from Remitra, enter a 'D'."_qs;
    texts.gridName = u"Vendors"_qs;
    texts.countLabel = u"Vendors listed: %1"_qs;
    m_list = new EnrolmentListWidget(state, EnrolmentListWidget::Roster::Vendors, texts, this);

    m_cmdExit = new QPushButton(u"E&xit"_qs, this);
    m_cmdExit->setObjectName(u"cmdExit"_qs);
    m_cmdExit->setAutoDefault(false);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_cmdExit);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);
    connect(m_cmdExit, &QPushButton::clicked, this, &frmVendorUpdate::cmdExit_Click);

    m_list->load();
}

void frmVendorUpdate::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!m_centred) {
        m_centred = true;
        centreOnScreen(*this);
    }
}

void frmVendorUpdate::cmdExit_Click()
{
    close();
}

void frmVendorUpdate::done(int result)
{
    Form_Unload();
    QDialog::done(result);
}

void frmVendorUpdate::Form_Unload()
{
    if (m_unloaded)
        return;
    m_unloaded = true;
    m_list->commitPendingEdit();
    if (m_list->changed())
        TopLevel::run(m_state, [&] { UploadVendorFile(m_state); });
}
