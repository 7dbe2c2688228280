// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/renaming/renamingdraft.h"

#include "core/platform/path.h"

#include <algorithm>
#include <utility>

namespace ravlin {

namespace {

/// The name as a file system that ignores case compares it, nearly: what it misses, the rename itself finds taken.
QString folded(const QString &name)
{
    return name.normalized(QString::NormalizationForm_C).toCaseFolded();
}

QString withOtherCase(const QString &name)
{
    QString other = name;
    for (QChar &c : other) {
        if (c >= u'a' && c <= u'z')
            c = c.toUpper();
        else if (c >= u'A' && c <= u'Z')
            c = c.toLower();
    }
    return other;
}

} // namespace

RenamingPlan::Draft::Draft(platform::FileSystem &fileSystem, std::vector<RenameWish> wishes)
    : answers(wishes.size()), m_fileSystem(fileSystem), m_wishes(std::move(wishes)), m_source(m_wishes.size()),
      m_wanted(m_wishes.size()), m_isFixed(m_wishes.size(), false), m_target(m_wishes.size(), None),
      m_moves(m_wishes.size(), false)
{
    rows.reserve(m_wishes.size());
    for (const RenameWish &wish : m_wishes) {
        rows.push_back({.state = wish.problem ? RenameState::Refused : RenameState::Untouched,
            .from = wish.from,
            .wanted = wish.to,
            .path = wish.from,
            .isAdjusted = wish.isAdjusted,
            .problem = wish.problem});
    }
    // Whose names are taken away has to be known before it is asked which are free.
    const int count = static_cast<int>(rows.size());
    const bool hasWork = std::ranges::any_of(m_wishes, [](const RenameWish &wish) { return wish.from != wish.to; });
    for (int row = 0; row < count && hasWork; ++row)
        m_isFixed[row] = !placeSource(row);
    for (int row = 0; row < count && hasWork; ++row)
        m_isFixed[row] = m_isFixed[row] || !placeTarget(row);
    if (!hasWork)
        m_isFixed.assign(m_isFixed.size(), true);
    resolve();
}

void RenamingPlan::Draft::refuse(int row, ErrorCode code, const QString &path, const QString &detail)
{
    rows[row].state = RenameState::Refused;
    rows[row].error = Error{code, path, detail};
}

/// The folder of a path, by its number. sourceFolder: the one that the file is in, None when that is asked for.
int RenamingPlan::Draft::folderOf(const QString &path, int sourceFolder)
{
    // Most rows are in the folder of the row before.
    const qsizetype start = platform::nameStart(path);
    if (m_lastFolder != None && start == m_lastSpelling.size() && path.startsWith(m_lastSpelling))
        return m_lastFolder;
    const QString spelled = path.first(start);
    const auto known = m_folderOfSpelling.constFind(spelled);
    m_lastFolder = known != m_folderOfSpelling.cend() ? *known : addFolder(spelled, sourceFolder);
    m_lastSpelling = spelled;
    m_folderOfSpelling.insert(spelled, m_lastFolder);
    return m_lastFolder;
}

int RenamingPlan::Draft::addFolder(const QString &spelled, int sourceFolder)
{
    FolderNames folder;
    folder.ignoresCase = sourceFolder != None && m_folders[sourceFolder].ignoresCase;
    const QString path = spelled.isEmpty() ? QStringLiteral(".") : spelled;
    // The missing end of the path is kept as it is spelled.
    QString existing = platform::withoutEndSeparator(path);
    QString missing;
    Result<QString> canonical = m_fileSystem.canonicalPath(existing);
    while (!canonical && canonical.error().code == ErrorCode::NotFound) {
        const qsizetype start = platform::nameStart(existing);
        if (start == 0 || start == existing.size())
            break;
        missing.prepend(platform::Separator + existing.sliced(start));
        existing = platform::folderOf(existing);
        canonical = m_fileSystem.canonicalPath(existing);
    }
    folder.canonical = canonical.value_or(existing) + (folder.ignoresCase ? folded(missing) : missing);
    if (const auto known = m_folderOfCanonical.constFind(folder.canonical); known != m_folderOfCanonical.cend())
        return *known;
    folder.exists = canonical.has_value() && missing.isEmpty();
    if (const auto info = m_fileSystem.info(existing); info && !info->isFolder)
        folder.error = Error{ErrorCode::NotAFile, path, QStringLiteral("not a folder")};
    const int number = static_cast<int>(m_folders.size());
    m_folderOfCanonical.insert(folder.canonical, number);
    m_folders.push_back(std::move(folder));
    return number;
}

/// probeName: a name that is in the folder, to find out whether the folder ignores case; may be empty.
void RenamingPlan::Draft::listFolder(FolderNames &folder, const QString &probeName)
{
    folder.isListed = true;
    if (!folder.exists)
        return;
    const Result<std::vector<QString>> names = m_fileSystem.names(folder.canonical);
    if (!names) {
        if (!folder.error)
            folder.error = names.error();
        return;
    }
    const QString probe = probeName.isEmpty() && !names->empty() ? names->front() : probeName;
    if (const QString other = withOtherCase(probe); other != probe) {
        const QString path = platform::inFolder(folder.canonical, other);
        folder.ignoresCase = std::ranges::find(*names, other) == names->end() && m_fileSystem.info(path).has_value();
    }
    folder.slots_.reserve(static_cast<qsizetype>(names->size()) * 2);
    m_slots.reserve(m_slots.size() + names->size() * 2);
    for (const QString &name : *names) {
        folder.slots_.insert(folder.ignoresCase ? folded(name) : name, static_cast<int>(m_slots.size()));
        m_slots.push_back({.exists = true});
    }
}

int RenamingPlan::Draft::slotOf(int folder, const QString &name)
{
    FolderNames &names = m_folders[folder];
    if (!names.isListed)
        listFolder(names, {});
    const QString key = names.ignoresCase ? folded(name) : name;
    const auto found = names.slots_.constFind(key);
    if (found != names.slots_.cend())
        return *found;
    const int slot = static_cast<int>(m_slots.size());
    names.slots_.insert(key, slot);
    m_slots.push_back({});
    return slot;
}

/// False: the row's file can't be renamed at all.
bool RenamingPlan::Draft::placeSource(int row)
{
    const QString &from = m_wishes[row].from;
    const int folder = folderOf(from, None);
    const QString name = platform::nameOf(from);
    if (!m_folders[folder].isListed)
        listFolder(m_folders[folder], name);
    const int slot = slotOf(folder, name);
    m_source[row] = {folder, slot};
    if (rows[row].state == RenameState::Refused)
        return false;
    if (!m_slots[slot].exists) {
        refuse(row, ErrorCode::NotFound, from, QStringLiteral("no such file"));
        return false;
    }
    if (m_slots[slot].mover != None) {
        refuse(row, ErrorCode::InvalidArgument, from, QStringLiteral("the same file is in the batch twice"));
        return false;
    }
    m_slots[slot].mover = row;
    return true;
}

/// False: the row keeps its name whatever is answered.
bool RenamingPlan::Draft::placeTarget(int row)
{
    const RenameWish &wish = m_wishes[row];
    if (wish.to == wish.from)
        return false;
    const int folder = folderOf(wish.to, m_source[row].folder);
    const QString name = platform::nameOf(wish.to);
    const int slot = slotOf(folder, name);
    if (const auto &error = m_folders[folder].error) {
        refuse(row, error->code, error->path, error->detail);
        return false;
    }
    // The same file by another spelling of its folder.
    const bool isSame = slot == m_source[row].slot && name == platform::nameOf(wish.from);
    m_wanted[row] = {folder, slot};
    m_slots[slot].isWanted = !isSame;
    rows[row].makesFolder = !m_folders[folder].exists;
    return !isSame;
}

int RenamingPlan::Draft::occupantOf(std::size_t row) const
{
    const int mover = m_slots[m_target[row]].mover;
    return mover != None && m_moves[mover] ? mover : None;
}

void RenamingPlan::Draft::beginResolving()
{
    for (Slot &slot : m_slots) {
        slot.claimant = None;
        slot.nextNumber = 2;
    }
    openClashes.clear();
    m_queue.clear();
    m_end = static_cast<int>(rows.size());
    for (std::size_t row = 0; row < rows.size(); ++row) {
        m_moves[row] = !m_isFixed[row];
        if (m_isFixed[row])
            continue;
        rows[row].state = RenameState::Rename;
        rows[row].path = m_wishes[row].to;
        rows[row].isNumbered = false;
        rows[row].isCollision = false;
        m_target[row] = m_wanted[row].slot;
    }
}

/// Every row claims the name that it wants; the first in order gets it.
void RenamingPlan::Draft::claimInOrder()
{
    for (int row = 0; row < m_end; ++row) {
        if (!m_moves[row])
            continue;
        Slot &slot = m_slots[m_target[row]];
        const bool isFreed = !slot.exists || (slot.mover != None && m_moves[slot.mover]);
        if (isFreed && slot.claimant == None)
            slot.claimant = row;
        else
            settle(row);
    }
}

/// The name that the row wants is taken.
void RenamingPlan::Draft::settle(int row)
{
    rows[row].isCollision = true;
    const std::optional<ClashAnswer> answer = answers[row] ? answers[row] : answerForAll;
    if (!answer) {
        openClashes.push_back(row);
        stay(row, RenameState::Clash);
    } else if (*answer == ClashAnswer::Skip) {
        stay(row, RenameState::Skipped);
    } else if (*answer == ClashAnswer::KeepBoth) {
        takeNumber(row);
    } else {
        stopAt(row);
    }
}

/// The row keeps its name, which may be the one that another row wants.
void RenamingPlan::Draft::stay(int row, RenameState state)
{
    rows[row].state = state;
    rows[row].path = rows[row].from;
    rows[row].isNumbered = false;
    if (!m_moves[row])
        return;
    m_moves[row] = false;
    if (Slot &target = m_slots[m_target[row]]; target.claimant == row)
        target.claimant = None;
    const int claimant = std::exchange(m_slots[m_source[row].slot].claimant, None);
    if (claimant != None && claimant != row)
        m_queue.push_back(claimant);
}

void RenamingPlan::Draft::takeNumber(int row)
{
    const auto [folder, wanted] = m_wanted[row];
    const QString &to = m_wishes[row].to;
    const QString prefix = platform::folderPrefix(to);
    const QString name = platform::nameOf(to);
    // A number from an earlier run is kept, so that the same batch run again changes nothing.
    const QString &from = m_wishes[row].from;
    const QString ownName = platform::nameOf(from);
    const qsizetype bracket = ownName.lastIndexOf(u'(');
    const int ownNumber = QStringView(ownName).mid(bracket + 1, ownName.lastIndexOf(u')') - bracket - 1).toInt();
    rows[row].isNumbered = true;
    if (m_source[row].folder == folder && !m_slots[m_source[row].slot].isWanted && ownNumber >= 2 &&
        platform::numberedName(name, ownNumber, m_wishes[row].kind) == ownName) {
        stay(row, RenameState::Untouched);
        rows[row].isNumbered = true;
        return;
    }
    for (int number = m_slots[wanted].nextNumber;; ++number) {
        const QString numbered = platform::numberedName(name, number, m_wishes[row].kind);
        const int slot = slotOf(folder, numbered); // may move m_slots
        const Slot &found = m_slots[slot];
        if (found.exists || found.isWanted || found.claimant != None)
            continue;
        m_slots[wanted].nextNumber = number + 1;
        m_slots[slot].claimant = row;
        m_target[row] = slot;
        rows[row].path = prefix + numbered;
        return;
    }
}

void RenamingPlan::Draft::stopAt(int row)
{
    if (row >= m_end)
        return;
    const int last = std::min(m_end, static_cast<int>(rows.size()) - 1);
    for (int behind = row + 1; behind <= last; ++behind) {
        if (!m_isFixed[behind])
            stay(behind, RenameState::NotTaken);
    }
    m_end = row;
    stay(row, RenameState::Stopped);
}

/// A row that keeps its name takes it from another one, which then may keep its own, and so on.
void RenamingPlan::Draft::drainQueue()
{
    while (!m_queue.empty()) {
        const int row = m_queue.back();
        m_queue.pop_back();
        if (m_moves[row])
            settle(row);
    }
}

void RenamingPlan::Draft::resolve()
{
    beginResolving();
    claimInOrder();
    drainQueue();
    // Rows behind a stop that asked for an answer are not taken any more.
    std::erase_if(openClashes, [this](int row) { return row >= m_end; });
    std::erase_if(openClashes, [this](int row) { return rows[row].state != RenameState::Clash; });
}

} // namespace ravlin
