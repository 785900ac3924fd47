#include "TestSupport.h"

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
        QCOMPARE(bytes,
            QByteArray("caf\xe9 \x80"
                       "5 \x93q\x94"));
        QCOMPARE(TransferFile::fromAnsi(bytes), text);
        QCOMPARE(TransferFile::toAnsi(u"\u4e2d"_qs), QByteArray("?"));
    }

    void writesWholeFilesOrNothing()
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
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList { u"out.txt"_qs });

        // Reading: 53 when missing, the bytes as they are otherwise.
        const QString x = dir.filePath(u"x.txt"_qs);
        QCOMPARE(raisedError([&] { TransferFile::readWhole(x); }), 53);
        TransferFile::writeAtomic(x, u""_qs);
        QCOMPARE(TransferFile::readWhole(x), u""_qs);
        TransferFile::writeAtomic(x, u"a\r\nb\n"_qs);
        QCOMPARE(TransferFile::readWhole(x), u"a\r\nb\n"_qs);
        QCOMPARE(raisedError([&] {
            TransferFile::writeAtomic(dir.filePath(u"no/such/dir.txt"_qs), u"x"_qs);
        }),
            76);
        TransferFile::renameReplacing(x, p);
        QVERIFY(!TransferFile::exists(x));
        QCOMPARE(TransferFile::readWhole(p), u"a\r\nb\n"_qs);
    }

    void busyCursorRestoredOnThrow()
    {
        ScriptedPrompter p;
        QCOMPARE(raisedError([&] {
            BusyCursor busy(p);
            BusyCursor inner(p);
            QCOMPARE(p.busyDepth(), 2);
            throw RuntimeError::overflow();
        }),
            6);
        QCOMPARE(p.busyDepth(), 0);
        p.queueAnswer(Prompter::Answer::Yes);
        QCOMPARE(p.ask(u"q"_qs, u"t"_qs), Prompter::Answer::Yes);
        QCOMPARE(p.ask(u"q2"_qs, u"t"_qs), Prompter::Answer::No);
        QCOMPARE(p.unansweredQuestions(), 1);
    }
};

QTEST_GUILESS_MAIN(TestFilesPrompts)
#include "tst_files_prompts.moc"
