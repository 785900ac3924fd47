#include "app/TopLevel.h"

#include "app/Startup.h"
#include "core/Prompter.h"

namespace TopLevel {

QString errorText(const RuntimeError &error)
{
    return u"Run-time error '"_qs + QString::number(error.number()) + u"':\n\n"_qs
        + error.description();
}

void reportFatal(ProgramState &state, const RuntimeError &error)
{
    state.prompter().resetBusy();
    if (error.number() == RuntimeError::databaseBusy().number()) {
        // The host application holds the database: nothing was written, and
        // the same command can simply be tried again, so the program stays.
        state.prompter().notice(error.description(), u"Remitra"_qs);
        return;
    }
    if (error.number() == RuntimeError::itemNotFound(QString()).number()) {
        // A table or field that the host database lacks stops only the
        // command that needs it, before it writes or sends anything.
        qWarning("%s", qPrintable(error.description()));
        state.prompter().notice(Startup::fieldNotFoundText(), u"Remitra"_qs);
        return;
    }
    state.prompter().notice(errorText(error), u"Remitra"_qs, Prompter::Icon::Critical);
    state.endRequested = true;
    if (state.endProgram)
        state.endProgram();
}

} // namespace TopLevel
