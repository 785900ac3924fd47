#pragma once

class ProgramState;

// Writes the owner file (state.files.ownerUpload): a line per owner, and a
// second line for a second owner with a share of 1 to 100 percent.
void buildOwnerFile(ProgramState &state);
// Writes the owner file and sends it with transmitPayees(file, "", "").
void uploadOwnerFile(ProgramState &state);
