// SPDX-License-Identifier: GPL-3.0-or-later
// Texts as ID3v2 stores them: every encoding with and without marks, several values, comments. What is stored reads
// back unchanged.

#include "core/tags/id3/id3text.h"

#include <QTest>

using namespace ravlin::id3;

class TestId3Text : public QObject
{
    Q_OBJECT

private:
    static TextBody decode(const QByteArray &body)
    {
        return decodeTextBody({body.constData(), static_cast<size_t>(body.size())});
    }
    template <qsizetype size>
    static QByteArray bytes(const char (&literal)[size])
    {
        return QByteArray(literal, size - 1);
    }

private Q_SLOTS:
    void bodies_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("count");
        QTest::newRow("empty") << QByteArray() << QString() << 0;
        QTest::newRow("encoding only") << bytes("\0") << QString() << 0;
        QTest::newRow("Latin-1") << bytes("\0\xE9t\xE9") << QStringLiteral("été") << 1;
        QTest::newRow("terminated") << bytes("\0abc\0") << QStringLiteral("abc") << 1;
        QTest::newRow("terminated often") << bytes("\0abc\0\0\0") << QStringLiteral("abc") << 1;
        QTest::newRow("several values") << bytes("\0a\0b\0") << QStringLiteral("a / b") << 2;
        QTest::newRow("an empty value between") << bytes("\0a\0\0b") << QStringLiteral("a /  / b") << 3;
        QTest::newRow("empty values in front") << bytes("\0\0\0b") << QStringLiteral("b") << 1;
        QTest::newRow("UTF-16, little") << bytes("\1\xFF\xFE\x1A\x04\x38\x04") << QStringLiteral("Ки") << 1;
        QTest::newRow("UTF-16, big") << bytes("\1\xFE\xFF\x04\x1A\x04\x38") << QStringLiteral("Ки") << 1;
        QTest::newRow("UTF-16 without mark, little") << bytes("\1a\0b\0") << QStringLiteral("ab") << 1;
        QTest::newRow("UTF-16 without mark, big") << bytes("\1\0a\0b") << QStringLiteral("ab") << 1;
        QTest::newRow("UTF-16 with a byte left over") << bytes("\1\xFF\xFE"
                                                               "a\0b")
                                                      << QStringLiteral("a") << 1;
        QTest::newRow("UTF-16, mark only") << bytes("\1\xFF\xFE") << QString() << 0;
        QTest::newRow("UTF-16, the second value without mark")
            << bytes("\1\xFE\xFF\0a\0\0\0b") << QStringLiteral("a / b") << 2;
        QTest::newRow("UTF-16, each value in its order") << bytes("\1\xFE\xFF\0a\0\0\xFF\xFE"
                                                                  "b\0")
                                                         << QStringLiteral("a / b") << 2;
        QTest::newRow("UTF-16BE") << bytes("\2\0a\x04\x1A") << QStringLiteral("aК") << 1;
        QTest::newRow("UTF-8") << bytes("\3\xD0\x9A\xF0\x9F\x8E\xB5") << QStringLiteral("К🎵") << 1;
        QTest::newRow("UTF-8 with a mark") << bytes("\3\xEF\xBB\xBFz") << QStringLiteral("z") << 1;
        QTest::newRow("UTF-8, broken") << bytes("\3"
                                                "a\xFF")
                                       << QStringLiteral("a\uFFFD") << 1;
        QTest::newRow("an encoding that does not exist") << bytes("\x09"
                                                                  "abc")
                                                         << QStringLiteral("abc") << 1;
    }
    void bodies()
    {
        QFETCH(QByteArray, body);
        QTEST(decode(body).text, "text");
        QTEST(decode(body).valueCount, "count");
    }

    void theSmallestEncodingIsWritten()
    {
        QCOMPARE(encodeTextBody({QStringLiteral("été")}, 3), bytes("\0\xE9t\xE9"));
        QCOMPARE(encodeTextBody({QStringLiteral("été")}, 4), bytes("\0\xE9t\xE9"));
        QCOMPARE(encodeTextBody({QStringLiteral("К")}, 2), bytes("\1\xFF\xFE\x1A\x04"));
        QCOMPARE(encodeTextBody({QStringLiteral("К")}, 3), bytes("\1\xFF\xFE\x1A\x04"));
        QCOMPARE(encodeTextBody({QStringLiteral("К")}, 4), bytes("\3\xD0\x9A"));
        QCOMPARE(encodeTextBody({QStringLiteral("a"), QStringLiteral("К")}, 3), bytes("\1\xFF\xFE"
                                                                                      "a\0\0\0\xFF\xFE\x1A\x04"));
    }

    void whatIsStoredIsReadBack_data()
    {
        QTest::addColumn<QString>("text");
        for (const QString &text : {QStringLiteral("plain"), QStringLiteral("été"), QStringLiteral("Кино"),
                 QStringLiteral("日本語"), QStringLiteral("🎵👩‍👩‍👧"), QStringLiteral("e\u0301"),
                 QStringLiteral(" a "), QStringLiteral("a / b"), QStringLiteral("line\nline"), QString(100000, u'Ω')})
            QTest::addRow("%s", qPrintable(text.left(20))) << text;
    }
    void whatIsStoredIsReadBack()
    {
        QFETCH(QString, text);
        for (const int version : {2, 3, 4}) {
            QCOMPARE(decode(encodeTextBody({text}, version)).text, text);
            CommentBody comment;
            const QByteArray body = encodeCommentBody({"deu", text, text}, version);
            QVERIFY(decodeCommentBody({body.constData(), static_cast<size_t>(body.size())}, comment));
            QCOMPARE(comment.language, QByteArray("deu"));
            QCOMPARE(comment.description, text);
            QCOMPARE(comment.text, text);
        }
    }

    void whatCannotBeReadBackIsNotStored()
    {
        for (const int version : {2, 3, 4}) {
            QCOMPARE(decode(encodeTextBody({QString(QChar(0xDC00)) + u'a'}, version)).text, QStringLiteral("\uFFFDa"));
            QCOMPARE(
                decode(encodeTextBody({QStringLiteral("a") + QChar(0) + u'b'}, version)).text, QStringLiteral("ab"));
            QCOMPARE(decode(encodeTextBody({QStringLiteral("\uFEFF\uFEFFК")}, version)).text, QStringLiteral("К"));
        }
    }

    void comments_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("description");
        QTest::addColumn<QString>("text");
        QTest::newRow("usual") << bytes("\0engd\0text") << QStringLiteral("d") << QStringLiteral("text");
        QTest::newRow("terminated") << bytes("\0eng\0text\0") << QString() << QStringLiteral("text");
        QTest::newRow("without description") << bytes("\0engtext") << QString() << QStringLiteral("text");
        QTest::newRow("UTF-16") << bytes("\1eng\xFF\xFE\0\0\xFF\xFE\x1A\x04") << QString() << QStringLiteral("К");
        QTest::newRow("UTF-16, the text without mark")
            << bytes("\1eng\xFE\xFF\0d\0\0\x04\x1A") << QStringLiteral("d") << QStringLiteral("К");
        QTest::newRow("nothing") << bytes("\0eng") << QString() << QString();
    }
    void comments()
    {
        QFETCH(QByteArray, body);
        CommentBody comment;
        QVERIFY(decodeCommentBody({body.constData(), static_cast<size_t>(body.size())}, comment));
        QTEST(comment.description, "description");
        QTEST(comment.text, "text");
        QVERIFY(!decodeCommentBody({body.constData(), 3}, comment));
    }
};

QTEST_GUILESS_MAIN(TestId3Text)
#include "tst_id3text.moc"
