#pragma once

class ProgramState;

// Writes the vendor file (state.files.vendorUpload): a line per vendor.
void BuildVendorFile(ProgramState &state);
// Writes the vendor file and sends it with TransmitPayees(file, "", "").
void UploadVendorFile(ProgramState &state);
