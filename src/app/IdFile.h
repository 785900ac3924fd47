#pragma once

class ProgramState;

// Reads IDFILE.DAT of the program's folder into state.IdItems (items 9, 10,
// 15-18, counting from 0). A missing file raises the file-not-found error.
void LoadIDFile(ProgramState &state);
