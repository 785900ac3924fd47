#pragma once

#include "TestSupport.h"

#include <cstddef>
#include <cstdint>

// One program folder for the whole fuzzing process: the rent test portfolio
// (tests/common/RentSupport.h) in a TestSite, created on first use with the
// application object the harness asks for.
class FuzzSite
{
public:
    static FuzzSite &get(bool widgets = false);

    ProgramState &state() { return *m_site->state; }
    ScriptedPrompter &prompter() { return m_site->prompter; }
    // Writes the input as the named file of the program's folder.
    void writeFile(const QString &name, const uint8_t *data, size_t size);

private:
    explicit FuzzSite(bool widgets);

    std::unique_ptr<TestSite> m_site;
};
