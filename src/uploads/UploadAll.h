#pragma once

class ProgramState;

// The main menu's "&Upload All Info NOW": builds the setup file and the
// tenant upload from the current database and sends both in one Transmit,
// then reports the outcome. Refuses with the login notice while credentials
// are missing. Returns true when the exchange ran; the caller then moves the
// keyboard focus to its "&Exit" button. With no tenant rows the tenant upload
// is missing and reading it raises the file-not-found error (not trapped).
bool uploadAll(ProgramState &state);
