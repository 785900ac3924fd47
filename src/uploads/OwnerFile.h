#pragma once

class ProgramState;

// Writes the owner file and sends it with TransmitPayees(file, "", "").
void UploadOwnerFile(ProgramState &state);
