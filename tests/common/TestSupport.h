#pragma once

#include "ProductTexts.h"
#include "ScriptedProcessorClient.h"

#include "app/ProgramState.h"
#include "core/ScriptedPrompter.h"
#include "hostdb/HostDb.h"

#include <QTemporaryDir>
#include <QVariantMap>
#include <QWidget>

#include <functional>
#include <memory>

// A temporary program folder with a fresh host database (all host tables,
// no rows) and a ProgramState over it with a ScriptedPrompter, complete
// credentials and the six transfer file names as start-up builds them.
class TestSite
{
public:
    TestSite();
    ~TestSite();

    const QString &folder() const { return m_folder; }
    QString path(const QString &name) const { return m_folder + u'/' + name; }
    HostDb &db() { return state->db(); }

    // INSERT INTO table (keys...) VALUES (...) with bound values; returns the
    // new rowid.
    qint64 insert(const QString &table, const QVariantMap &values);
    // The first column of the first row of a query (null when no row).
    QVariant scalar(const QString &sql, const QVariantMap &binds = {});
    // All rows of a query as maps of field name to value.
    QList<QVariantMap> rows(const QString &sql, const QVariantMap &binds = {});

    // Writes an IDFILE.DAT whose items 9, 10, 15-18 are the given account
    // settings (rent category, rent default, fee category, fee remark, late
    // category, late default); the other items are filler.
    void writeIdFile(const QStringList &sixItems);

    // Makes the processor a scripted client that answers with the replies
    // given, then with the default reply; returns its shared log.
    std::shared_ptr<ScriptedProcessorClient::Script> scriptProcessor(
        QList<ScriptedProcessorClient::Reply> replies = {});

    // Raw bytes of a file in the folder; missing file: null QByteArray.
    QByteArray fileBytes(const QString &name) const;
    void writeFile(const QString &name, const QByteArray &bytes);

    ScriptedPrompter prompter;
    std::unique_ptr<ProgramState> state;

private:
    QTemporaryDir m_dir;
    QString m_folder;
};

// A state over an existing program folder as start-up leaves it: the host
// database open (Remitra's store attached, or on its own connection as with
// the Access host), the site code and the six transfer file names, and the
// account settings when the folder has an IDFILE.DAT.
std::unique_ptr<ProgramState> openFolder(Prompter &prompter, const QString &folder,
    RemitraStore::Connection store = RemitraStore::Connection::Attached);

// Counts and balance totals of every host table a posting writes, as one
// text: equal before and after a run that must change nothing.
QString ledgerSummary(HostDb &db);

// The number of the RuntimeError that body raises (0: none); its
// description goes to *description when asked for.
int raisedError(const std::function<void()> &body, QString *description = nullptr);

// The named child of a screen; the test stops when there is none.
template <typename T = QWidget> T *child(const QObject &parent, const char *name)
{
    T *found = parent.findChild<T *>(QString::fromLatin1(name));
    if (!found)
        qFatal("no child %s", name);
    return found;
}

// Clicks the named button of a screen.
void click(const QWidget &screen, const char *name);

// Path of a fixture under tests/data.
QString testData(const QString &relative);
