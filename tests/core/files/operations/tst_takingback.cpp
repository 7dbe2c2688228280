// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: whatever operations were done to a collection, one after the other, undoing them all gives every file the
// bytes, name, modification time and permissions of the beginning. RAVLIN_SEQUENCES and RAVLIN_OPERATIONS say how many
// sequences of how many operations are tried; RAVLIN_SEED which; RAVLIN_CORPUS is a folder of further files to take.

#include "core/app/batch.h"
#include "core/app/programstate.h"
#include "core/files/operations/deletion.h"
#include "core/files/operations/playlist.h"
#include "core/files/operations/undo.h"
#include "core/naming/extraction.h"
#include "core/naming/multiedit.h"
#include "core/tags/store/tagstore.h"

#include "support/filetree.h"
#include "support/mp3builder.h"
#include "support/trash.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QTest>

#include <random>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

int fromEnvironment(const char *name, int otherwise)
{
    bool isNumber = false;
    const int number = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? number : otherwise;
}

/// A collection of songs: plain, hard-linked, read-only and reached by symbolic links.
class Collection
{
public:
    Collection() : m_folder(QFileInfo(QDir::tempPath()).canonicalFilePath() + u"/takingback-XXXXXX"_s)
    {
        for (int i = 0; i < 12; ++i) {
            const QString path = in(u"cd%1/%2.mp3"_s.arg(i % 3).arg(i));
            writeFile(path, song(i));
            if (MakesLinks && i % 4 == 1)
                makeHardLink(path, in(u"linked/%1.mp3"_s.arg(i)));
            if (MakesLinks && i % 4 == 2)
                makeLink(QFile::encodeName(path), in(u"symbolic %1.mp3"_s.arg(i)));
            if (i % 4 == 3)
                QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::ReadGroup);
        }
        int number = 0;
        QDirIterator corpus(
            qEnvironmentVariable("RAVLIN_CORPUS"), {u"*.mp3"_s}, QDir::Files, QDirIterator::Subdirectories);
        while (!qEnvironmentVariableIsEmpty("RAVLIN_CORPUS") && corpus.hasNext() && number < 20)
            QFile::copy(corpus.next(), in(u"cd0/corpus %1.mp3"_s.arg(number++)));
    }

    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder.filePath(name)); }
    QString path() const { return m_folder.path(); }

    QStringList songs() const
    {
        QStringList found;
        QDirIterator all(path(), {u"*.mp3"_s}, QDir::Files | QDir::System, QDirIterator::Subdirectories);
        while (all.hasNext())
            found << QDir::toNativeSeparators(all.next());
        found.sort();
        return found;
    }
    QStringList folders() const
    {
        QStringList found;
        QDirIterator all(path(), QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (all.hasNext())
            found << QDir::toNativeSeparators(all.next());
        found.sort();
        return found;
    }
    /// Of each file its hash, time and permissions, of each link its target.
    QMap<QString, QString> state() const
    {
        QMap<QString, QString> found;
        QDirIterator all(path(), QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot,
            QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QFileInfo entry(all.next());
            const QString name = entry.filePath().sliced(path().size());
            const auto node = platform::nodeAt(QDir::toNativeSeparators(entry.filePath()));
            if (entry.isSymLink())
                found[name] = u"link "_s + entry.symLinkTarget();
            else if (entry.isDir())
                found[name] = u"folder"_s;
            else if (node)
                found[name] =
                    u"%1 %2 %3"_s.arg(node->info.modified)
                        .arg(node->info.permissions, 0, 8)
                        .arg(QString::fromLatin1(
                            QCryptographicHash::hash(contentOf(entry.filePath()), QCryptographicHash::Sha256).toHex()));
        }
        return found;
    }

private:
    static QByteArray song(int number)
    {
        QByteArray bytes;
        const int version = number % 2 == 0 ? 3 : 4;
        const QByteArray frames = textFrame(version, "TIT2", u"Title %1"_s.arg(number)) +
                                  textFrame(version, "TPE1", u"Artist"_s) + commentFrame(version, u"Comment"_s);
        if (number % 5 != 0)
            bytes += id3v2(version, frames + (number % 3 == 0 ? QByteArray() : QByteArray(500, '\0')));
        bytes += audio(10 + number);
        if (number % 3 != 0)
            bytes += id3v1({.title = "Title", .artist = "Artist"});
        return bytes;
    }
    static void makeHardLink(const QString &path, const QString &other)
    {
        QDir().mkpath(QFileInfo(other).path());
        std::error_code error;
        std::filesystem::create_hard_link(
            standardPath(platform::encodePath(path)), standardPath(platform::encodePath(other)), error);
    }

    QTemporaryDir m_folder;
};

