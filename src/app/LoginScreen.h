#pragma once

class ProgramState;

// How a job shows the login screen without knowing about widgets: the main
// menu hands in one that opens LoginDialog modally; tests hand in their own.
// showLogin() returns when the screen has closed, with the state values as the
// screen left them.
class LoginScreen
{
public:
    virtual ~LoginScreen() = default;
    virtual void showLogin(ProgramState &state) = 0;
};
