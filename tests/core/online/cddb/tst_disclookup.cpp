// SPDX-License-Identifier: GPL-3.0-or-later
// Looking up files: they are measured, then their disc is looked up in the order set at that moment. A search replaces
// this question. Files that do not make a disc are reported and nothing is asked.
#include "core/app/programstate.h"
#include "core/app/settings.h"
#include "core/online/cddb/disclookup.h"
#include "core/online/cddb/ufreedb.h"
#include "support/cddbserver.h"
#include "support/cddbtest.h"
#include "support/gatedfilesystem.h"
#include "support/mp3builder.h"

#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestDiscLookup : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<CddbServer> m_server;
    std::unique_ptr<Settings> m_settings;
    std::unique_ptr<DiscLookup> m_lookup;
    QStringList m_told;

    void tell(const QString &what) { m_told << what; }
    QString file(const QString &name, const QByteArray &content) { return writeFile(m_folder->path(), name, content); }
    /// Two files of 60 and 10 seconds.
    QStringList twoFiles() { return {file(u"a.mp3"_s, cdTrack(4500)), file(u"b.mp3"_s, cdTrack(750))}; }
    void make(const QStringList &paths, platform::FileSystem &fileSystem = platform::FileSystem::native())
    {
        m_lookup = std::make_unique<DiscLookup>(*m_settings, fileSystem, nullptr);
        m_lookup->setFiles(paths);
        const DiscLookup *lookup = m_lookup.get();
        connect(lookup, &DiscLookup::measured, this,
            [this](int index, const PlayedAudio &played) { tell(u"%1 plays %2"_s.arg(index).arg(played.frames())); });
        connect(lookup, &DiscLookup::notMeasured, this, [this](int index) { tell(u"%1 does not play"_s.arg(index)); });
        connect(lookup, &DiscLookup::measuring, this,
            [this](int done, int count) { tell(u"%1 of %2"_s.arg(done).arg(count)); });
        connect(lookup, &DiscLookup::measuringEnded, this, [this] { tell(u"measured"_s); });
        connect(lookup, &DiscLookup::askingBegan, this, [this] { tell(u"asking"_s); });
        connect(lookup, &DiscLookup::incomplete, this,
            [this](int index, const Error &) { tell(u"incomplete by %1"_s.arg(index)); });
        connect(lookup, &DiscLookup::notFound, this, [this] { tell(u"not found"_s); });
        connect(lookup, &DiscLookup::choiceOffered, this, [this] { tell(u"choice"_s); });
        connect(lookup, &DiscLookup::recordRead, this, [this](const DiscRecord &record) { tell(record.album); });
        connect(lookup, &DiscLookup::failed, this,
            [this](const LookupFailure &failure) { tell(u"failure %1"_s.arg(static_cast<int>(failure.kind))); });
    }
    void waitFor(const QString &last)
    {
        waitUntil([&] { return m_told.value(m_told.size() - 1) == last; });
        QCOMPARE(m_told.value(m_told.size() - 1), last);
    }

private Q_SLOTS:
    void init()
    {
        leaveProxiesOut();
        m_folder = std::make_unique<QTemporaryDir>();
        m_server = std::make_unique<CddbServer>();
        m_settings = std::make_unique<Settings>(m_folder->filePath(u"ravlin.ini"_s));
        m_settings->write(settingskey::Servidor, m_server->hostAndPort());
        m_told.clear();
    }
    void cleanup() { m_lookup.reset(); }

    void filesAreMeasuredAndThenTheirDiscIsAskedFor()
    {
        make(twoFiles());
        m_lookup->begin();
        waitFor(u"not found"_s);
        QCOMPARE(m_told, (QStringList{u"0 of 2"_s, u"0 plays 4500"_s, u"1 of 2"_s, u"1 plays 750"_s, u"2 of 2"_s,
                             u"measured"_s, u"asking"_s, u"not found"_s}));
        QCOMPARE(m_server->commands().size(), 1);
        QVERIFY(m_server->commands().constFirst().endsWith(" 2 150 4650 72"));
        QVERIFY(!m_lookup->isAsking());
    }

    void theOrderOfThatMomentCounts()
    {
        make(twoFiles());
        m_lookup->begin();
        m_lookup->setOrder({1, 0});
        QVERIFY(!m_lookup->contents()); // not measured yet
        waitFor(u"not found"_s);
        QVERIFY(m_server->commands().constFirst().endsWith(" 2 150 900 72"));
        QCOMPARE(m_lookup->contents().value().frameOffsets(), (std::vector<qint64>{150, 900}));
    }

    void whatIsFoundIsTheDisc()
    {
        const std::vector<qint64> &marks = CddbServer::discs().back().marks;
        make({file(u"a.mp3"_s, cdTrack(marks[1] - marks[0])), file(u"b.mp3"_s, cdTrack(marks[2] - marks[1]))});
        m_lookup->begin();
        waitFor(CddbServer::discs().back().album);
    }

    void theFirstFileThatDoesNotPlayKeepsTheDiscFromBeingAskedFor()
    {
        make({file(u"a.mp3"_s, cdTrack(750)), file(u"b.mp3"_s, "nothing"), file(u"c.mp3"_s, "nothing")});
        m_lookup->begin();
        waitFor(u"incomplete by 1"_s);
        QVERIFY(m_told.contains(u"2 does not play"_s));
        QVERIFY(m_server->requests().isEmpty());
        QVERIFY(!m_lookup->contents());
    }

    void moreFilesThanTracksAreNotMeasured()
    {
        make(QStringList(MaximumTracks + 1, file(u"a.mp3"_s, cdTrack(750))));
        m_lookup->begin();
        QCOMPARE(m_told, QStringList{u"failure %1"_s.arg(static_cast<int>(LookupFailureKind::BadContents))});
    }

    void aSearchTakesTheQuestionsPlaceAndTheFilesAreMeasuredAllTheSame()
    {
        GatedFileSystem gate;
        make(twoFiles(), gate);
        m_lookup->begin();
        m_lookup->search(u"Marie L'Été"_s);
        QVERIFY(m_lookup->isAsking());
        waitFor(u"Côte d'Hiver"_s);
        gate.letThrough(2);
        waitFor(u"measured"_s);
        QCOMPARE(m_told, (QStringList{u"0 of 2"_s, u"asking"_s, u"Côte d'Hiver"_s, u"0 plays 4500"_s, u"1 plays 750"_s,
                             u"measured"_s}));
        for (const QByteArray &command : m_server->commands())
            QVERIFY2(!command.startsWith("cddb query"), command.constData());
    }

    void aTextWithoutWordsIsNoSearch()
    {
        make(twoFiles());
        m_lookup->search(u" / "_s);
        QVERIFY(!m_lookup->isAsking());
        m_lookup->begin();
        waitFor(u"not found"_s); // and has replaced no question
    }

    void severalMatchesAreAChoice()
    {
        make({});
        m_lookup->search(u"The Quiet Three"_s);
        waitFor(u"choice"_s);
        QCOMPARE(m_lookup->database().result(), 2);
    }

    void whatIsCancelledTellsNothingMore()
    {
        m_server->setFault(Fault::Silence);
        make(twoFiles());
        m_lookup->begin();
        waitFor(u"asking"_s);
        m_lookup->cancel();
        QVERIFY(!m_lookup->isAsking());
        QCOMPARE(m_told.constLast(), u"asking"_s);
    }
};

QTEST_GUILESS_MAIN(TestDiscLookup)
#include "tst_disclookup.moc"