/// Does random operations to a collection and records them.
class RandomUser
{
public:
    /// usesTrash: without it nothing is put there, nor replaced.
    RandomUser(Collection &collection, history::History &history, unsigned seed, bool usesTrash)
        : m_collection(collection), m_history(history), m_random(seed), m_store(m_state, m_fileSystem, &history),
          m_usesTrash(usesTrash)
    {
        m_state.freeMegabytes = 1'000'000;
    }

    /// Returns its name.
    QString act()
    {
        m_songs = m_collection.songs();
        if (m_songs.size() < 3 || m_collection.folders().isEmpty())
            return u"nothing, for hardly anything is left"_s;
        m_state.tagSaveMode = 1 + below(5);
        switch (below(9)) {
        case 0:
        case 1:
            return single();
        case 2:
            return multi();
        case 3:
            return extract();
        case 4:
            return removeTags();
        case 5:
            return rename();
        case 6:
            return renameFolder();
        case 7:
            return transfer();
        default:
            return below(2) == 0 && m_usesTrash ? trash() : playlist();
        }
    }

private:
    int below(int end) { return static_cast<int>(m_random() % static_cast<unsigned>(end)); }
    QString word() { return QString(1 + below(60), QChar(u'a' + below(26))); }
    QString folder()
    {
        const QStringList all = m_collection.folders();
        return all[below(static_cast<int>(all.size()))];
    }
    QStringList some(int most)
    {
        QStringList chosen = m_songs;
        std::shuffle(chosen.begin(), chosen.end(), m_random);
        return chosen.mid(0, 1 + below(most));
    }

    QString single()
    {
        const history::Operation op(&m_history, history::Kind::Single, m_collection.path());
        const QString path = some(1).front();
        auto record = m_store.readForSaving(path);
        if (!record)
            return u"single, unreadable"_s;
        record->Title = word();
        record->Comment = below(2) == 0 ? QString() : word() + QString(below(4000), u'x');
        const bool isSaved = m_store.SaveTag(path, *record).has_value();
        return u"single in mode %1: %2"_s.arg(m_state.tagSaveMode).arg(isSaved);
    }
    QString multi()
    {
        const history::Operation op(&m_history, history::Kind::Multi, m_collection.path());
        MultiEditPage page;
        page.boxes.Album = word();
        page.setsAlbum = true;
        page.boxes.Track = u"1"_s;
        page.setsTrack = true;
        MultiEdit edit(page);
        runMultiEdit(some(5), edit, m_store, m_state, {});
        return u"multi in mode %1"_s.arg(m_state.tagSaveMode);
    }
    QString extract()
    {
        const history::Operation op(&m_history, history::Kind::Extract, m_collection.path());
        runExtraction(some(5), u"%3"_s, m_store, m_state, {});
        return u"extract in mode %1"_s.arg(m_state.tagSaveMode);
    }
    QString removeTags()
    {
        const history::Operation op(&m_history, history::Kind::RemoveTags, m_collection.path());
        for (const QString &path : some(3)) {
            std::ignore = m_store.RemoveV1(path);
            std::ignore = m_store.RemoveV2(path);
        }
        return u"remove tags"_s;
    }
    QString rename()
    {
        const history::Operation op(&m_history, history::Kind::Rename, m_collection.path());
        const QStringList chosen = some(5);
        std::vector<RenameRow> rows;
        for (int i = 0; i < chosen.size(); ++i) {
            // Rings, new names, and folders to be made.
            const QString &next = chosen[(i + 1) % chosen.size()];
            const QString folder = platform::folderOf(chosen[i]);
            const QString fresh = platform::inFolder(folder, word() + u".mp3"_s);
            rows.push_back({.from = chosen[i],
                .wanted = below(3) != 0   ? next
                          : below(2) == 0 ? fresh
                                          : platform::inFolder(folder, u"new/"_s + word() + u".mp3"_s)});
        }
        RenamingPlan plan(m_fileSystem, std::move(rows));
        plan.answerAll(below(2) == 0 ? ClashAnswer::Skip : ClashAnswer::KeepBoth);
        runRenaming(m_fileSystem, plan, {}, &m_history);
        return u"rename"_s;
    }
    QString renameFolder()
    {
        const history::Operation op(&m_history, history::Kind::RenameFolder, m_collection.path());
        const QString from = folder();
        RenamingPlan plan(
            m_fileSystem, {{.from = from, .wanted = platform::inFolder(platform::folderOf(from), word())}});
        plan.answerAll(ClashAnswer::KeepBoth);
        runRenaming(m_fileSystem, plan, {}, &m_history);
        return u"rename folder"_s;
    }
    QString transfer()
    {
        const bool isCopy = below(2) == 0;
        const history::Operation op(
            &m_history, isCopy ? history::Kind::Copy : history::Kind::Move, m_collection.path());
        QStringList sources = some(4);
        if (below(4) == 0)
            sources = {folder()};
        auto plan =
            makeTransferPlan(m_fileSystem, {isCopy ? TransferKind::Copy : TransferKind::Move, sources, folder()});
        if (!plan)
            return u"transfer, impossible"_s;
        const ClashAnswer reply = std::array{ClashAnswer::Skip, ClashAnswer::KeepBoth,
            ClashAnswer::Replace}[static_cast<std::size_t>(below(m_usesTrash ? 3 : 2))];
        answerClashes(*plan, [reply](const Clash &) { return ClashDecision{reply, true}; });
        runTransfer(m_fileSystem, *plan, {}, &m_history);
        return isCopy ? u"copy"_s : u"move"_s;
    }
    QString trash()
    {
        const history::Operation op(&m_history, history::Kind::Trash, m_collection.path());
        putIntoTrash(below(3) == 0 ? QStringList{folder()} : some(2), {}, &m_history);
        return u"trash"_s;
    }
    QString playlist()
    {
        const history::Operation op(&m_history, history::Kind::Playlist, m_collection.path());
        std::ignore = WritePlaylist(m_fileSystem, platform::withEndSeparator(folder()), some(4), {}, &m_history);
        return u"playlist"_s;
    }

