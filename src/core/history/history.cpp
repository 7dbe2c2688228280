// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/history/history.h"

#include "core/history/encoding.h"
#include "core/history/spool.h"
#include "core/history/store.h"
#include "core/platform/path.h"
#include "core/storage/recorder.h"

#include <QDateTime>
#include <QDir>
#include <QStandardPaths>

#include <array>
#include <numeric>
#include <tuple>

namespace ravlin::history {
namespace {

constexpr qint64 MillisecondsPerDay = 24LL * 60 * 60 * 1000;
constexpr qint64 BytesPerMegabyte = 1024LL * 1024;
constexpr int MostSetAside = 10;
constexpr std::size_t MostSpooled = 256;       ///< changes
constexpr qint64 LargestSpooled = 64LL * 1024; ///< bytes of one change

qint64 now()
{
    return QDateTime::currentMSecsSinceEpoch();
}

qint64 lostBytes(const storage::ChangeRecord &change)
{
    return std::accumulate(change.inverse.begin(), change.inverse.end(), qint64(0),
        [](qint64 sum, const storage::Segment &segment) { return sum + segment.bytes.size(); });
}

/// The folder of the database, with those above it.
Result<void> makeFolder(const QString &path)
{
    const QString folder = platform::folderOf(path);
    if (QDir(folder).exists() || QDir().mkpath(folder))
        return {};
    return tl::unexpected(Error{ErrorCode::AccessDenied, folder, QStringLiteral("the folder can't be made")});
}

} // namespace

QString kindName(Kind kind)
{
    constexpr std::array<QStringView, 12> Names{u"single", u"multi", u"extract", u"lookup", u"remove-tags", u"rename",
        u"rename-folder", u"copy", u"move", u"trash", u"delete", u"playlist"};
    const auto index = static_cast<std::size_t>(kind);
    return index < Names.size() ? Names[index].toString() : QString(); // a newer version's
}

QString History::defaultPath()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return QDir::toNativeSeparators(folder + QStringLiteral("/ravlin/history.sqlite"));
}

History::History(platform::FileSystem &fileSystem, QString path) : m_fileSystem(fileSystem), m_path(std::move(path)) {}

History::~History()
{
    const bool isUnfinished = m_hasUnfinished || m_openTemporary > 0 || !m_begun.empty();
    if (m_store)
        std::ignore = change([&](Store &store) { return isUnfinished ? Result<void>() : store.removeRun(m_runName); });
}

void History::setLimits(int days, int megabytes)
{
    m_mostAge = days * MillisecondsPerDay;
    m_mostBytes = megabytes * BytesPerMegabyte;
}

const std::optional<Error> &History::problem() const
{
    return m_problem;
}

void History::fail(const Error &error)
{
    if (!m_problem)
        m_problem = error;
    if (!m_summary.problem)
        m_summary.problem = error;
}

Result<void> History::setAside()
{
    m_store.reset();
    m_queue.clear();
    m_stored.clear();
    m_endings.clear();
    m_endedTemporary.clear();
    m_isRunRecorded = false;
    m_summary.entry.id = 0;
    const auto folder = m_fileSystem.openFolder(platform::folderOf(m_path));
    if (!folder)
        return tl::unexpected(folder.error());
    const QString name = platform::nameOf(m_path);
    for (const QString &companion : {name + QStringLiteral("-wal"), name + QStringLiteral("-shm")})
        std::ignore = (*folder)->remove(companion);
    Result<void> moved;
    for (int number = 1; number <= MostSetAside; ++number) {
        const QString aside = QStringLiteral("%1.damaged-%2").arg(name).arg(number);
        moved = (*folder)->renameNew(name, **folder, aside);
        if (moved || moved.error().code != ErrorCode::AlreadyExists)
            break;
    }
    return moved;
}

Result<void> History::open()
{
    auto store = makeFolder(m_path).and_then([this] { return Store::open(m_path); });
    if (!store && store.error().code == ErrorCode::Damaged)
        store = setAside().and_then([this] { return Store::open(m_path); });
    if (!store)
        return tl::unexpected(store.error());
    m_store = std::move(*store);
    return {};
}

