// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a song whose overwriting was interrupted is whole before anything else is done with it, whichever step
// comes next: listing its folder or the one above, reading it, saving it by either link, copying, moving or deleting it
// or the folder that it is in. One that nobody can settle is read and copied as it is, but neither saved nor moved nor
// deleted.

#include "core/files/list/folderscan.h"
#include "core/files/operations/deletion.h"
#include "core/files/operations/transfer.h"
#include "core/platform/scratchfolder.h"
#include "core/storage/leftovers.h"
#include "core/storage/safewrite.h"
#include "core/tags/store/tagstore.h"
#include "support/faultyfilesystem.h"
#include "support/mp3builder.h"

#include <QTest>

#include <unistd.h>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

FileSystem &native()
{
    return FileSystem::native();
}

/// A song of two names in a folder, and half of a save of it.
class HalfSaved
{
public:
    HalfSaved()
    {
        QDir(m_top.path()).mkpath(u"music"_s);
        QDir(m_top.path()).mkpath(u"other"_s);
        m_old = id3v2(3, textFrame(3, "TIT2", u"old"_s)) + audio(30);
        m_new = id3v2(3, textFrame(3, "TIT2", u"new"_s) + textFrame(3, "TPE1", QString(3000, u'a'))) + audio(30);
        m_song = m_top.write(u"music/song.mp3"_s, m_old);
        if (::link(encodePath(m_song), encodePath(link())) != 0)
            qFatal("the song got no second name");
        FaultyFileSystem faulty;
        // The first copy after the redo file is in place falls short; then nothing works any more.
        faulty.beforeCall = [&](Call call) {
            if (call == Call::SyncFolder)
                faulty.setPlan({.fault = Fault::Short, .at = 1, .forEver = true});
        };
        const auto saved = storage::rewriteFile(faulty, m_song, infoOf(m_song),
            {storage::Segment::fresh(m_new.first(3500)), storage::Segment::fresh(m_new.sliced(3500))});
        if (saved || saved.error().code != ErrorCode::HalfWritten || isWhole(m_song))
            qFatal("the save was not interrupted");
    }

    QString folder() const { return m_top.path(u"music"_s); }
    QString other() const { return m_top.path(u"other"_s); }
    QString song() const { return m_song; }
    QString link() const { return m_top.path(u"music/second name.mp3"_s); }
    QString redo() const { return inFolder(folder(), storage::redoName(infoOf(m_song).inode)); }
    /// Whether it holds all that one of the two saves wrote.
    bool isWhole(const QString &path) const
    {
        const QByteArray present = ScratchFolder::read(path);
        return present == m_old || present == m_new;
    }
    bool isNew(const QString &path) const { return ScratchFolder::read(path) == m_new; }
    const QByteArray &newContent() const { return m_new; }

private:
    ScratchFolder m_top;
    QByteArray m_old;
    QByteArray m_new;
    QString m_song;
};

TransferReport transfer(TransferKind kind, const QStringList &sources, const QString &folder)
{
    return runTransfer(native(), makeTransferPlan(native(), {kind, sources, folder}).value());
}

} // namespace

class TestUnfinishedSave : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nextStepFindsItWhole_data();
    void nextStepFindsItWhole();
    void whatNobodyCanSettleStays();
};

using Step = std::function<bool(const HalfSaved &)>; // true if it went well
Q_DECLARE_METATYPE(Step)

