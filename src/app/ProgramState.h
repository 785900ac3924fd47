#pragma once

#include "core/RunSettings.h"
#include "hostdb/HostDb.h"
#include "hostdb/RemitraStore.h"
#include "processor/ProcessorClient.h"

#include <QString>

#include <array>
#include <functional>
#include <memory>

class Prompter;

// The one shared state of a run, from start-up to the end of the main menu.
// Passed by reference to every screen; a job that needs only a part (the
// login, the transfer file names, the account settings, the last result)
// takes that part. There are no globals.
class ProgramState
{
public:
    ProgramState(Prompter &prompter, QString folder);
    ~ProgramState();

    Prompter &prompter() const { return *m_prompter; }
    // Screens that show their own prompter (tests, sub-dialogs) can swap it.
    void setPrompter(Prompter &prompter) { m_prompter = &prompter; }

    // The program's folder (absolute, no trailing separator).
    const QString &folder() const { return m_folder; }
    // folder + "/" + name.
    QString pathOf(const QString &name) const;

    // The open host database; throws RuntimeError::noCurrentRecord if used
    // before start-up opened it.
    HostDb &db() const;
    bool hasDb() const { return m_hostDb != nullptr; }
    // Takes the host database and opens Remitra's own store beside it (see
    // RemitraStore), before any transaction can be open on it.
    void setHostDb(std::unique_ptr<HostDb> db,
        RemitraStore::Connection store = RemitraStore::Connection::Attached);
    // Remitra's own store; throws like db() before start-up opened it.
    RemitraStore &store() const;

    // A fresh processor client for one job.
    std::unique_ptr<ProcessorClient> newClient() const;

    // The host database file and the site it serves.
    QString databasePath;
    QString siteCode;
    // The last message box answer a routine kept ("6" Yes, "7" No).
    QString msgAnswer;
    AccountSettings account;
    bool disbursementEnabled = true;
    ProcessorLogin login;
    ProcessorResult lastResult;
    TransferFileNames files;

    // Where the credentials are kept: empty for the user's own settings
    // store, or an INI file given with --settings.
    QString settingsFile;
    // Seconds a processor call may take before it counts as unanswered.
    int processorTimeoutSeconds = 120;
    // Creates the client for each job; the program sets the HTTP client,
    // tests may hand in a scripted one.
    ProcessorClientFactory clientFactory;
    // Ends the program (unloads the main screen). Set by the program; a
    // headless run records the request.
    std::function<void()> endProgram;
    bool endRequested = false;

private:
    Prompter *m_prompter;
    QString m_folder;
    // The host database (the product's HostDb), open from start-up to the
    // end of the run.
    std::unique_ptr<HostDb> m_hostDb;
    // Declared after the host database, so it is closed first.
    std::unique_ptr<RemitraStore> m_store;
};