Store *History::store(bool isToBeMade)
{
    if (m_store)
        return m_store.get();
    if (m_path.isEmpty() || (!isToBeMade && !m_fileSystem.info(m_path)))
        return nullptr;
    if (const auto opened = open(); !opened) {
        fail(opened.error());
        return nullptr;
    }
    m_problem.reset();
    return m_store.get();
}

Result<void> History::change(const std::function<Result<void>(Store &)> &work)
{
    Store *const open = store(true);
    if (open == nullptr)
        return tl::unexpected(m_problem.value_or(Error{ErrorCode::NotFound, m_path, {}}));
    m_newEntry = 0;
    std::map<Ticket, qint64> stored;
    const auto all = [&] { return flush(*open, stored).and_then([&] { return work(*open); }); };
    auto done = open->database().transaction(all);
    if (done) {
        if (m_newEntry != 0)
            m_summary.entry.id = m_newEntry;
        m_stored.merge(stored);
        m_endings.clear();
        m_endedTemporary.clear();
        if (m_spool && !m_queue.empty())
            std::ignore = m_spool->clear(); // what stays in it is known to be taken
        m_queue.clear();
        return done;
    }
    if (done.error().code == ErrorCode::Damaged)
        std::ignore = setAside(); // the next change begins a new one
    fail(done.error());
    return done;
}

Result<void> History::flush(Store &store, std::map<Ticket, qint64> &stored)
{
    for (const SpooledChange &spooled : m_queue) {
        if (spooled.isEnded && (!spooled.done || spooled.time == 0))
            continue;
        const auto entry = spooled.time == 0 ? Result<qint64>(0) : currentEntry(store);
        const auto id = entry.and_then([&](qint64 of) {
            return store.addChange(of, spooled.change, spooled.encoded, spooled.reverted, m_runName,
                spooled.done ? &*spooled.done : nullptr);
        });
        if (!id)
            return tl::unexpected(id.error());
        if (!spooled.isEnded)
            stored.emplace(-spooled.number, *id);
    }
    if (!m_queue.empty()) {
        if (auto taken = store.setTaken(m_runName, m_lastNumber); !taken)
            return taken;
    }
    for (const Ending &ending : m_endings) {
        if (auto ended = store.end(ending); !ended)
            return ended;
    }
    for (const qint64 id : m_endedTemporary) {
        if (auto ended = store.removeTemporary(id); !ended)
            return ended;
    }
    return {};
}

bool History::startRun()
{
    if (m_run && m_isRunRecorded)
        return true;
    if (!m_run) {
        auto file = makeFolder(m_path).and_then(
            [this] { return storage::TemporaryFile::create(m_fileSystem, platform::folderOf(m_path)); });
        if (!file) {
            fail(file.error());
            return false;
        }
        m_run = std::make_unique<storage::TemporaryFile>(std::move(*file));
        m_runName = platform::nameOf(m_run->path());
        m_spool = std::make_unique<Spool>(m_run->file());
    }
    // From now on others know that it may leave something.
    m_isRunRecorded = change([this](Store &store) { return store.addRun(m_runName); }).has_value();
    return m_isRunRecorded;
}

QString History::wholePath(const QString &path)
{
    const QString folder = platform::folderPrefix(path);
    const QString name = platform::nameOf(path);
    if (name.isEmpty())
        return storage::recordedPath(m_fileSystem, path);
    auto known = m_folders.find(folder);
    if (known == m_folders.end())
        known = m_folders.insert(folder, platform::folderOf(storage::recordedPath(m_fileSystem, path)));
    return platform::inFolder(*known, name);
}

Result<qint64> History::currentEntry(Store &store)
{
    if (!m_isRecording || !m_isOpen)
        return 0;
    if (m_summary.entry.id != 0)
        return m_summary.entry.id;
    if (m_newEntry != 0)
        return m_newEntry;
    return store.addEntry(m_summary.entry.time, m_summary.entry.kind, m_summary.entry.folder, m_reverts)
        .map([this](qint64 id) { return m_newEntry = id; });
}

