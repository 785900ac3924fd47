#pragma once

#include <QtGlobal>

class ProgramState;

// Tells the user the outcome of the last processor call: the success notice
// for flag "True" with code 200, otherwise the error message for the code
// (title "Remitra error"). Reads state.ResultText.
void ReportResult(ProgramState &state, qint16 code);
