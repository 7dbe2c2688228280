// SPDX-License-Identifier: GPL-3.0-or-later
// A row whose file lies outside the listed folder, because a link leads there, has a note that tells where. All other
// rows have none.

#include "core/app/idiomas.h"
#include "core/files/list/linknote.h"
#include "core/platform/filesystem.h"
#include "support/links.h"
#include "support/mp3builder.h"
#include "support/nativepath.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestLinkNote : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    Captions m_captions;

    QString at(const QString &name) const
    {
        return native(QFileInfo(m_folder.path()).canonicalFilePath() + u'/' + name);
    }
    QString music() const { return at(u"music"_s); }
    QString note(const QString &rowText) const
    {
        return linkNote(m_captions, platform::FileSystem::native(), music(), native(rowText));
    }
    bool link(const QString &target, const QString &name) const { return symbolicLink(target, at(name)); }
    static QString told(const QString &path) { return u"a link out of this folder, to "_s + path; }

private Q_SLOTS:
    void initTestCase()
    {
        m_captions.fill();
        for (const char *folder : {"music/below", "home"})
            QVERIFY(QDir(m_folder.path()).mkpath(QLatin1String(folder)));
        for (const char *name : {"music/a.mp3", "music/below/b.mp3", "home/.profile", "home/c.mp3", "music2.mp3"})
            writeFile(m_folder.path(), QLatin1String(name), audio());
    }

    void anOrdinaryFileHasNone()
    {
        QCOMPARE(note(u"a.mp3"_s), QString());
        QCOMPARE(note(u"below/b.mp3"_s), QString());
        QCOMPARE(note(u"is not there.mp3"_s), QString());
    }

    void aLinkIsToldOfIfItLeadsOut()
    {
        if (!link(u"../home/.profile"_s, u"music/Band - Song.mp3"_s))
            QSKIP("no symbolic links here");
        QVERIFY(link(u"Band - Song.mp3"_s, u"music/second.mp3"_s));
        QVERIFY(link(u"below/b.mp3"_s, u"music/inside.mp3"_s));
        QVERIFY(link(u"../music2.mp3"_s, u"music/beside.mp3"_s));
        QVERIFY(link(u"../home"_s, u"music/folder"_s));
        QCOMPARE(note(u"Band - Song.mp3"_s), told(at(u"home/.profile"_s)));
        QCOMPARE(note(u"second.mp3"_s), told(at(u"home/.profile"_s)));
        QCOMPARE(note(u"inside.mp3"_s), QString());
        QCOMPARE(note(u"beside.mp3"_s), told(at(u"music2.mp3"_s)));
        QCOMPARE(note(u"folder/c.mp3"_s), told(at(u"home/c.mp3"_s)));
        QVERIFY(QFile::remove(at(u"home/.profile"_s)));
        QCOMPARE(note(u"Band - Song.mp3"_s), QString());
    }

    void theListedFolderMayBeALinkItself()
    {
        if (!link(u"music"_s, u"linked"_s))
            QSKIP("no symbolic links here");
        const QString folder = native(m_folder.filePath(u"linked/"_s));
        QCOMPARE(linkNote(m_captions, platform::FileSystem::native(), folder, u"a.mp3"_s), QString());
    }

    void aLongPathLosesItsMiddle()
    {
        QString deep = u"home"_s;
        for (int i = 0; i < 10; ++i)
            deep += u'/' + QString(40, u'\u00E9');
        QVERIFY(QDir(m_folder.path()).mkpath(deep));
        writeFile(m_folder.path(), deep + u"/end.mp3"_s, audio());
        if (!link(u"../"_s + deep + u"/end.mp3"_s, u"music/deep.mp3"_s))
            QSKIP("no symbolic links here");
        const QString text = note(u"deep.mp3"_s);
        QVERIFY2(text.size() < 250, qPrintable(text));
        QVERIFY(text.startsWith(told(at(u"home"_s))));
        QVERIFY(text.contains(u'\u2026'));
        QVERIFY(text.endsWith(u"end.mp3"_s));
    }
};

QTEST_GUILESS_MAIN(TestLinkNote)
#include "tst_linknote.moc"
