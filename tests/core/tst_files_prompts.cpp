#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/ScriptedPrompter.h"
#include "core/TransferFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestFilesPrompts : public QObject
{
    Q_OBJECT

private slots:
    void ansiRoundTripAndEuro()
    {
        const QString text = u"caf\u00e9 \u20ac5 \u201cq\u201d"_qs;
        const QByteArray bytes = TransferFile::toAnsi(text);
        QCOMPARE(bytes, QByteArray("caf\xe9 \x80" "5 \x93q\x94"));
        QCOMPARE(TransferFile::fromAnsi(bytes), text);
        QCOMPARE(TransferFile::toAnsi(u"\u4e2d"_qs), QByteArray("?"));
    }

    void lineWriterCommitsWholeFileOrNothing()
    {
        QTemporaryDir dir;
        const QString p = TransferFile::path(dir.path(), u"out.txt"_qs);
        TransferFile::writeAtomic(p, u"old"_qs);
        {
            TransferFile::LineWriter w(p);
            w.writeLine(u"a|b"_qs);
            // not committed: the old file stays
        }
        QCOMPARE(TransferFile::readWhole(p), u"old"_qs);
        {
            TransferFile::LineWriter w(p);
            for (int i = 0; i < 20000; ++i)
                w.writeLine(u"line %1 \u00e9"_qs.arg(i));
            w.commit();
        }
        QFile f(p);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray all = f.readAll();
        QVERIFY(all.startsWith("line 0 \xe9\r\nline 1 "));
        QVERIFY(all.endsWith("line 19999 \xe9\r\n"));
        QCOMPARE(all.count('\n'), 20000);
        // No temporary files left behind.
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{u"out.txt"_qs});
    }

    void readWholeRules()
    {
        QTemporaryDir dir;
        const QString p = dir.filePath(u"x.txt"_qs);
        try {
            TransferFile::readWhole(p);
            QFAIL("a missing file must raise");
        } catch (const RuntimeError &e) {
            QCOMPARE(e.number(), 53);
        }
        TransferFile::writeAtomic(p, u""_qs);
        QCOMPARE(TransferFile::readWhole(p), u""_qs);
        TransferFile::writeAtomic(p, u"a\r\nb\n"_qs);
        QCOMPARE(TransferFile::readWhole(p), u"a\r\nb\n"_qs);
        try {
            TransferFile::writeAtomic(dir.filePath(u"no/such/dir.txt"_qs), u"x"_qs);
            QFAIL("writing into a missing folder must raise");
        } catch (const RuntimeError &e) {
            QCOMPARE(e.number(), 76);
        }
    }

    void renameReplaces()
    {
        QTemporaryDir dir;
        const QString a = dir.filePath(u"a"_qs), b = dir.filePath(u"b"_qs);
        TransferFile::writeAtomic(a, u"new"_qs);
        TransferFile::writeAtomic(b, u"old"_qs);
        TransferFile::renameReplacing(a, b);
        QVERIFY(!TransferFile::exists(a));
        QCOMPARE(TransferFile::readWhole(b), u"new"_qs);
    }

    void busyCursorRestoredOnThrow()
    {
        ScriptedPrompter p;
        try {
            BusyCursor busy(p);
            BusyCursor inner(p);
            QCOMPARE(p.busyDepth(), 2);
            throw RuntimeError::overflow();
        } catch (const RuntimeError &) {
        }
        QCOMPARE(p.busyDepth(), 0);
        p.queueAnswer(Prompter::Answer::Yes);
        QCOMPARE(p.ask(u"q"_qs, u"t"_qs), Prompter::Answer::Yes);
        QCOMPARE(p.ask(u"q2"_qs, u"t"_qs), Prompter::Answer::No);
        QCOMPARE(p.unansweredQuestions(), 1);
    }
};

QTEST_GUILESS_MAIN(TestFilesPrompts)
#include "tst_files_prompts.moc"
