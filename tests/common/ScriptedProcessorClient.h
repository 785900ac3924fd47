#pragma once

#include "processor/ProcessorClient.h"

#include <QList>
#include <QStringList>

#include <memory>

// A processor client for job tests: records every call and answers with the
// flag, code and response queued for it (default: true, 200, "").
class ScriptedProcessorClient : public ProcessorClient
{
public:
    struct Call
    {
        QString operation; // "Transmit" or "TransmitPayees"
        QString url, user, password;
        QStringList texts;
    };
    struct Reply
    {
        bool flag = true;
        qint32 code = 200;
        QString response;
        bool arrived = true; // mayHaveArrived() after a call without an answer
    };
    // Shared log and reply queue, so that a factory can hand out fresh
    // clients that all report to one test.
    struct Script
    {
        QList<Call> calls;
        QList<Reply> replies;
    };

    explicit ScriptedProcessorClient(std::shared_ptr<Script> script)
        : m_script(std::move(script))
    {
    }

    static ProcessorClientFactory factory(std::shared_ptr<Script> script)
    {
        return [script] { return std::make_unique<ScriptedProcessorClient>(script); };
    }

    void setUrl(const QString &url) override { m_url = url; }
    void setUserName(const QString &u) override { m_user = u; }
    void setPassword(const QString &p) override { m_password = p; }
    qint32 resultCode() const override { return m_reply.code; }
    bool mayHaveArrived() const override { return m_reply.flag || m_reply.arrived; }
    QString responseText() const override { return m_reply.response; }
    bool transmit(const CallText &a, const CallText &b) override
    {
        return record(u"Transmit"_qs, { a.readAll(), b.readAll() });
    }
    bool transmitPayees(const CallText &a, const CallText &b, const CallText &c) override
    {
        return record(u"TransmitPayees"_qs, { a.readAll(), b.readAll(), c.readAll() });
    }

private:
    bool record(const QString &op, const QStringList &texts)
    {
        m_script->calls.append({ op, m_url, m_user, m_password, texts });
        m_reply = m_script->replies.isEmpty() ? Reply {} : m_script->replies.takeFirst();
        return m_reply.flag;
    }

    std::shared_ptr<Script> m_script;
    QString m_url, m_user, m_password;
    Reply m_reply;
};
