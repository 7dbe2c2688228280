// SPDX-License-Identifier: GPL-3.0-or-later
// The fields of a sequential text are those that BASIC's "write" put in, whatever the line ends. An error ends the
// reading, and a text cut anywhere gives its complete fields and nothing else.
#include "core/online/update/sequentialtext.h"

#include <QTest>

using namespace ravlin;
using namespace Qt::StringLiterals;

class TestSequentialText : public QObject
{
    Q_OBJECT

private:
    /// The fields, followed by "?" and the error's number if there was one.
    static QStringList fieldsOf(const QByteArray &text)
    {
        SequentialReader reader(text);
        QStringList fields;
        while (!reader.atEnd()) {
            const auto field = reader.field();
            if (!field)
                return fields << u"?"_s + QString::number(int(field.error()));
            fields << *field;
        }
        return fields;
    }
    static QString error(SequentialError error) { return u"?"_s + QString::number(int(error)); }

private Q_SLOTS:
    void fields_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QStringList>("fields");
        const QStringList two{u"1.4.0"_s, u"x"_s};
        QTest::newRow("quoted") << QByteArray("\"1.4.0\",\"x\"\r\n") << two;
        QTest::newRow("LF") << QByteArray("\"1.4.0\",\"x\"\n") << two;
        QTest::newRow("CR") << QByteArray("\"1.4.0\",\"x\"\r") << two;
        QTest::newRow("without a last line end") << QByteArray("\"1.4.0\",\"x\"") << two;
        QTest::newRow("a field to each line") << QByteArray("\"1.4.0\"\r\n\"x\"\r\n") << two;
        QTest::newRow("commas inside quotes") << QByteArray("\"a,b,,c\",\",\"") << QStringList{u"a,b,,c"_s, u","_s};
        QTest::newRow("numbers") << QByteArray("12,-3.5,\"4\"\n") << QStringList{u"12"_s, u"-3.5"_s, u"4"_s};
        QTest::newRow("marks for truth, dates and nothing")
            << QByteArray("#TRUE#,#2002-05-01#,#NULL#") << QStringList{u"#TRUE#"_s, u"#2002-05-01#"_s, u"#NULL#"_s};
        QTest::newRow("blanks around") << QByteArray(" \t\"a \" \t, b c \t\r\n") << QStringList{u"a "_s, u"b c"_s};
        QTest::newRow("empty quotes") << QByteArray("\"\",\"\"\r\n") << QStringList{QString(), QString()};
        QTest::newRow("nothing between commas") << QByteArray(",,a\n") << QStringList{QString(), QString(), u"a"_s};
        QTest::newRow("nothing behind a line's last comma")
            << QByteArray("a,\r\nb\r\n") << QStringList{u"a"_s, QString(), u"b"_s};
        QTest::newRow("empty lines") << QByteArray("\r\n\n \r\na\r\n\r\n\r\nb\r\n\r\n") << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("nothing") << QByteArray() << QStringList();
        QTest::newRow("nothing but lines") << QByteArray("\r\n \n") << QStringList();
        QTest::newRow("no quote in front") << QByteArray("a\",\"b\"") << QStringList{u"a\""_s, u"b"_s};
        QTest::newRow("Ctrl+Z ends it") << QByteArray("a,b\r\n\x1A\"c\0", 9) << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("UTF-8 with its mark")
            << QByteArray("\xEF\xBB\xBF\"versi\xC3\xB3n\"") << QStringList{u"versión"_s};
        QTest::newRow("Windows-1252") << QByteArray("\"versi\xF3n \x80\"") << QStringList{u"versión €"_s};
    }
    void fields()
    {
        QFETCH(QByteArray, text);
        QTEST(fieldsOf(text), "fields");
    }

    void errorsEndIt_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QStringList>("fields");
        using enum SequentialError;
        QTest::newRow("no quote behind") << QByteArray("a,\"b,c\r\n\"d\"\r\n")
                                         << QStringList{u"a"_s, error(UnclosedQuote)};
        QTest::newRow("no quote behind at the end")
            << QByteArray("a,\"b,c") << QStringList{u"a"_s, error(UnclosedQuote)};
        QTest::newRow("a lone quote") << QByteArray("\"") << QStringList{error(UnclosedQuote)};
        QTest::newRow("text behind a quote") << QByteArray("\"a\"b,c") << QStringList{error(TextAfterQuote)};
        QTest::newRow("doubled quotes") << QByteArray("\"a\"\"b\",c") << QStringList{error(TextAfterQuote)};
        QTest::newRow("a control character") << QByteArray("a,b\x02,c") << QStringList{u"a"_s, error(NotText)};
        QTest::newRow("a NUL in quotes") << QByteArray("\"a\0b\"", 5) << QStringList{error(NotText)};
        QTest::newRow("cut behind a comma") << QByteArray("a,") << QStringList{u"a"_s, error(EndOfText)};
    }
    void errorsEndIt()
    {
        QFETCH(QByteArray, text);
        QTEST(fieldsOf(text), "fields");
    }

    void anErrorIsTheLastThingRead()
    {
        SequentialReader reader("\"a\nb,c\n");
        QCOMPARE(reader.field().error(), SequentialError::UnclosedQuote);
        QVERIFY(!reader.atEnd());
        QCOMPARE(reader.field().error(), SequentialError::UnclosedQuote);
    }

    void nothingMoreIsAnError()
    {
        SequentialReader reader("a");
        QCOMPARE(reader.field().value(), u"a"_s);
        QVERIFY(reader.atEnd());
        QCOMPARE(reader.field().error(), SequentialError::EndOfText);
    }

    /// Every prefix of a text gives a prefix of its fields; only an unquoted last field may be shortened.
    void aTextCutAnywhere()
    {
        const QByteArray text = "\"1.4.0\",\"x,y\"\r\n\"a.zip\", \"b\",12\r\n";
        const QStringList whole = fieldsOf(text);
        for (qsizetype size = 0; size < text.size(); ++size) {
            QStringList fields = fieldsOf(text.left(size));
            if (!fields.isEmpty() && fields.last().startsWith(u'?'))
                fields.removeLast();
            QVERIFY(fields.size() <= whole.size());
            for (qsizetype i = 0; i < fields.size(); ++i) {
                if (i == 4)
                    QVERIFY(whole[i].startsWith(fields[i]));
                else
                    QCOMPARE(fields[i], whole[i]);
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestSequentialText)
#include "tst_sequentialtext.moc"