void TestUnfinishedSave::nextStepFindsItWhole_data()
{
    QTest::addColumn<Step>("step");
    const auto row = [](const char *name, const Step &step) { QTest::newRow(name) << step; };
    row("list", [](const HalfSaved &at) {
        const auto listing = ListFolder(withEndSeparator(at.folder()), {});
        return listing && listing->rows.size() == 2 && listing->rows.front().file.title() == u"new";
    });
    row("list the tree", [](const HalfSaved &at) {
        const auto listing = ListFolderTree(withEndSeparator(folderOf(at.folder())));
        return listing && listing->rows.size() == 2 && listing->rows.front().file.title() == u"new";
    });
    row("read", [](const HalfSaved &at) {
        ProgramState state;
        TagRecord record;
        return TagStore(state, native()).ReadTag(at.link(), record) && record.Title == u"new"_s;
    });
    row("copy", [](const HalfSaved &at) {
        return transfer(TransferKind::Copy, {at.song()}, at.other()).failures.empty() &&
               at.isNew(inFolder(at.other(), u"song.mp3"_s));
    });
    row("copy the folder", [](const HalfSaved &at) {
        return transfer(TransferKind::Copy, {at.folder()}, at.other()).failures.empty() &&
               at.isNew(inFolder(at.other(), u"music/second name.mp3"_s));
    });
    row("move a link", [](const HalfSaved &at) {
        return transfer(TransferKind::Move, {at.link()}, at.other()).failures.empty() &&
               at.isNew(inFolder(at.other(), u"second name.mp3"_s));
    });
    row("delete a link", [](const HalfSaved &at) {
        return deleteForGood(native(), {at.link()}).failures.empty() && !QFile::exists(at.link());
    });
    row("delete a link outside, then read", [](const HalfSaved &at) {
        ProgramState state;
        TagRecord record;
        return QFile::remove(at.link()) && TagStore(state, native()).ReadTag(at.song(), record);
    });
    row("rename outside, then clean", [](const HalfSaved &at) {
        return QFile::rename(at.link(), inFolder(at.folder(), u"renamed.mp3"_s)) &&
               storage::cleanLeftovers(native(), at.folder()).value() == 1;
    });
}

void TestUnfinishedSave::nextStepFindsItWhole()
{
    QFETCH(Step, step);
    const HalfSaved halfSaved;
    const QString redo = halfSaved.redo();
    QVERIFY(QFile::exists(redo));
    QVERIFY(step(halfSaved));
    QVERIFY(halfSaved.isNew(halfSaved.song()));
    QVERIFY(!QFile::exists(redo));
}

void TestUnfinishedSave::whatNobodyCanSettleStays()
{
    const HalfSaved halfSaved;
    const QByteArray theirs = id3v2(3, textFrame(3, "TIT2", u"theirs"_s)) + audio(40);
    QFile song(halfSaved.song());
    QVERIFY(song.open(QIODevice::WriteOnly) && song.write(theirs) == theirs.size());
    song.close();
    const QByteArray redo = ScratchFolder::read(halfSaved.redo());

    ProgramState state;
    state.freeMegabytes = 1000;
    TagStore store(state, native());
    TagRecord record;
    QVERIFY(store.ReadTag(halfSaved.song(), record));
    QCOMPARE(record.Title, u"theirs"_s);
    QVERIFY(transfer(TransferKind::Copy, {halfSaved.song()}, halfSaved.other()).failures.empty());
    QCOMPARE(ListFolder(withEndSeparator(halfSaved.folder()), {})->rows.size(), size_t(2));

    record.Title = u"another"_s;
    QCOMPARE(store.SaveTag(halfSaved.song(), record).error().code, ErrorCode::Interrupted);
    const auto moved = transfer(TransferKind::Move, {halfSaved.link()}, halfSaved.other());
    QCOMPARE(moved.failures.size(), size_t(1));
    QCOMPARE(moved.failures.front().error.code, ErrorCode::Interrupted);
    QCOMPARE(deleteForGood(native(), {halfSaved.link()}).failures.size(), size_t(1));
    QCOMPARE(putIntoTrash({halfSaved.link()}).failures.size(), size_t(1));
    QCOMPARE(ScratchFolder::read(halfSaved.song()), theirs);
    QCOMPARE(ScratchFolder::read(halfSaved.redo()), redo);
}

QTEST_GUILESS_MAIN(TestUnfinishedSave)
#include "tst_unfinishedsave.moc"
