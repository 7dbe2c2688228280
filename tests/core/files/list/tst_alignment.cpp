// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: elements of a former list are found in a new one of mostly the same order. What is found is equal, and its
// positions ascend.
#include "core/files/list/alignment.h"

#include <QRandomGenerator>
#include <QString>
#include <QTest>

using namespace ravlin;
using namespace Qt::StringLiterals;

class TestAlignment : public QObject
{
    Q_OBJECT

private:
    /// The new list with a full stop for each element not found.
    static QString found(const QString &former, const QString &now, std::size_t mostNew = NotAligned)
    {
        const std::vector<std::size_t> positions = alignedPositions(
            static_cast<std::size_t>(former.size()), static_cast<std::size_t>(now.size()),
            [&](std::size_t a, std::size_t b) {
                return former[static_cast<qsizetype>(a)] == now[static_cast<qsizetype>(b)];
            },
            mostNew);
        QString text;
        for (const std::size_t position : positions)
            text += position == NotAligned ? u'.' : former[static_cast<qsizetype>(position)];
        return text;
    }

private Q_SLOTS:
    void whatCameOrWentIsPassedOver()
    {
        QCOMPARE(found(u"abcdef"_s, u"abcdef"_s), u"abcdef"_s);
        QCOMPARE(found(u"abcdef"_s, u"bcxyef"_s), u"bc..ef"_s);
        QCOMPARE(found(u"abcdef"_s, u"xabcdefy"_s), u".abcdef."_s);
        QCOMPARE(found(u"a12345678b"_s, u"ab"_s), u"ab"_s);
        QCOMPARE(found(u"a123456789b"_s, u"ab"_s), u"a."_s); // too many in one place
        QCOMPARE(found({}, u"ab"_s), u".."_s);
        QCOMPARE(found(u"ab"_s, {}), QString());
    }

    void eachIsFoundOnceAndInOrder()
    {
        QCOMPARE(found(u"ab"_s, u"aabb"_s), u"a.b."_s);
        QCOMPARE(found(u"ab"_s, u"ba"_s), u"b."_s);
    }

    void theSearchEndsWhenTooManyAreNew()
    {
        QCOMPARE(found(u"abcd"_s, u"xaybzc"_s, 2), u".a.b.."_s);
        QCOMPARE(found(u"abcd"_s, u"xaybc"_s, 2), u".a.bc"_s);
    }

    void whateverTheListsWhatIsFoundIsTheSameAndAscends()
    {
        QRandomGenerator random(3);
        for (int round = 0; round < 1000; ++round) {
            QString former;
            QString now;
            for (QString *list : {&former, &now}) {
                for (int i = random.bounded(20); i > 0; --i)
                    *list += QChar(u'a' + random.bounded(6));
            }
            const std::vector<std::size_t> positions = alignedPositions(static_cast<std::size_t>(former.size()),
                static_cast<std::size_t>(now.size()), [&](std::size_t a, std::size_t b) {
                    return former[static_cast<qsizetype>(a)] == now[static_cast<qsizetype>(b)];
                });
            std::size_t next = 0;
            for (std::size_t i = 0; i < positions.size(); ++i) {
                if (positions[i] == NotAligned)
                    continue;
                QVERIFY(positions[i] >= next);
                QCOMPARE(former[static_cast<qsizetype>(positions[i])], now[static_cast<qsizetype>(i)]);
                next = positions[i] + 1;
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestAlignment)
#include "tst_alignment.moc"
