#include "app/ProgramState.h"

#include "core/RuntimeError.h"

#include <QDir>

ProgramState::ProgramState(Prompter &prompter, QString folder)
    : m_prompter(&prompter), m_folder(QDir(folder).absolutePath())
{
}

ProgramState::~ProgramState() = default;

QString ProgramState::pathOf(const QString &name) const
{
    return m_folder + u'/' + name;
}

HostDb &ProgramState::db() const
{
    if (!m_hostDb)
        throw RuntimeError::noCurrentRecord();
    return *m_hostDb;
}

std::unique_ptr<ProcessorClient> ProgramState::newClient() const
{
    if (!ClientFactory)
        throw RuntimeError(429, u"ActiveX component can't create object"_qs);
    return ClientFactory();
}