void History::beginEntry(Kind kind, const QString &folder)
{
    std::ignore = recover();
    m_problem.reset();
    m_summary = {};
    m_summary.entry.time = now();
    m_summary.entry.kind = kind;
    m_summary.entry.folder = m_fileSystem.canonicalPath(folder).value_or(folder); // as the paths of its files
    m_isOpen = true;
    m_reverts = 0;
    m_reverting = 0;
}

void History::addFailure(const QString &path, const Error &error)
{
    ++m_summary.failedCount;
    if (static_cast<qsizetype>(m_summary.files.size()) >= Summary::MostFiles)
        return;
    FileRecord record;
    record.state = FileState::Failed;
    record.path = path;
    record.error = error;
    m_summary.files.push_back(std::move(record));
}

void History::addChangedByOther(const QString &path)
{
    m_summary.changedByOthers.append(path);
}

std::optional<storage::Journal::Ticket> History::begin(const storage::ChangeRecord &given)
{
    // Whoever finishes or takes it back may be in another folder.
    storage::ChangeRecord record = given;
    for (QString *path : {&record.path, &record.newPath, &record.aside})
        *path = wholePath(*path);
    if (record.isFolder)
        m_folders.clear(); // those in it go with it
    const qint64 reverted = m_reverts != 0 ? std::exchange(m_reverting, 0) : 0;
    FileRecord shown;
    shown.change = record.kind;
    shown.path = record.path;
    shown.newPath = record.newPath;
    shown.values = record.values;
    // Old or new after a kill, so there is nothing to finish, and nobody wants it taken back.
    const bool isNeedless =
        !m_isRecording && record.kind == storage::ChangeKind::Content && record.way == storage::ContentWay::OneStep;
    const bool isSpooled =
        record.way != storage::ContentWay::Patches && !m_nextIsDurable && lostBytes(record) <= LargestSpooled;
    std::optional<Ticket> ticket;
    if (!isNeedless && !m_summary.problem && startRun())
        ticket = isSpooled ? beginSpooled(std::move(record), reverted) : beginStored(record, reverted);
    if (!ticket) {
        // Without a record it still belongs to what the user is told.
        ++m_summary.doneCount;
        if (static_cast<qsizetype>(m_summary.files.size()) < Summary::MostFiles)
            m_summary.files.push_back(std::move(shown));
        return std::nullopt;
    }
    if (const auto found = m_toRevert.find(reverted); found != m_toRevert.end())
        shown = found->second;
    m_begun.emplace(*ticket, std::move(shown));
    return ticket;
}

std::optional<storage::Journal::Ticket> History::beginSpooled(storage::ChangeRecord &&record, qint64 reverted)
{
    if (m_queue.size() >= MostSpooled && !change([](Store &) { return Result<void>(); }))
        return std::nullopt;
    SpooledChange spooled;
    spooled.number = ++m_lastNumber;
    spooled.entry = m_summary.entry.id;
    spooled.time = m_isRecording && m_isOpen ? m_summary.entry.time : 0;
    spooled.kind = m_summary.entry.kind;
    spooled.folder = m_summary.entry.folder;
    spooled.reverts = m_reverts;
    spooled.reverted = reverted;
    spooled.encoded = EncodedParts(record);
    spooled.change = std::move(record);
    spooled.change.written.clear();
    spooled.change.values.clear();
    if (const auto appended = m_spool->append(spooled); !appended) {
        fail(appended.error());
        return std::nullopt;
    }
    m_queue.push_back(std::move(spooled));
    return -m_lastNumber;
}

