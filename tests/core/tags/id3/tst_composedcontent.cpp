// SPDX-License-Identifier: GPL-3.0-or-later
// New content that is read before it is written: its bytes at any offset, and two changes combined into one.

#include "core/tags/id3/composedcontent.h"

#include <QRandomGenerator>
#include <QTest>

using namespace ravlin;
using storage::Segment;

class TestComposedContent : public QObject
{
    Q_OBJECT

private:
    static QByteArray made(const QByteArray &old, const std::vector<Segment> &segments)
    {
        QByteArray content;
        for (const Segment &each : segments)
            content += each.isKept() ? old.mid(each.oldOffset, each.length) : each.bytes;
        return content;
    }
    static std::vector<Segment> randomSegments(QRandomGenerator &random, qint64 oldSize)
    {
        std::vector<Segment> segments;
        for (quint32 count = random.bounded(6); count > 0; --count) {
            const qint64 offset = random.bounded(static_cast<int>(oldSize + 1));
            const qint64 length = random.bounded(static_cast<int>(oldSize - offset + 1));
            QByteArray bytes(random.bounded(9), '\0');
            for (char &byte : bytes)
                byte = static_cast<char>('a' + random.bounded(26));
            segments.push_back(random.bounded(2) == 0 ? Segment::kept(offset, length) : Segment::fresh(bytes));
        }
        return segments;
    }

private Q_SLOTS:
    void twoChangesAreOne()
    {
        QRandomGenerator random(5);
        const QByteArray old("0123456789ABCDEFGHIJ");
        for (int i = 0; i < 2000; ++i) {
            const std::vector<Segment> earlier = randomSegments(random, old.size());
            const QByteArray between = made(old, earlier);
            const std::vector<Segment> later = randomSegments(random, between.size());
            const QByteArray expected = made(between, later);
            const std::vector<Segment> both = id3::combined(earlier, later);
            QCOMPARE(made(old, both), expected);

            platform::MemorySource source(old);
            id3::ComposedContent content(source, both);
            QCOMPARE(content.size(), expected.size());
            const qint64 offset = random.bounded(static_cast<int>(expected.size() + 1));
            QByteArray part(random.bounded(30), '\0');
            const auto read = content.readAt({part.data(), static_cast<size_t>(part.size())}, offset);
            QVERIFY(read);
            QCOMPARE(part.first(*read), expected.mid(offset, part.size()));
        }
    }
};

QTEST_GUILESS_MAIN(TestComposedContent)
#include "tst_composedcontent.moc"