    Collection &m_collection;
    history::History &m_history;
    std::mt19937 m_random;
    platform::FileSystem &m_fileSystem = platform::FileSystem::native();
    ProgramState m_state;
    TagStore m_store;
    const bool m_usesTrash;
    QStringList m_songs;
};

} // namespace

class TestTakingBack : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingComesBack_data()
    {
        QTest::addColumn<unsigned>("seed");
        const int first = fromEnvironment("RAVLIN_SEED", 1);
        const int sequences = fromEnvironment("RAVLIN_SEQUENCES", 6);
        for (int i = 0; i < sequences; ++i)
            QTest::addRow("sequence %d", first + i) << static_cast<unsigned>(first + i);
    }
    void everythingComesBack();
};

void TestTakingBack::everythingComesBack()
{
    QFETCH(unsigned, seed);
    const QTemporaryDir own;
    qputenv("XDG_DATA_HOME", QFile::encodeName(own.path()));
    Collection collection;
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    history::History history(fileSystem, QDir::toNativeSeparators(own.filePath(u"history.sqlite"_s)));
    const auto before = collection.state();
    RandomUser user(collection, history, seed, givesBackFromTrash());
    const int operations = fromEnvironment("RAVLIN_OPERATIONS", 25);
    QStringList done;
    std::vector<QMap<QString, QString>> states{before};
    std::map<qint64, std::size_t> stateBefore;
    for (int i = 0; i < operations; ++i) {
        done << user.act();
        QVERIFY2(!history.problem(), qPrintable(history.problem() ? history.problem()->detail : QString()));
        if (const auto next = *history.nextUndo())
            stateBefore.emplace(next->id, states.size() - 1);
        states.push_back(collection.state());
    }
    QVERIFY(states.back() != before);
    while (const auto next = *history.nextUndo()) {
        const auto report = undo(history, fileSystem);
        QVERIFY(report.has_value());
        const std::size_t index = stateBefore.at(next->id);
        for (const FileFailure &failure : report->failures)
            qWarning("%s: %s: code %d %s", qPrintable(done[static_cast<qsizetype>(index)]), qPrintable(failure.path),
                int(failure.error.code), qPrintable(failure.error.detail));
        const auto now = collection.state();
        for (auto entry = states[index].begin(); entry != states[index].end(); ++entry) {
            if (now.value(entry.key()) != entry.value())
                qWarning("%s: %s: %s instead of %s", qPrintable(done[static_cast<qsizetype>(index)]),
                    qPrintable(entry.key()), qPrintable(now.value(entry.key())), qPrintable(entry.value()));
        }
        QVERIFY(report->failures.empty());
        for (auto entry = states[index].begin(); entry != states[index].end(); ++entry)
            QCOMPARE(now.value(entry.key()), entry.value());
    }
    auto after = collection.state();
    after.removeIf([&](const auto &entry) { return entry.value() == u"folder"_s && !before.contains(entry.key()); });
    QCOMPARE(after, before);
}

QTEST_GUILESS_MAIN(TestTakingBack)

#include "tst_takingback.moc"
