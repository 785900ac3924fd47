#pragma once

class ProgramState;

// Start-up's check for waiting rent payments; downloads when none wait.
void CheckForPaymentFile(ProgramState &state);
// Fetches pending rent payments into the payment file, unless one waits.
void DownloadPaymentFile(ProgramState &state);
