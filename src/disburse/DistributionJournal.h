#pragma once

#include "hostdb/Journal.h"
#include "hostdb/PaymentRow.h"

class ResponseMatcher;

// The checks of a distribution as journal lines: each with its check id,
// payee, amount and date, and, once the answer is known, whether it was
// accepted (and so posted) or why it was rejected.
namespace DistributionJournal {

QList<Journal::Line> lines(
    const QList<PaymentRow> &checks, const ResponseMatcher *answer = nullptr);
// The sum of the amounts as they are paid (absolute values).
Currency total(const QList<PaymentRow> &checks);
// The total of the checks the processor accepted.
Currency acceptedTotal(const QList<PaymentRow> &checks, const ResponseMatcher &response);

} // namespace DistributionJournal
