#pragma once

class ProgramState;

// Writes the tenant upload (state.files.tenantUpload); deletes it when empty.
void BuildTenantUpload(ProgramState &state);
// Sends the tenant upload with Transmit("", file) and reports the result.
void SendTenantUpload(ProgramState &state);
