#pragma once

class ProgramState;

// Writes the vendor file (state.files.vendorUpload): a line per vendor.
void buildVendorFile(ProgramState &state);
// Writes the vendor file and sends it with transmitPayees(file, "", "").
void uploadVendorFile(ProgramState &state);
