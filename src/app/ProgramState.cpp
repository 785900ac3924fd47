#include "app/ProgramState.h"

#include "core/RuntimeError.h"

#include <QDir>

ProgramState::ProgramState(Prompter &prompter, QString folder)
    : m_prompter(&prompter)
    , m_folder(QDir(folder).absolutePath())
{
}

ProgramState::~ProgramState() = default;

void ProgramState::setHostDb(std::unique_ptr<HostDb> db, RemitraStore::Connection store)
{
    m_store.reset();
    m_hostDb = std::move(db);
    if (m_hostDb)
        m_store = std::make_unique<RemitraStore>(*m_hostDb, store);
}

RemitraStore &ProgramState::store() const
{
    if (!m_store)
        throw RuntimeError::noCurrentRecord();
    return *m_store;
}

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
    if (!clientFactory)
        throw RuntimeError(429, u"ActiveX component can't create object"_qs);
    return clientFactory();
}