std::optional<storage::Journal::Ticket> History::beginStored(const storage::ChangeRecord &record, qint64 reverted)
{
    const bool isDurable = record.way == storage::ContentWay::Patches || m_nextIsDurable;
    if (isDurable && m_store)
        std::ignore = m_store->setDurable(true);
    qint64 row = 0;
    const auto added = change([&](Store &store) {
        return currentEntry(store)
            .and_then(
                [&](qint64 entry) { return store.addChange(entry, record, EncodedParts(record), reverted, m_runName); })
            .map([&](qint64 id) { row = id; });
    });
    if (isDurable && m_store)
        std::ignore = m_store->setDurable(false);
    if (!added)
        return std::nullopt;
    m_nextIsDurable = false;
    if (record.way == storage::ContentWay::Patches)
        m_durable.insert(row);
    return row;
}

void History::end(Ticket ticket, const Result<storage::ChangeDone> &done)
{
    auto found = m_begun.extract(ticket);
    if (found.empty())
        return;
    m_nextIsDurable = m_durable.erase(ticket) != 0 || m_nextIsDurable;
    const auto spooled = std::find_if(
        m_queue.rbegin(), m_queue.rend(), [&](const SpooledChange &change) { return change.number == -ticket; });
    if (spooled != m_queue.rend()) {
        spooled->isEnded = true;
        spooled->done = done ? std::optional(*done) : std::nullopt;
        m_spool->noteEnd(*spooled);
    } else {
        const auto stored = m_stored.extract(ticket);
        const bool isKept = done && m_summary.entry.id != 0;
        m_endings.push_back({stored.empty() ? ticket : stored.mapped(), isKept ? std::optional(*done) : std::nullopt});
    }
    if (!done)
        return;
    ++m_summary.doneCount;
    if (static_cast<qsizetype>(m_summary.files.size()) < Summary::MostFiles)
        m_summary.files.push_back(std::move(found.mapped()));
}

std::optional<storage::Journal::Ticket> History::beginTemporary(const QString &folder, const QString &name)
{
    if (m_summary.problem || !startRun())
        return std::nullopt;
    const QString whole = m_fileSystem.canonicalPath(folder).value_or(folder);
    qint64 id = 0;
    const auto added = change(
        [&](Store &store) { return store.addTemporary(whole, name, m_runName).map([&](qint64 row) { id = row; }); });
    m_openTemporary += added ? 1 : 0;
    return added ? std::optional(id) : std::nullopt;
}

void History::endTemporary(Ticket ticket)
{
    --m_openTemporary;
    m_endedTemporary.push_back(ticket);
}

Summary History::close()
{
    m_isOpen = false;
    m_hasUnfinished = m_hasUnfinished || !m_begun.empty();
    m_begun.clear();
    m_queue.clear(); // what the database did not take; it must not get into the next entry
    m_folders.clear();
    m_toRevert.clear();
    m_moves.reset();
    m_reverts = 0;
    return std::exchange(m_summary, {});
}

Summary History::endEntry()
{
    if (!m_isOpen)
        return {};
    m_summary.entry.fileCount = m_summary.doneCount;
    const bool hasWaiting = !m_queue.empty() || !m_endings.empty() || !m_endedTemporary.empty();
    if (m_store && (m_summary.entry.id != 0 || hasWaiting)) {
        std::ignore = change([this](Store &store) -> Result<void> {
            const qint64 entry = m_newEntry != 0 ? m_newEntry : m_summary.entry.id;
            if (entry == 0)
                return {};
            for (const FileRecord &file : m_summary.files) {
                if (!file.error)
                    continue;
                if (auto added = store.addFailure(entry, file.path, *file.error); !added)
                    return added;
            }
            return {};
        });
    }
    if (m_store && m_summary.entry.id != 0 && m_mostBytes > 0)
        std::ignore = change([this](Store &store) { return store.prune(now() - m_mostAge, m_mostBytes); });
    if (m_summary.doneCount == 0)
        m_summary.entry.id = 0;
    return close();
}

Result<void> History::forgetAll()
{
    if (store(false) == nullptr)
        return m_problem ? Result<void>(tl::unexpected(*m_problem)) : Result<void>();
    return change([](Store &store) { return store.forgetAll(); });
}

} // namespace ravlin::history
