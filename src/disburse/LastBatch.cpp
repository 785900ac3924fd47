#include "disburse/LastBatch.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "core/VbText.h"
#include "disburse/DistributionFile.h"
#include "processor/ProcessorCall.h"

namespace LastBatch {

namespace {

QList<QStringList> read(ProgramState &state, const QString &path)
{
    const QStringList pieces = readWholeFile(path).split(u'\n');
    int count = int(pieces.size()) - 2;
    if (count == 0) {
        state.prompter().notice(u"No payments were found."_qs, u"Dwellix Remitra"_qs);
        TransferFile::remove(path);
        return {};
    }
    // Rows are numbered from 1: a file without a complete line has none.
    if (count < 0)
        throw RuntimeError::subscriptOutOfRange();

    QList<QStringList> rows(count, QStringList(4));
    for (int i = 0; i < count; ++i) {
        const QString &piece = pieces[i];
        if (VbText::trim(piece).isEmpty()) {
            rows.resize(count - 1);
            break;
        }
        QString line = piece;
        if (line.endsWith(u'\r'))
            line.chop(1);
        const QStringList fields = line.split(u'|');
        for (int c = 0; c < 4 && c < fields.size(); ++c)
            rows[i][c] = fields[c];
    }
    return rows;
}

} // namespace

QList<QStringList> load(ProgramState &state)
{
    BusyCursor busy(state.prompter());
    const QString path = state.pathOf(DistributionFile::LastUploadName);
    try {
        if (!TransferFile::exists(path))
            return {};
        return read(state, path);
    } catch (const RuntimeError &error) {
        if (error.number() == 53)
            return {};
        busy.release();
        state.prompter().notice(u"Unexpected error in payment file: "_qs
                + QString::number(error.number()) + u" - "_qs + error.description(),
            u"Payment File Download"_qs);
        return {};
    }
}

} // namespace LastBatch
