// SPDX-License-Identifier: GPL-3.0-or-later
/// Contract: records are written as JSON, as tab-separated fields, as an aligned table or as blocks of lines; large
/// output is written in pieces, and nothing after a failure; a message names the program and the file.
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "core/platform/standardstreams.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

/// A stream that stores what it gets.
struct Memory
{
    QByteArray bytes;
    int writes = 0;

    Output output(bool isTerminal = false)
    {
        return {[this](QByteArrayView piece) -> Result<bool> {
                    bytes += piece;
                    ++writes;
                    return true;
                },
            isTerminal};
    }
};

QByteArray written(Format format, const std::vector<Record> &records)
{
    Memory memory;
    Output output = memory.output();
    RecordWriter writer(output, format, {u"file", u"count", u"flag"});
    for (const Record &record : records)
        writer.write(record);
    writer.finish();
    output.flush();
    return memory.bytes;
}

const std::vector<Record> Two{{u"夜"_s, qint64(12), true}, {u"a\tb"_s, {}, false}};

} // namespace

class TestRecordWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { platform::prepareStandardStreams(); }

    void json()
    {
        QCOMPARE(
            written(Format::Json, Two), QByteArray("[\n{\"file\": \"夜\", \"count\": 12, \"flag\": true},\n"
                                                   "{\"file\": \"a\\tb\", \"count\": null, \"flag\": false}\n]\n"));
        QCOMPARE(written(Format::Json, {}), QByteArray("[]\n"));
    }

    void tabSeparated()
    {
        QCOMPARE(written(Format::TabSeparated, Two), QByteArray("file\tcount\tflag\n夜\t12\tyes\na\\tb\t\tno\n"));
        QCOMPARE(written(Format::TabSeparated, {}), QByteArray("file\tcount\tflag\n"));
    }

    void table()
    {
        QCOMPARE(written(Format::Table, Two), QByteArray("file  count  flag\n"
                                                         "夜    12     yes\n"
                                                         "a\\tb         no\n"));
    }

    void aHugeTextPadsNoOtherRow()
    {
        const QByteArray table =
            written(Format::Table, {{QString(100'000, u'x'), qint64(1), true}, {u"a"_s, {}, false}});
        const QByteArrayList lines = table.split('\n');
        QCOMPARE(lines[1], QByteArray(100'000, 'x') + "  1      yes");
        QVERIFY(lines[0].size() < 300 && lines[2].size() < 300);
    }

    void blocks()
    {
        QCOMPARE(written(Format::Blocks, Two), QByteArray("file:  夜\ncount: 12\nflag:  yes\n\n"
                                                          "file:  a\\tb\ncount: \nflag:  no\n"));
        QCOMPARE(written(Format::Blocks, {}), QByteArray());
    }

    void formatFollowsTheStream()
    {
        Memory memory;
        QCOMPARE(chooseFormat(true, memory.output(true), Format::Table), Format::Json);
        QCOMPARE(chooseFormat(false, memory.output(true), Format::Table), Format::Table);
        QCOMPARE(chooseFormat(false, memory.output(false), Format::Table), Format::TabSeparated);
    }

    void largeOutputGoesOutInPieces()
    {
        Memory memory;
        Output output = memory.output();
        for (int i = 0; i < 3000; ++i)
            output.write(QByteArray(100, 'x'));
        QVERIFY(memory.writes >= 2 && memory.writes <= 10);
        output.flush();
        QCOMPARE(memory.bytes.size(), 300'000);
    }

    void nothingIsWrittenAfterAFailure()
    {
        int writes = 0;
        Output output(
            [&writes](QByteArrayView) -> Result<bool> {
                ++writes;
                return tl::unexpected(Error{ErrorCode::NoSpace, {}, u"full"_s});
            },
            false);
        for (int i = 0; i < 3; ++i) {
            output.write("x");
            output.flush();
        }
        QCOMPARE(writes, 1);
        QVERIFY(output.isBroken());
        QCOMPARE(output.error()->detail, u"full"_s);
    }

    void resultsThatCannotBeWrittenAreAFailure()
    {
        Memory messages;
        Console full({[](QByteArrayView) -> Result<bool> {
                          return tl::unexpected(Error{ErrorCode::NoSpace, {}, u"full"_s});
                      },
                         false},
            messages.output());
        QCOMPARE(full.finish(run({u"--version"_s}, full)), int(Failure));
        QCOMPARE(messages.bytes, QByteArray("ravlin-cli: the output cannot be written (full)\n"));

        messages.bytes.clear();
        Console gone({[](QByteArrayView) -> Result<bool> { return false; }, false}, messages.output());
        QCOMPARE(gone.finish(run({u"--version"_s}, gone)), int(Failure));
        QCOMPARE(messages.bytes, QByteArray());
    }

    void messagesNameProgramAndFile()
    {
        Memory results;
        Memory messages;
        Console console(results.output(), messages.output());
        console.fail(u"a b.mp3"_s, Error{ErrorCode::Io, {}, u"read: it broke"_s});
        console.fail(QString(), u"what"_s);
        QCOMPARE(messages.bytes,
            QByteArray("ravlin-cli: a b.mp3: the system could not read or write the file (read: it broke)\n"
                       "ravlin-cli: \"\": what\n"));
        QCOMPARE(console.finish(console.status()), int(Failure));
    }

    void aTextStaysOnItsLine()
    {
        for (const bool isTerminal : {false, true}) {
            Memory results;
            Memory messages;
            Console console(results.output(isTerminal), messages.output(isTerminal));
            console.print(u"a\nravlin-cli: b\r\u2028"_s);
            console.warn(u"a\nravlin-cli: b"_s);
            console.fail(u"a\nb"_s, u"c\nd"_s, {u"e\nf"_s, u"g"_s});
            console.refuse(u"x\ny"_s, u"z\n"_s);
            console.finish(Success);
            const QByteArray separator = isTerminal ? "\\u2028" : "\xE2\x80\xA8";
            QCOMPARE(results.bytes, "a\\nravlin-cli: b\\r" + separator + '\n');
            QCOMPARE(messages.bytes, QByteArray("ravlin-cli: a\\nravlin-cli: b\n"
                                                "ravlin-cli: a\\nb: c\\nd\ne\\nf\ng\n"
                                                "ravlin-cli: x\\ny: z\\n\nTry 'ravlin-cli x\\ny --help'.\n"));
        }
    }
};

} // namespace ravlin::cli

QTEST_APPLESS_MAIN(ravlin::cli::TestRecordWriter)
#include "tst_recordwriter.moc"
