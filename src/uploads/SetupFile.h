#pragma once

class ProgramState;

// Writes the setup file (state.files.setupUpload): one line per tenant of the
// portfolio join, ordered by owner, property and unit.
void buildSetupFile(ProgramState &state);
