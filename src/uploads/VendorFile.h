#pragma once

class ProgramState;

// Writes the vendor file and sends it with TransmitPayees(file, "", "").
void UploadVendorFile(ProgramState &state);
