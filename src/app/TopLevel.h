#pragma once

#include "app/ProgramState.h"
#include "core/RuntimeError.h"

#include <exception>

// The program's last line of defence: an error that no routine traps is
// shown to the user in a message box and the program ends, as the runtime of
// the host platform does. Every event handler runs its body through here.
namespace TopLevel {

// The message shown for an untrapped error: "Run-time error '53':" + blank
// line + description; title "Remitra".
QString errorText(const RuntimeError &error);

// Shows the error through the state's prompter and requests the end of the
// program (state.endProgram). A busy host database is only reported: the
// writes were rolled back and the command can be run again. So is a table or
// field that the host database lacks ("Company Remitra field not found"):
// the command that needs it stops, the rest of the program goes on.
void reportFatal(ProgramState &state, const RuntimeError &error);

// Runs body; an escaping error is reported and ends the program. Returns
// false when that happened.
template <typename Body> bool run(ProgramState &state, Body &&body)
{
    try {
        body();
        return true;
    } catch (const RuntimeError &error) {
        reportFatal(state, error);
    } catch (const std::exception &error) {
        reportFatal(state, RuntimeError(51, QString::fromLocal8Bit(error.what())));
    }
    return false;
}

} // namespace TopLevel
