#pragma once

#include "app/ProgramState.h"
#include "core/ScriptedPrompter.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <memory>

// One program folder for the whole fuzzing process: a host database with a
// small portfolio (owners 1-3, properties 10/20/30, tenants 100, 101, 200,
// 300 with their units, entered checks 1-3 to owner 1), a ProgramState over
// it with a ScriptedPrompter, and the transfer file names. Created on first
// use, with the application object the harness asks for.
class FuzzSite
{
public:
    static FuzzSite &get(bool widgets = false);

    ProgramState &state() { return *m_state; }
    ScriptedPrompter &prompter() { return m_prompter; }
    // Writes the input as the named file of the program's folder.
    void writeFile(const QString &name, const uint8_t *data, size_t size);

private:
    explicit FuzzSite(bool widgets);

    QTemporaryDir m_dir;
    ScriptedPrompter m_prompter;
    std::unique_ptr<ProgramState> m_state;
};
