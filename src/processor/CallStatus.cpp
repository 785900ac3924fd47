#include "processor/CallStatus.h"

#include "core/Prompter.h"

#include <QCoreApplication>
#include <QLocale>
#include <QThread>

namespace {

// Counts in the product's own number form ("100,000"), whatever the system
// locale.
QString count(qsizetype n, const QString &one, const QString &many)
{
    static const QLocale numbers(QLocale::English, QLocale::UnitedStates);
    return numbers.toString(qlonglong(n)) + u' ' + (n == 1 ? one : many);
}

} // namespace

CallStatus::CallStatus(Prompter &prompter, const QString &activity)
    : m_prompter(&prompter)
    , m_activity(activity)
{
    m_elapsed.start();
    m_tick.setInterval(1000);
    // Never early: the first tick says 1 s, not 0 s.
    m_tick.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_tick, &QTimer::timeout, &m_tick,
        [this] { m_prompter->showStatus(m_activity, waitingText(m_elapsed.elapsed() / 1000)); });
    // Ticks only where an event loop can run them: the program's own thread.
    const QCoreApplication *app = QCoreApplication::instance();
    if (app && QThread::currentThread() == app->thread())
        m_tick.start();
    m_prompter->showStatus(m_activity, QString());
}

void CallStatus::release()
{
    if (!m_prompter)
        return;
    m_tick.stop();
    m_prompter->showStatus(QString(), QString());
    m_prompter = nullptr;
}

QString CallStatus::transmitText(const CallText &setupText, const CallText &tenantText)
{
    const qsizetype tenants = tenantText.lineCount();
    if (!setupText.isEmpty())
        return u"Sending the portfolio: "_qs + count(tenants, u"tenant"_qs, u"tenants"_qs)
            + u"…"_qs;
    if (tenants > 0)
        return u"Sending the tenants' enrolment: "_qs + count(tenants, u"tenant"_qs, u"tenants"_qs)
            + u"…"_qs;
    return u"Asking the processor for rent payments…"_qs;
}

QString CallStatus::payeesText(const CallText &payeeText, const CallText &paymentText)
{
    if (!paymentText.isEmpty())
        return u"Sending the owner and vendor payments: "_qs
            + count(paymentText.lineCount(), u"check"_qs, u"checks"_qs) + u"…"_qs;
    const qsizetype owners = payeeText.lineCount('O');
    const qsizetype vendors = payeeText.lineCount('V');
    if (vendors == 0)
        return u"Sending the owners' enrolment: "_qs + count(owners, u"owner"_qs, u"owners"_qs)
            + u"…"_qs;
    if (owners == 0)
        return u"Sending the vendors' enrolment: "_qs + count(vendors, u"vendor"_qs, u"vendors"_qs)
            + u"…"_qs;
    return u"Sending the enrolment of "_qs + count(owners, u"owner"_qs, u"owners"_qs) + u" and "_qs
        + count(vendors, u"vendor"_qs, u"vendors"_qs) + u"…"_qs;
}

QString CallStatus::waitingText(qint64 seconds)
{
    return u"Waiting for the processor… "_qs + QString::number(seconds) + u" s"_qs;
}
