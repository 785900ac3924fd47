#pragma once

class ProgramState;

// Writes the tenant upload (state.files.tenantUpload); deletes it when empty.
void buildTenantUpload(ProgramState &state);
// Sends the tenant upload with transmit("", file) and reports the result.
void sendTenantUpload(ProgramState &state);
