#pragma once

class ProgramState;

// Writes the setup file (state.SetupUploadName): one line per tenant of the
// portfolio join, ordered by owner, property and unit.
void BuildSetupFile(ProgramState &state);
