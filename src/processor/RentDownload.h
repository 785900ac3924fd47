#pragma once

class ProgramState;

// Start-up's check for waiting rent payments; downloads when none wait.
void checkForPaymentFile(ProgramState &state);
// Fetches pending rent payments into the payment file, unless one waits.
void downloadPaymentFile(ProgramState &state);
