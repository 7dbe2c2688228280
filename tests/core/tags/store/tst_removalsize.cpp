// SPDX-License-Identifier: GPL-3.0-or-later
// What it would take to record that tags are removed: exact for little, and a cover that many files share counts once.
// Claims of broken files count no more than the file has.

#include "core/tags/store/removalsize.h"
#include "support/mp3builder.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestRemovalSize : public QObject
{
    Q_OBJECT

private:
    static constexpr qint64 Cover = 300'000;

    QTemporaryDir m_folder;

    QString add(const QString &name, const QByteArray &tag) const
    {
        return writeFile(m_folder.path(), name, tag + audio());
    }
    /// A tag with a title of its own length and a cover of bytes made from one.
    static QByteArray tagged(int titleLength, char coverByte)
    {
        QByteArray picture = pictureFrame(3, Cover);
        picture.replace(picture.size() - Cover / 2, 1000, QByteArray(1000, coverByte));
        return id3v2(3, textFrame(3, "TIT2", QString(titleLength, u'x')) + picture);
    }
    static qint64 size(const QStringList &paths, qint64 worthwhile)
    {
        return removalSize(platform::FileSystem::native(), paths, worthwhile);
    }

private Q_SLOTS:
    void aLittleIsCountedExactly()
    {
        const QByteArray one = tagged(3, 'a');
        const QByteArray other = tagged(30, 'a');
        const QStringList paths{add(u"a.mp3"_s, one), add(u"b.mp3"_s, other), add(u"c.mp3"_s, {}),
            m_folder.filePath(u"gone.mp3"_s), m_folder.path()};
        QCOMPARE(size(paths, 1'000'000), one.size() + other.size());
    }

    void aSharedCoverCountsOnce()
    {
        QStringList paths;
        for (int i = 0; i < 20; ++i)
            paths << add(u"%1.mp3"_s.arg(i), tagged(i, 'a'));
        const qint64 shared = size(paths, 1);
        QVERIFY2(shared > Cover && shared < Cover + 20 * 2000, qPrintable(QString::number(shared)));
    }

    void coversOfTheSameSizeAreToldApart()
    {
        QStringList paths;
        for (int i = 0; i < 20; ++i)
            paths << add(u"%1.mp3"_s.arg(i), tagged(3, char('a' + i)));
        QVERIFY(size(paths, 1) > 20 * Cover);
    }

    void aClaimCountsNoMoreThanTheFile()
    {
        const QByteArray claims("ID3\x03\0\0\x7f\x7f\x7f\x7f", 10);
        const QString path = add(u"a.mp3"_s, claims);
        QVERIFY(size({path}, 1) <= QFile(path).size());
    }
};

QTEST_APPLESS_MAIN(TestRemovalSize)
#include "tst_removalsize.moc"
